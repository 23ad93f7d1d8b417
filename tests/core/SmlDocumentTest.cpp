#include "SmlParsing.h"

#include <fstream>
#include <map>
#include <sstream>

// The examples of docs/sml.md.

namespace hexmire {
namespace {

using namespace fakes;

std::vector<std::string> DocumentLines() {
    std::ifstream file(std::string(HEXMIRE_SOURCE_DIR) + "/docs/sml.md");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

/// The cells of the rows under a table's heading line; code without its backticks.
std::vector<std::vector<std::string>> Rows(const std::string& heading) {
    std::vector<std::vector<std::string>> rows;
    bool isInside = false;
    for (const std::string& line : DocumentLines()) {
        if (line == heading) isInside = true;
        if (!isInside || line.starts_with("|---") || line == heading) continue;
        if (line.empty()) break;
        std::vector<std::string> cells;
        std::istringstream text(line.substr(2));
        for (std::string cell; std::getline(text, cell, '|') && !cell.empty();) {
            cell.erase(0, std::min(cell.find_first_not_of(' '), cell.size()));
            cell.erase(cell.find_last_not_of(' ') + 1);
            const bool isCode = cell.starts_with('`') && cell.find('`', 1) == cell.size() - 1;
            if (isCode) cell = cell.substr(1, cell.size() - 2);
            cells.push_back(cell);
        }
        rows.push_back(cells);
    }
    return rows;
}

TEST(SmlDocument, ItsMessagesRead) {
    int count = 0;
    std::string text;
    bool isInside = false;
    for (const std::string& line : DocumentLines()) {
        if (line == "```sml") {
            isInside = true;
        } else if (isInside && line == "```") {
            EXPECT_EQ(SmlErrorOf(text), "") << text;
            isInside = false;
            text.clear();
            ++count;
        } else if (isInside) {
            text += line + "\n";
        }
    }
    EXPECT_EQ(count, 3);
}

TEST(SmlDocument, ItsTextsHaveTheBytesThatItSays) {
    const auto rows = Rows("| written | text in bytes |");
    EXPECT_EQ(rows.size(), 4U);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 2U);
        EXPECT_EQ(SmlHex(row[0]).substr(6), row[1]) << row[0];
    }
}

TEST(SmlDocument, ItsErrorsAreThoseOfTheParser) {
    const auto rows = Rows("| text | place | error |");
    EXPECT_EQ(rows.size(), 8U);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 3U);
        EXPECT_EQ(SmlErrorOf(row[0]), row[1] + " " + row[2]);
    }
}

TEST(SmlDocument, ItsKindsAreThoseOfTheParser) {
    const std::map<std::string, std::string> examples{{"B", "<B 1>"},
                                                      {"BOOL", "<BOOL T>"},
                                                      {"I1", "<I1 1>"},
                                                      {"I2", "<I2 1>"},
                                                      {"I4", "<I4 1>"},
                                                      {"U1", "<U1 1>"},
                                                      {"U2", "<U2 1>"},
                                                      {"I8", "<I8 1>"},
                                                      {"U4", "<U4 1>"},
                                                      {"U8", "<U8 1>"},
                                                      {"F4", "<F4 1>"},
                                                      {"F8", "<F8 1>"},
                                                      {"A", "<A 'x'>"},
                                                      {"V", "<V x>"},
                                                      {"BOOLEAN", "<BOOLEAN F>"}};
    std::size_t checked = 0;
    for (const auto& row : Rows("| format | elements | value |")) {
        ASSERT_EQ(row.size(), 3U);
        std::istringstream formats(row[0]);
        for (std::string format; std::getline(formats, format, ',');) {
            format.erase(std::remove_if(format.begin(),
                                        format.end(),
                                        [](char mark) { return mark == '`' || mark == ' '; }),
                         format.end());
            ASSERT_TRUE(examples.contains(format)) << format;
            EXPECT_TRUE(ShowSmlValue(examples.at(format)).starts_with(row[2] + " ")) << format;
            ++checked;
        }
    }
    EXPECT_EQ(checked, examples.size());
}

}  // namespace
}  // namespace hexmire
