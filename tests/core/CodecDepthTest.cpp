#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/SECSMessageAccess.h>

#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

// Lists nest to any depth: nothing below may use the machine's stack for it.

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;

constexpr std::size_t kDepth = 1000000;

/// `depth` lists, each with the next one as its only child; the last one is empty.
Bytes8 NestedLists(std::size_t depth) {
    Bytes8 bytes(depth * 2, 0x01);
    bytes.back() = 0;
    return bytes;
}

std::size_t DepthOf(SECSItemPtr item) {
    std::size_t depth = 1;
    while (item->ItemCount() > 0) {
        item = *item->begin();
        ++depth;
    }
    return depth;
}

TEST(CodecDepth, AMillionListsSurviveDecodingEncodingAndTheEnd) {
    RecordingSite site;
    const Bytes8 bytes = NestedLists(kDepth);
    DecodedBody decoded = DecodeBody(bytes);
    EXPECT_TRUE(decoded.Ok);
    EXPECT_EQ(DepthOf(Body(decoded.Message)), kDepth);
    EXPECT_TRUE(EncodeBody(*decoded.Message) == bytes);
    decoded.Message.reset();
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(CodecDepth, AMillionListsSurviveACopyAndItsEnd) {
    RecordingSite site;
    const Bytes8 bytes = NestedLists(kDepth);
    const DecodedBody decoded = DecodeBody(bytes);
    SECSMessagePtr copy = MessageOf(FormatList);
    ModGeneral::CreateDuplicateItem(Body(copy), Body(decoded.Message));
    EXPECT_TRUE(EncodeBody(*copy) == bytes);
    Body(copy)->Delete();
    copy.reset();
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(CodecDepth, DeepListsCutAtTheEndAreReportedOnce) {
    RecordingSite site;
    constexpr std::size_t kCutDepth = 100000;
    Bytes8 bytes = NestedLists(kCutDepth);
    bytes.pop_back();
    const DecodedBody decoded = DecodeBody(bytes);
    EXPECT_EQ(DepthOf(Body(decoded.Message)), kCutDepth - 1);
    EXPECT_EQ(site.Errors,
              std::vector<std::string>{"9 (SECSMessage-lParseSECSMessage) Subscript out of range"});
}

TEST(CodecDepth, ATextThatIsMostlyIndentationEndsWithOneOutOfMemory) {
    RecordingSite site;
    const DecodedBody decoded = DecodeBody(NestedLists(100000));
    const std::string text = RenderSml(*decoded.Message, false);
    EXPECT_TRUE(text.starts_with("S0F1\r\n< L \r\n  < L \r\n    < L \r\n      < L \r\n"));
    EXPECT_LT(text.size(), std::size_t{80} << 20U);
    EXPECT_GT(text.size(), std::size_t{60} << 20U);
    EXPECT_EQ(site.Errors, std::vector<std::string>{"7 (SECSMessage-ItemToSML) Out of memory"});
}

TEST(CodecDepth, ALongTextIsNoIndentationAndIsShownWhole) {
    RecordingSite site;
    constexpr std::size_t kLength = 70000000;
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatAscii, std::string(kLength, 'x'));
    AddItem(Body(message), FormatU1, 7);
    const std::string text = RenderSml(*message, false);
    EXPECT_EQ(text.find('x'), std::string_view("S0F1\r\n< L \r\n  < A '").size());
    EXPECT_EQ(text.find_last_of('x') - text.find('x') + 1, kLength);
    EXPECT_TRUE(text.ends_with("xx' >\r\n  < U1 7 >\r\n >\r\n."));
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(CodecDepth, FiveThousandListsAreStillShownWhole) {
    RecordingSite site;
    const DecodedBody decoded = DecodeBody(NestedLists(5000));
    const std::string text = RenderSml(*decoded.Message, false);
    EXPECT_TRUE(text.ends_with("\r\n     >\r\n   >\r\n >\r\n."));
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
    const std::string innermost = std::string(std::size_t{2} * 4999, ' ');
    EXPECT_NE(text.find("\r\n" + innermost + "< L " + innermost + " >\r\n"), std::string::npos);
}

TEST(CodecDepth, EachOfAThousandLevelsFaultsForItself) {
    RecordingSite site;
    site.KeepTexts = false;
    const SECSMessagePtr message = MessageOf(FormatList);
    SECSItemPtr list = Body(message);
    for (int level = 0; level < 1000; ++level) {
        const SECSItemPtr inner = AddItem(list, FormatList);
        AddItem(list, FormatI4, "abc");
        list = inner;
    }
    const Bytes8 bytes = EncodeBody(*message);
    EXPECT_EQ(site.ErrorCount, 1000U);
    EXPECT_EQ(bytes.size(), std::size_t{1001} * 2 + std::size_t{1000} * 2);
    EXPECT_EQ(HexOf(std::span(bytes).last(6)), "71 04 71 04 71 04");
}

}  // namespace
}  // namespace hexmire
