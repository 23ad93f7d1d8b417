// docs/public-names.md and the public headers name the same members.
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire {
namespace {

using Names = std::set<std::string>;

/// Lines of a file from the one that begins with the words `first` up to the next that begins with
/// `last`.
std::vector<std::string> Lines(const std::string& path,
                               const std::string& first,
                               std::string_view last) {
    std::ifstream file(std::string(HEXMIRE_SOURCE_DIR) + "/" + path);
    EXPECT_TRUE(file) << path;
    std::vector<std::string> lines;
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
        if (inside && line.starts_with(last)) break;
        if (inside) lines.push_back(line);
        inside = inside || line == first || line.starts_with(first + " ");
    }
    EXPECT_FALSE(lines.empty()) << path << ": " << first;
    return lines;
}

/// The name that ends right before a position; empty when there is none.
std::string NameBefore(std::string_view text, std::size_t end) {
    std::size_t start = end;
    while (start > 0 && (std::isalnum(static_cast<unsigned char>(text[start - 1])) != 0 ||
                         text[start - 1] == '_')) {
        --start;
    }
    return std::string(text.substr(start, end - start));
}

/// The names in the first column of a section's table.
Names Documented(const std::string& section) {
    Names names;
    for (const std::string& line : Lines("docs/public-names.md", "## " + section, "## ")) {
        if (!line.starts_with("| `")) continue;
        const std::string cell = line.substr(0, line.find(" |", 2));
        for (std::size_t open = cell.find('`'); open != std::string::npos;) {
            const std::size_t close = cell.find('`', open + 1);
            names.insert(cell.substr(open + 1, close - open - 1));
            open = cell.find('`', close + 1);
        }
    }
    return names;
}

/// The members that a class declares before its private part.
Names Declared(const std::string& header, const std::string& type) {
    Names names;
    for (const std::string& line : Lines(header, "class " + type, "private:")) {
        const bool declaration = line.starts_with("    ") && line.size() > 4 && line[4] != ' ' &&
                                 !line.starts_with("    //");
        const std::size_t bracket = line.find('(');
        if (declaration && bracket != std::string::npos) names.insert(NameBefore(line, bracket));
    }
    names.erase("");
    names.erase(type);
    return names;
}

/// The names of a struct of functions.
Names Members(const std::string& header, const std::string& type) {
    Names names;
    for (const std::string& line : Lines(header, "struct " + type, "};")) {
        if (line.ends_with(';')) names.insert(NameBefore(line, line.size() - 1));
    }
    return names;
}

Names Enumerators(const std::string& header, const std::string& type) {
    Names names;
    for (const std::string& line : Lines(header, "enum " + type, "};")) {
        const std::size_t equals = line.find(" = ");
        if (equals != std::string::npos) names.insert(NameBefore(line, equals));
    }
    return names;
}

TEST(PublicNamesDocument, ListsTheMembersOfEveryClass) {
    EXPECT_EQ(Documented("SECSItem"), Declared("hexmire/core/SECSItem.h", "SECSItem"));
    EXPECT_EQ(Documented("SECSMessage"), Declared("hexmire/core/SECSMessage.h", "SECSMessage"));
    EXPECT_EQ(Documented("SECSTrans"), Declared("hexmire/trans/SECSTrans.h", "SECSTrans"));
    EXPECT_EQ(Documented("SECSDictionary"),
              Declared("hexmire/trans/SECSDictionary.h", "SECSDictionary"));
    EXPECT_EQ(Documented("Hexmire"), Declared("hexmire/control/Hexmire.h", "Hexmire"));
}

TEST(PublicNamesDocument, ListsTheEvents) {
    EXPECT_EQ(Documented("HexmireEvents"),
              Members("hexmire/control/HexmireEvents.h", "HexmireEvents"));
}

TEST(PublicNamesDocument, ListsTheEnumerators) {
    EXPECT_EQ(Documented("enmItemFormat"),
              Enumerators("hexmire/core/ItemFormat.h", "enmItemFormat"));
    for (const char* type : {"enmBaudRate", "enmPortType", "enmConnectionMode"}) {
        EXPECT_EQ(Documented(type), Enumerators("hexmire/control/Enumerations.h", type));
    }
}

}  // namespace
}  // namespace hexmire
