#include <hexmire/core/detail/SECSMessageAccess.h>

#include "../fakes/Golden.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

// A host may do anything inside its Error handler, also to the very tree that is being encoded,
// decoded or rendered: what was begun is finished with the items that were there.

namespace hexmire {
namespace {

using namespace fakes;

using Texts = std::vector<std::string>;

/// A list of text that is no number, U1 7 and U1 8: encoding reports its first item.
SECSMessagePtr FaultyList() {
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatI4, "abc");
    AddItem(Body(message), FormatU1, 7);
    AddItem(Body(message), FormatU1, 8);
    return message;
}

constexpr const char* kWhole = "01 03 71 04 A5 01 07 A5 01 08";

/// Encodes the list while the handler does something once.
std::string EncodeWhile(const SECSMessagePtr& message, std::function<void()> handler) {
    RecordingSite site;
    site.OnError = [&](std::int32_t) {
        if (const auto once = std::exchange(handler, nullptr)) once();
    };
    std::string hex = EncodedHex(message);
    EXPECT_EQ(site.Errors, Texts{"13 (SECSMessage-lBuildSECSMessage) Type mismatch"});
    return hex;
}

TEST(EncodeReentry, ItemsThatAreDeletedMeanwhileAreStillSent) {
    const SECSMessagePtr message = FaultyList();
    EXPECT_EQ(EncodeWhile(message, [&] { Body(message)->Item(3)->Delete(); }), kWhole);
    EXPECT_EQ(Body(message)->ItemCount(), 2);
    const SECSMessagePtr emptied = FaultyList();
    EXPECT_EQ(EncodeWhile(emptied,
                          [&] {
                              while (Body(emptied)->ItemCount() > 0) {
                                  Body(emptied)->Item(1)->Delete();
                              }
                          }),
              kWhole);
    EXPECT_EQ(EncodedHex(emptied), "01 00");
}

TEST(EncodeReentry, ItemsThatAreAddedMeanwhileAreNotSent) {
    const SECSMessagePtr message = FaultyList();
    EXPECT_EQ(EncodeWhile(message,
                          [&] {
                              for (int child = 0; child < 100; ++child) {
                                  Body(message)->AddNew(1);
                              }
                              AddItem(Body(message), FormatU1, 9);
                          }),
              kWhole);
    EXPECT_EQ(Body(message)->ItemCount(), 104);
}

TEST(EncodeReentry, ALaterItemIsSentWithTheValueThatItHasWhenItsTurnComes) {
    const SECSMessagePtr message = FaultyList();
    EXPECT_EQ(EncodeWhile(message,
                          [&] {
                              Body(message)->Item(2)->Value("9");
                              Body(message)->Item(3)->Format(FormatAscii);
                              Body(message)->Item(3)->Value("X");
                          }),
              "01 03 71 04 A5 01 09 41 01 58");
}

TEST(EncodeReentry, TheFaultyItemMayBeChangedOrDeletedInItsOwnError) {
    const SECSMessagePtr message = FaultyList();
    EXPECT_EQ(EncodeWhile(message,
                          [&] {
                              const SECSItemPtr item = Body(message)->Item(1);
                              item->Value(std::vector<std::int32_t>{1, 2, 3});
                              item->Format(FormatList);
                              item->Delete();
                          }),
              kWhole);
    EXPECT_EQ(EncodedHex(message), "01 02 A5 01 07 A5 01 08");
}

TEST(EncodeReentry, TheWholeBodyMayGo) {
    const SECSMessagePtr message = FaultyList();
    EXPECT_EQ(EncodeWhile(message, [&] { Body(message)->Delete(); }), kWhole);
    EXPECT_EQ(message->Length(), 10);
    EXPECT_EQ(message->Root()->ItemCount(), 0);
}

TEST(EncodeReentry, AnotherEncodingOfTheSameMessageInsideLeavesTheOuterOneWhole) {
    const SECSMessagePtr message = FaultyList();
    RecordingSite site;
    std::string inner;
    bool inside = false;
    site.OnError = [&](std::int32_t) {
        if (std::exchange(inside, true)) return;
        Body(message)->Item(1)->Value(1);
        inner = EncodedHex(message);
    };
    EXPECT_EQ(EncodedHex(message), kWhole);
    EXPECT_EQ(inner, "01 03 71 04 00 00 00 01 A5 01 07 A5 01 08");
    EXPECT_EQ(message->RawHex(), kWhole);
    EXPECT_EQ(message->Length(), 10);
}

TEST(EncodeReentry, AFaultOfTheHelperAllowsChangesToo) {
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatU4, std::vector<double>{549755813888.0, 1});
    AddItem(Body(message), FormatU1, 7);
    RecordingSite site;
    site.OnError = [&](std::int32_t) {
        Body(message)->Item(1)->Value(Variant());
        Body(message)->Item(1)->Delete();
    };
    EXPECT_EQ(EncodedHex(message), "01 02 B1 08 00 00 00 00 00 00 00 01 A5 01 07");
}

/// Decodes while the handler does something to the body list at the first error.
std::pair<SECSMessagePtr, Texts> DecodeWhile(const char* hex,
                                             std::function<void(const SECSItemPtr&)> handler) {
    RecordingSite site;
    const SECSMessagePtr message = New<SECSMessage>();
    site.OnError = [&](std::int32_t) {
        if (const auto once = std::exchange(handler, nullptr)) once(Body(message));
    };
    (void)detail::SECSMessageAccess::Parse(*message, Bytes(hex));
    return {message, site.Errors};
}

constexpr const char* kUnknown =
    "1001 (SECSItem-Let Format) You cannot change the Format of the Root item. The Root item "
    "Format is always 0 (list).";
constexpr const char* kOutside =
    "2003 (SECSItem-AddNew) You cannot add new item out of limit between 1 to ItemCount+1.";
constexpr const char* kNoList =
    "2002 (SECSItem-AddNew) You cannot add new item into non-list item.";
constexpr const char* kNotSet =
    "91 (SECSMessage-lParseSECSMessage) Object variable or With block variable not set";

TEST(DecodeReentry, AfterADeletedItemTheNextPlaceIsOutOfBounds) {
    const auto [message, errors] = DecodeWhile(
        "01 03 0D 00 41 00 A5 00", [](const SECSItemPtr& list) { list->Item(1)->Delete(); });
    EXPECT_EQ(errors, (Texts{kUnknown, kOutside, kNotSet, kOutside, kNotSet}));
    EXPECT_EQ(Body(message)->ItemCount(), 0);
}

TEST(DecodeReentry, ItemsAddedByTheHandlerAreMovedBackByThoseThatFollow) {
    const auto [message, errors] =
        DecodeWhile("01 03 0D 00 41 01 58 A5 01 07",
                    [](const SECSItemPtr& list) { AddItem(list, FormatAscii, "mine"); });
    EXPECT_EQ(errors, Texts{kUnknown});
    EXPECT_TRUE(
        SameTree(Body(message), Body(MessageFromNotation("<L <V> <A \"X\"> <U1 7> <A \"mine\">>"))))
        << Describe(Body(message));
}

TEST(DecodeReentry, AListThatIsMadeAValueTakesNoMoreItems) {
    const auto [message, errors] = DecodeWhile(
        "01 03 0D 00 41 00 A5 00", [](const SECSItemPtr& list) { list->Format(FormatAscii); });
    EXPECT_EQ(errors, (Texts{kUnknown, kNoList, kNotSet, kNoList, kNotSet}));
    EXPECT_EQ(Body(message)->Format(), FormatAscii);
}

TEST(DecodeReentry, AListTakenOutOfTheTreeIsStillFilled) {
    SECSItemPtr taken;
    const auto [message, errors] =
        DecodeWhile("01 03 0D 00 41 01 58 A5 01 07", [&](const SECSItemPtr& list) {
            taken = list;
            list->Delete();
        });
    EXPECT_EQ(errors, Texts{kUnknown});
    EXPECT_EQ(message->Root()->ItemCount(), 0);
    EXPECT_EQ(taken->ItemCount(), 3);
}

TEST(DecodeReentry, AListDroppedByEverybodyIsStillReadToItsEnd) {
    const auto [message, errors] =
        DecodeWhile("01 03 0D 00 41 01 58 0D 00", [](const SECSItemPtr& list) { list->Delete(); });
    EXPECT_EQ(message->Root()->ItemCount(), 0);
    EXPECT_EQ(errors, (Texts{kUnknown, kUnknown}));
}

TEST(DecodeReentry, RawMayBeReplacedWhileItsBytesAreRead) {
    RecordingSite site;
    const SECSMessagePtr message = New<SECSMessage>();
    site.OnError = [&](std::int32_t) { message->Raw(Variant()); };
    EXPECT_FALSE(detail::SECSMessageAccess::Parse(*message, Bytes("01 02 0D 00 41 03 58 59 5A")));
    EXPECT_TRUE(Body(message)->Item(2)->Value() == Variant("XYZ"));
    EXPECT_TRUE(message->Raw().IsEmpty());
}

TEST(DecodeReentry, AnotherBodyMayBeDecodedInside) {
    RecordingSite site;
    std::string inner;
    site.OnError = [&](std::int32_t) {
        inner = EncodedHex(DecodeItem(Bytes("01 01 A5 01 09")).Message);
    };
    const DecodedItem decoded = DecodeItem(Bytes("01 02 0D 00 A5 01 07"));
    EXPECT_EQ(inner, "01 01 A5 01 09");
    EXPECT_FALSE(decoded.Ok);
    EXPECT_TRUE(SameTree(decoded.Item, Body(MessageFromNotation("<L <V> <U1 7>>"))));
}

TEST(DecodeReentry, AnotherBodyMayBeReadIntoTheSameMessageInside) {
    RecordingSite site;
    const SECSMessagePtr message = New<SECSMessage>();
    bool inside = false;
    site.OnError = [&](std::int32_t) {
        if (std::exchange(inside, true)) return;
        EXPECT_TRUE(detail::SECSMessageAccess::Parse(*message, Bytes("A5 01 09")));
    };
    EXPECT_FALSE(detail::SECSMessageAccess::Parse(*message, Bytes("01 02 0D 00 41 02 58 59")));
    EXPECT_TRUE(SameTree(message->Item(1), Body(MessageFromNotation("<U1 9>"))));
    EXPECT_TRUE(SameTree(message->Item(2), Body(MessageFromNotation("<L <V> <A \"XY\">>"))));
    EXPECT_EQ(message->RawHex(), "A5 01 09");
    EXPECT_EQ(site.Errors, Texts{kUnknown});
}

TEST(SmlReentry, ItemsThatAreDeletedMeanwhileAreStillShown) {
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatBoolean, "abc");
    AddItem(Body(message), FormatU1, 7);
    AddItem(AddItem(Body(message), FormatList), FormatU1, 8);
    RecordingSite site;
    site.OnError = [&](std::int32_t) {
        while (Body(message)->ItemCount() > 0) {
            Body(message)->Item(1)->Delete();
        }
    };
    EXPECT_EQ(RenderSml(*message, false),
              "S0F1\r\n< L \r\n  < U1 7 >\r\n  < L \r\n    < U1 8 >\r\n   >\r\n >\r\n.");
    EXPECT_EQ(site.Errors, Texts{"13 (SECSMessage-ItemToSML) Type mismatch"});
    EXPECT_EQ(RenderSml(*message, false), "S0F1\r\n< L  >\r\n.");
}

TEST(SmlReentry, AnItemShowsTheValueThatItHadWhenItsTurnCame) {
    const SECSMessagePtr message = MessageOf(FormatVar, std::vector<std::int32_t>{});
    RecordingSite site;
    site.OnError = [&](std::int32_t) {
        Body(message)->Value(std::vector<std::int32_t>{1, 2});
        Body(message)->Format(FormatAscii);
    };
    EXPECT_EQ(RenderSml(*message, false), "S0F1\r\n< V [  ] >\r\n.");
    EXPECT_EQ(site.Errors, Texts{"9 (ModGeneral-IsByteArray) Subscript out of range"});
}

TEST(SmlReentry, AnotherTextMayBeMadeInside) {
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatBoolean, "abc");
    AddItem(Body(message), FormatU1, 7);
    RecordingSite site;
    std::string inner;
    site.OnError = [&](std::int32_t) { inner = RenderSml(*MessageOf(FormatU1, 9), true); };
    EXPECT_EQ(RenderSml(*message, false), "S0F1\r\n< L \r\n  < U1 7 >\r\n >\r\n.");
    EXPECT_EQ(inner, "S0F1 W\r\n< U1 9 >\r\n.");
}

}  // namespace
}  // namespace hexmire
