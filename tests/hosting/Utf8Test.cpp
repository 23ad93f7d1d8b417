#include <hexmire/hosting/Utf8.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace hexmire {
namespace {

TEST(Utf8, every_character_of_iso_8859_1_goes_both_ways) {
    std::string latin1;
    for (int code = 0; code < 256; ++code)
        latin1.push_back(static_cast<char>(code));
    EXPECT_EQ(Utf8FromLatin1("A\x7F\x80\xFF"), "A\x7F\xC2\x80\xC3\xBF");
    EXPECT_EQ(Latin1FromUtf8(Utf8FromLatin1(latin1)), latin1);
}

TEST(Utf8, other_characters_become_one_question_mark_each) {
    EXPECT_EQ(Latin1FromUtf8("\xC4\x80|\xE2\x82\xAC|\xF0\x9F\x98\x80"), "?|?|?");
}

TEST(Utf8, byte_that_is_no_part_of_a_character_becomes_a_question_mark) {
    const std::pair<const char*, const char*> kCases[] = {{"\x80", "?"},
                                                          {"\xC2", "?"},
                                                          {"\xC2z", "?z"},
                                                          {"\xE2\x82", "??"},
                                                          {"\xC0\x80", "??"},
                                                          {"\xF5\x80\x80\x80", "????"},
                                                          {"\xFF"
                                                           "a",
                                                           "?a"},
                                                          {"\xE2\x82z", "??z"}};
    for (const auto& [utf8, latin1] : kCases)
        EXPECT_EQ(Latin1FromUtf8(utf8), latin1);
}

}  // namespace
}  // namespace hexmire
