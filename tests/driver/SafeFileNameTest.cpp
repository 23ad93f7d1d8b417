// File names for texts that somebody else has chosen.
#include <hexmire/driver/SafeFileName.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace hexmire::link {
namespace {

using namespace std::string_view_literals;

struct Row {
    std::string_view Text;
    std::string_view Name;
};

TEST(SafeFileName, EveryHarmfulTextBecomesAHarmlessName) {
    constexpr Row kRows[] = {
        {"PP-1_a.V2", "PP-1_a.V2"},
        {"", "%empty"},
        {"%empty", "%25empty"},
        {".", "%2E"},
        {"..", "%2E%2E"},
        {"...", "%2E.%2E"},
        {".hidden", "%2Ehidden"},
        {"a.", "a%2E"},
        {"a..", "a.%2E"},
        {"a..b", "a..b"},
        {"/", "%2F"},
        {"/etc/passwd", "%2Fetc%2Fpasswd"},
        {"../up", "%2E.%2Fup"},
        {"a/../b", "a%2F..%2Fb"},
        {"..\\up", "%2E.%5Cup"},
        {"C:\\x", "C%3A%5Cx"},
        {"a\0b"sv, "a%00b"},
        {"\0"sv, "%00"},
        {"a b", "a%20b"},
        {" ", "%20"},
        {"a ", "a%20"},
        {"tab\tcr\rlf\n", "tab%09cr%0Dlf%0A"},
        {"a%2Fb", "a%252Fb"},
        {"~", "%7E"},
        {"*?\"<>|", "%2A%3F%22%3C%3E%7C"},
        {"\xE9\xFF\x80", "%E9%FF%80"},
        {"CON", "%43ON"},
        {"con", "%63on"},
        {"nul.txt", "%6Eul.txt"},
        {"PRN", "%50RN"},
        {"aux.a.b", "%61ux.a.b"},
        {"COM1", "%43OM1"},
        {"LPT9.log", "%4CPT9.log"},
        {"COM", "COM"},
        {"COMX", "COMX"},
        {"COM12", "COM12"},
        {"CON1", "CON1"},
        {"CONE", "CONE"},
        {"XCON", "XCON"},
        {"CO", "CO"},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(SafeFileName(row.Text), row.Name);
    }
}

TEST(SafeFileName, EachSingleByteHasANameOfItsOwn) {
    std::set<std::string> names;
    for (int byte = 0; byte < 256; ++byte) {
        const std::string name = SafeFileName(std::string(1, static_cast<char>(byte)));
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_EQ(name.find_first_of(std::string_view("/\\\0. :", 6)), std::string::npos) << name;
    }
}

TEST(SafeFileName, ANameOf140BytesStaysAndALongerOneEndsInAHash) {
    const std::string fits(140, 'A');
    EXPECT_EQ(SafeFileName(fits), fits);
    // FNV-1a, 64 bits, over 141 letters.
    EXPECT_EQ(SafeFileName(fits + 'A'), std::string(122, 'A') + "%~" + "6A7FA8D896307C00");
    EXPECT_EQ(SafeFileName(std::string(300, 'A')).size(), 140U);
}

TEST(SafeFileName, LongTextsThatDifferAnywhereHaveDifferentNames) {
    std::string text(300, 'x');
    std::set<std::string> names{SafeFileName(text)};
    for (std::size_t index : {0U, 121U, 122U, 139U, 140U, 299U}) {
        std::string other = text;
        other[index] = 'y';
        EXPECT_TRUE(names.insert(SafeFileName(other)).second) << index;
    }
    EXPECT_TRUE(names.insert(SafeFileName(text + 'x')).second);
}

TEST(SafeFileName, NoNameIsCutInsideAnEncodedByte) {
    for (std::size_t plain = 0; plain < 6; ++plain) {
        const std::string name = SafeFileName(std::string(plain, 'a') + std::string(300, '/'));
        EXPECT_LE(name.size(), 140U);
        const std::string start = name.substr(plain, name.find("%~") - plain);
        EXPECT_EQ(start.size() % 3, 0U) << name;
        for (std::size_t index = 0; index < start.size(); index += 3) {
            EXPECT_EQ(start.substr(index, 3), "%2F") << name;
        }
    }
}

}  // namespace
}  // namespace hexmire::link
