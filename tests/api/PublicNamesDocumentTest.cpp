// docs/public-names.md and the public headers name the same members.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace hexmire {
namespace {

using Names = std::set<std::string>;

std::string ReadFile(const std::string& path) {
    std::ifstream file(std::string(HEXMIRE_SOURCE_DIR) + "/" + path);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// All first groups of a pattern.
Names Matches(const std::string& text, const std::string& pattern) {
    Names names;
    const std::regex expression(pattern);
    for (auto match = std::sregex_iterator(text.begin(), text.end(), expression);
         match != std::sregex_iterator();
         ++match) {
        names.insert((*match)[1]);
    }
    return names;
}

/// The names in the first column of a section's table.
Names Documented(const std::string& section) {
    const std::string text = ReadFile("docs/public-names.md");
    const std::string heading = "\n## " + section + "\n";
    const std::size_t start = text.find(heading);
    EXPECT_NE(start, std::string::npos) << section;
    if (start == std::string::npos) return {};
    std::string body = text.substr(start + heading.size());
    body = body.substr(0, body.find("\n## "));
    Names names;
    for (const std::string& cell : Matches(body, "\n\\| ([^|]*) \\|")) {
        names.merge(Matches(cell, "`(\\w+)`"));
    }
    return names;
}

/// The members that a header declares between the class's head and its private part.
Names Declared(const std::string& header, const std::string& type) {
    std::string text = ReadFile(header);
    text = std::regex_replace(text, std::regex("//[^\n]*"), "");
    const std::size_t start = text.find("\nclass " + type + " ", text.find("namespace hexmire {"));
    const std::string body = text.substr(start, text.find("\nprivate:", start) - start);
    Names names = Matches(body, "\n    [^\n;{}()]*?[ &](\\w+)\\([^;{}]*\\)[^;{}]*[;{]");
    names.erase(type);
    names.erase("operator");
    return names;
}

/// The enumerators of an enumeration.
Names Enumerators(const std::string& header, const std::string& type) {
    const std::string text = ReadFile(header);
    const std::size_t start = text.find("enum " + type + " ");
    const std::string body = text.substr(start, text.find("};", start) - start);
    return Matches(body, "\n    (\\w+) = ");
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
    const std::string text = ReadFile("hexmire/control/HexmireEvents.h");
    EXPECT_EQ(Documented("HexmireEvents"), Matches(text, "(\\w+);\n"));
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
