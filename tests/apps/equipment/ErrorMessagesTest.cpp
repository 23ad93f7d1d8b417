#include "equipment/ErrorMessages.h"
#include <gtest/gtest.h>

namespace hexmire::program {
namespace {

constexpr HeaderFacts kOnHsms{.DeviceID = 0x0102, .FromEquipment = true};
constexpr HeaderFacts kOnSecs1{.DeviceID = 0x0102, .BodyBytes = 0, .FromEquipment = true};

TEST(ErrorMessages, AForeignDeviceIsS9F1WithItsHeader) {
    const auto message =
        ErrorMessageFor(3020, "unknown device 7 hdr=0007810100000000002A", kOnHsms);
    ASSERT_TRUE(message.has_value());
    EXPECT_EQ(message->Function, 1);
    EXPECT_EQ(message->Header, (HeaderBytes{0, 7, 0x81, 1, 0, 0, 0, 0, 0, 0x2A}));
}

TEST(ErrorMessages, AReplyThatDoesNotComeIsS9F9WithTheHeaderOfThePrimary) {
    const char* text = "T3 Timeout encountered. For [SystemBytes-66051] S6F11";
    const auto hsms = ErrorMessageFor(2012, text, kOnHsms);
    ASSERT_TRUE(hsms.has_value());
    EXPECT_EQ(hsms->Function, 9);
    EXPECT_EQ(hsms->Header, (HeaderBytes{1, 2, 0x86, 11, 0, 0, 0, 1, 2, 3}));
    const auto secs1 = ErrorMessageFor(2012, text, kOnSecs1);
    ASSERT_TRUE(secs1.has_value());
    EXPECT_EQ(secs1->Header, (HeaderBytes{0x81, 2, 0x86, 11, 0x80, 1, 0, 1, 2, 3}));
}

TEST(ErrorMessages, AMessageThatIsTooLongIsS9F11) {
    const auto message = ErrorMessageFor(3029, "too long hdr=00008703000000000001", kOnSecs1);
    ASSERT_TRUE(message.has_value());
    EXPECT_EQ(message->Function, 11);
    EXPECT_EQ(message->Header, (HeaderBytes{0, 0, 0x87, 3, 0, 0, 0, 0, 0, 1}));
}

TEST(ErrorMessages, ABodyThatIsRefusedIsS9F7) {
    const auto message = ErrorMessageFor(
        3090, "Hostile body refused: lists nested too deep hdr=00008703000000000001", kOnHsms);
    ASSERT_TRUE(message.has_value());
    EXPECT_EQ(message->Function, 7);
    EXPECT_EQ(message->Header, (HeaderBytes{0, 0, 0x87, 3, 0, 0, 0, 0, 0, 1}));
}

TEST(ErrorMessages, NothingIsSaidOfOtherErrorsUnknownMessagesAndErrorReports) {
    const std::pair<std::int32_t, const char*> kCases[] = {
        {3004, "T4 hdr=00008101000000000001"},
        {3023, "block hdr=00008101000000000001"},
        {3038, "frame larger than allowed"},
        {3020, "hdr=00008101000000000001"},  // no blank before it
        {3020, "x hdr=000081010000000000"},
        {3020, "x hdr=0000810100000000000G"},
        {3020, "x hdr=00008901000000000001"},
        {3020, "x hdr=00000901000000000001"},
        {2012, "T3 Timeout encountered."},
        {2012, "T3 For [SystemBytes-1] S6F"},
        {2012, "T3 For [SystemBytes-1] S6F11 "},
        {2012, "T3 For [SystemBytes-1] S9F1"}};
    for (const auto& [code, text] : kCases)
        EXPECT_FALSE(ErrorMessageFor(code, text, kOnHsms).has_value()) << text;
}

TEST(ErrorMessages, OnSecs1TheHeaderIsThatOfTheLastBlock) {
    const std::pair<std::size_t, std::uint8_t> kCases[] = {
        {0, 1}, {1, 1}, {244, 1}, {245, 2}, {488, 2}, {489, 3}};
    for (const auto& [bytes, block] : kCases) {
        const HeaderBytes header = HeaderOf({.DeviceID = 1, .Stream = 2, .BodyBytes = bytes});
        EXPECT_EQ(header, (HeaderBytes{0, 1, 2, 0, 0x80, block, 0, 0, 0, 0})) << bytes;
    }
}

}  // namespace
}  // namespace hexmire::program
