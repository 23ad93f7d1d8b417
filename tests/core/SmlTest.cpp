#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/SmlWriter.h>

#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

// Header line, lists and indentation of the SML text.

namespace hexmire {
namespace {

using namespace fakes;

using Texts = std::vector<std::string>;

std::string Sml(const SECSMessagePtr& message, bool replyExpected = false) {
    return RenderSml(*message, replyExpected);
}

SECSMessagePtr Numbered(std::int32_t stream, std::int32_t function) {
    const SECSMessagePtr message = New<SECSMessage>();
    message->Stream(stream);
    message->Func(function);
    return message;
}

TEST(Sml, AMessageWithoutBodyIsItsNumbersAndADot) {
    EXPECT_EQ(Sml(Numbered(1, 1), true), "S1F1 W\r\n.");
    EXPECT_EQ(Sml(Numbered(1, 1), false), "S1F1\r\n.");
    EXPECT_EQ(Sml(New<SECSMessage>(), false), "S0F1\r\n.");
    EXPECT_EQ(Sml(Numbered(127, 255), true), "S127F255 W\r\n.");
    EXPECT_EQ(Sml(Numbered(99, 0), false), "S99F0\r\n.");
}

TEST(Sml, AListHoldsItsItemsOneLevelDeeper) {
    const SECSMessagePtr message = Numbered(1, 3);
    AddItem(AddItem(message->Root(), FormatList), FormatU4, 1);
    EXPECT_EQ(Sml(message, true), "S1F3 W\r\n< L \r\n  < U4 1 >\r\n >\r\n.");
}

TEST(Sml, AnEventWithTextAndNumber) {
    const SECSMessagePtr message = Numbered(6, 11);
    const SECSItemPtr list = AddItem(message->Root(), FormatList);
    AddItem(list, FormatAscii, "OK");
    AddItem(list, FormatU1, 0);
    EXPECT_EQ(Sml(message, true), "S6F11 W\r\n< L \r\n  < A 'OK' >\r\n  < U1 0 >\r\n >\r\n.");
}

TEST(Sml, ABodyNeedNotBeAList) {
    EXPECT_EQ(Sml(MessageOf(FormatBinary, std::uint8_t{0})), "S0F1\r\n< B 0x00 >\r\n.");
}

TEST(Sml, OnlyTheFirstChildOfTheRootIsShown) {
    const SECSMessagePtr message = MessageOf(FormatU1, 1);
    AddItem(message->Root(), FormatU1, 2);
    EXPECT_EQ(Sml(message), "S0F1\r\n< U1 1 >\r\n.");
}

TEST(Sml, AnEmptyListRepeatsItsIndentationInsideTheLine) {
    EXPECT_EQ(Sml(MessageOf(FormatList)), "S0F1\r\n< L  >\r\n.");
    const SECSMessagePtr message = MessageOf(FormatList);
    const SECSItemPtr inner = AddItem(Body(message), FormatList);
    EXPECT_EQ(Sml(message), "S0F1\r\n< L \r\n  < L    >\r\n >\r\n.");
    AddItem(inner, FormatList);
    EXPECT_EQ(Sml(message), "S0F1\r\n< L \r\n  < L \r\n    < L      >\r\n   >\r\n >\r\n.");
}

TEST(Sml, ThreeLevelsAreIndentedByTwoBlanksEach) {
    const SECSMessagePtr message = MessageOf(FormatList);
    const SECSItemPtr first = AddItem(Body(message), FormatList);
    AddItem(AddItem(first, FormatList), FormatU1, 1);
    AddItem(first, FormatU1, 2);
    AddItem(Body(message), FormatU1, 3);
    EXPECT_EQ(Sml(message),
              "S0F1\r\n"
              "< L \r\n"
              "  < L \r\n"
              "    < L \r\n"
              "      < U1 1 >\r\n"
              "     >\r\n"
              "    < U1 2 >\r\n"
              "   >\r\n"
              "  < U1 3 >\r\n"
              " >\r\n"
              ".");
}

TEST(Sml, NamesDescriptionsAndRawDoNotShow) {
    const SECSMessagePtr message = MessageOf(FormatU1, 1);
    message->Name("Name");
    message->Description("Description");
    message->Raw("raw");
    Body(message)->Name("Item");
    Body(message)->Description("Text");
    EXPECT_EQ(Sml(message), "S0F1\r\n< U1 1 >\r\n.");
}

TEST(Sml, ShowingChangesNothing) {
    const SECSMessagePtr message = MessageOf(FormatI2, "7");
    (void)Sml(message);
    EXPECT_EQ(message->Length(), 0);
    EXPECT_EQ(message->RawHex(), "");
    EXPECT_TRUE(message->Raw().IsEmpty());
    EXPECT_EQ(Body(message)->NLB(), 0);
    EXPECT_EQ(Body(message)->Length(), 0);
    EXPECT_TRUE(Body(message)->Value() == Variant("7"));
}

TEST(Sml, TheValueOfAListAndTheChildrenOfAValueDoNotShow) {
    const SECSMessagePtr message = MessageOf(FormatList, "not shown");
    const SECSItemPtr child = AddItem(Body(message), FormatList);
    AddItem(child, FormatU1, 1);
    child->Format(FormatI1);
    child->Value(5);
    EXPECT_EQ(Sml(message), "S0F1\r\n< L \r\n  < I1 5 >\r\n >\r\n.");
}

TEST(Sml, AWideListShowsEveryItemInOrder) {
    const SECSMessagePtr message = MessageOf(FormatList);
    std::string expected = "S0F1\r\n< L \r\n";
    for (int item = 0; item < 1000; ++item) {
        AddItem(Body(message), FormatU2, item);
        expected += "  < U2 " + std::to_string(item) + " >\r\n";
    }
    EXPECT_EQ(Sml(message), expected + " >\r\n.");
}

TEST(Sml, ADeepListIndentsEveryLineByTwoBlanksALevel) {
    const SECSMessagePtr message = MessageOf(FormatList);
    SECSItemPtr list = Body(message);
    std::string expected = "S0F1\r\n< L \r\n";
    constexpr std::size_t kDepth = 300;
    for (std::size_t level = 1; level < kDepth; ++level) {
        list = AddItem(list, FormatList);
        expected += std::string(level * 2, ' ') + "< L \r\n";
    }
    AddItem(list, FormatU1, 1);
    expected += std::string(kDepth * 2, ' ') + "< U1 1 >\r\n";
    for (std::size_t level = kDepth; level-- > 0;) {
        expected += std::string(level * 2, ' ') + " >\r\n";
    }
    EXPECT_EQ(Sml(message), expected + ".");
}

TEST(ItemToSml, ListsWithoutItemsRepeatTheIndentationOfTheirLevel) {
    for (std::int32_t level = 0; level <= 3; ++level) {
        std::string text;
        detail::ItemToSML(Body(MessageOf(FormatList, "value")), level, text);
        const std::string indent(static_cast<std::size_t>(level) * 2, ' ');
        EXPECT_EQ(text, indent + "< L " + indent + " >\r\n");
    }
}

TEST(ItemToSml, AppendsAtTheLevelGiven) {
    std::string text = "before ";
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatAscii, "x");
    detail::ItemToSML(Body(message), 2, text);
    EXPECT_EQ(text, "before     < L \r\n      < A 'x' >\r\n     >\r\n");
    detail::ItemToSML(Body(MessageOf(FormatU1, 1)), 1, text);
    EXPECT_TRUE(text.ends_with("     >\r\n  < U1 1 >\r\n"));
}

TEST(SmlIndent, IsTwoBlanksALevel) {
    RecordingSite site;
    EXPECT_EQ(ModGeneral::GetSMLIndent(0), "");
    EXPECT_EQ(ModGeneral::GetSMLIndent(1), "  ");
    EXPECT_EQ(ModGeneral::GetSMLIndent(2), "    ");
    EXPECT_EQ(ModGeneral::GetSMLIndent(50), std::string(100, ' '));
    EXPECT_EQ(site.Errors, Texts{});
}

TEST(SmlIndent, ANegativeLevelIsAFaultInItsOwnName) {
    RecordingSite site;
    EXPECT_EQ(ModGeneral::GetSMLIndent(-1), "");
    EXPECT_EQ(site.Errors, Texts{"5 (ModGeneral-GetSMLIndent) Invalid procedure call or argument"});
}

TEST(SmlIndent, ALevelWhoseBlanksCannotBeCountedIsAnOverflow) {
    RecordingSite site;
    for (const std::int32_t level : {1073741824, 2147483647, -1073741825}) {
        EXPECT_EQ(ModGeneral::GetSMLIndent(level), "");
    }
    EXPECT_EQ(site.Errors, Texts(3, "6 (ModGeneral-GetSMLIndent) Overflow"));
}

}  // namespace
}  // namespace hexmire
