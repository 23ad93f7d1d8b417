#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/SECSItem.h>
#include <hexmire/core/SECSMessage.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/sml.h>
#include <hexmire/support/ModErrorMsg.h>
#include <hexmire/support/detail/BlockPool.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/FailingMemory.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::ErrorRecorder;
using fakes::FailsRequest;

const std::string kLongText(200, 'x');

class OutOfMemory : public testing::Test {
protected:
    OutOfMemory() {
        Subject->Root()->AddNew(1)->Name(kLongText + "a");
        List = Subject->Item(1);
        List->Format(FormatList);
        for (int index = 1; index <= 4; ++index) {
            const SECSItemPtr child = List->AddNew(index);
            child->Name(kLongText + std::to_string(index));
            child->Format(FormatAscii);
            child->Value(kLongText);
        }
    }

    void FailEverywhere(const std::function<void()>& operation,
                        const std::function<void()>& check,
                        const std::vector<std::string>& prefixes) {
        fakes::FailEverywhere(Site.Errors, operation, check, prefixes);
    }

    ErrorRecorder Site;
    SECSMessagePtr Subject = New<SECSMessage>();
    SECSItemPtr List;
};

TEST_F(OutOfMemory, AddNewAddsWhollyOrNotAtAll) {
    std::int32_t count = List->ItemCount();
    SECSItemPtr added;
    FailEverywhere([&] { added = List->AddNew(2); },
                   [&] {
                       count += added == nullptr ? 0 : 1;
                       ASSERT_EQ(List->ItemCount(), count);
                       std::int32_t index = 0;
                       for (const SECSItemPtr& child : *List) {
                           ASSERT_EQ(child->ItemIndex(), ++index);
                           ASSERT_EQ(child->Parent(), List);
                       }
                   },
                   {"(SECSItem-AddNew) "});
}

TEST_F(OutOfMemory, AddNewWhileTheListIsWalked) {
    const auto walk = List->begin();
    std::int32_t count = List->ItemCount();
    SECSItemPtr added;
    FailEverywhere([&] { added = List->AddNew(count + 1); },
                   [&] {
                       count += added == nullptr ? 0 : 1;
                       EXPECT_EQ(List->ItemCount(), count);
                   },
                   {"(SECSItem-AddNew) "});
    EXPECT_EQ((*walk)->Name(), kLongText + "1");
}

TEST_F(OutOfMemory, DeleteWhileTheListIsWalked) {
    const SECSItemPtr child = List->Item(2);
    const auto walk = List->begin();
    FailEverywhere([&] { static_cast<void>(child->Delete()); },
                   [&] {
                       if (Site.Errors.empty()) return;
                       EXPECT_EQ(List->ItemCount(), 4);
                       EXPECT_EQ(child->Parent(), List);
                   },
                   {"(SECSItem-Delete) "});
    EXPECT_EQ(List->ItemCount(), 3);
}

TEST_F(OutOfMemory, TextsOfAnItem) {
    const SECSItemPtr child = List->Item(1);
    const std::string twice = kLongText + kLongText;
    FailEverywhere([&] { child->Name(twice); },
                   [&] { EXPECT_TRUE(child->Name() == kLongText + "1" || child->Name() == twice); },
                   {"(SECSItem-Let Name) "});
    FailEverywhere([&] { child->Description(kLongText); }, [] {}, {"(SECSItem-Let Description) "});
    std::string read;
    FailEverywhere([&] { read = child->Name(); }, [] {}, {"(SECSItem-Get Name) "});
    FailEverywhere([&] { read = child->Description(); }, [] {}, {"(SECSItem-Get Description) "});
}

/// So many items that none of the blocks of ended ones is left: each further item asks for memory.
std::vector<SECSItemPtr> SpendBlocksOfItems() {
    std::vector<SECSItemPtr> items(detail::BlockPool<sizeof(SECSItem)>::kMostBlocks);
    for (SECSItemPtr& item : items)
        item = New<SECSItem>();
    return items;
}

TEST_F(OutOfMemory, AnItemThatAHostMakesIsThereOrNot) {
    const std::vector<SECSItemPtr> others = SpendBlocksOfItems();
    SECSItemPtr made;
    FailEverywhere([&] { made = New<SECSItem>(); },
                   [&] { EXPECT_EQ(made == nullptr, !Site.Errors.empty()); },
                   {"(SECSItem-Class_Initialize) "});
    EXPECT_EQ(made->Format(), FormatVar);
}

TEST_F(OutOfMemory, AValueThatTheRawStillNeedsStays) {
    const SECSItemPtr child = List->Item(1);
    static_cast<void>(EncodeBody(*Subject));
    const Variant raw = child->Raw();
    const Variant before = child->Value();
    FailEverywhere([&] { child->Value(5); },
                   [&] {
                       EXPECT_EQ(child->Raw(), raw);
                       EXPECT_EQ(child->Value(), Site.Errors.empty() ? Variant(5) : before);
                   },
                   {"(SECSItem-Let Value) "});
}

TEST_F(OutOfMemory, AFormatThatTheRawStillNeedsStays) {
    const SECSItemPtr number = List->AddNew(1);
    number->Format(FormatU4);
    number->Value(5);
    static_cast<void>(EncodeBody(*Subject));
    FailEverywhere([&] { number->Format(FormatU2); },
                   [&] {
                       EXPECT_EQ(number->Raw(), Variant(std::vector<std::uint8_t>{0, 0, 0, 5}));
                       EXPECT_EQ(number->Format(), Site.Errors.empty() ? FormatU2 : FormatU4);
                   },
                   {"(SECSItem-Let Format) "});
}

TEST_F(OutOfMemory, ALongListFindsANameWithoutMemoryForAnIndex) {
    for (int index = 5; index <= 60; ++index)
        List->AddNew(index)->Name("a name of 20 char " + std::to_string(index));
    const SECSItemPtr wanted = List->Item(33);
    const std::string name = wanted->Name();
    for (long request = 1; request <= 200; ++request) {
        SECSItemPtr found;
        FailsRequest(request % 4, [&] { found = List->Item(name); });
        ASSERT_EQ(found, wanted) << request;
        if (request % 20 == 0) List->Item(40)->Name("another" + std::to_string(request));
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(OutOfMemory, ARawThatCannotBeToldIsEmpty) {
    static_cast<void>(EncodeBody(*Subject));
    Variant raw;
    FailEverywhere([&] { raw = List->Item(1)->Raw(); },
                   [&] { EXPECT_EQ(raw.IsEmpty(), !Site.Errors.empty()); },
                   {"(SECSItem-Get Raw) "});
}

TEST_F(OutOfMemory, AMessageThatAHostMakesIsThereOrNot) {
    SECSMessagePtr made;
    const auto making = [&] { made = New<SECSMessage>(); };
    const auto check = [&] {
        if (made == nullptr) return;
        ASSERT_NE(made->Root(), nullptr);
        EXPECT_EQ(made->Root()->Format(), FormatList);
        EXPECT_EQ(made->Root()->Name(), Site.Errors.empty() ? "Root" : "");
    };
    // The name of the root is a routine of its own.
    FailEverywhere(making, check, {"(SECSMessage-Class_Initialize) ", "(SECSItem-Let Name) "});
    EXPECT_NE(made, nullptr);
}

TEST_F(OutOfMemory, ABodyThatIsDecodedHasItsMessageOrNot) {
    const std::vector<std::uint8_t> body{0x41, 0x01, 'x'};
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        DecodedBody decoded;
        Site.Errors.clear();
        if (!FailsRequest(request, [&] { decoded = DecodeBody(body); })) break;
        EXPECT_GE(Site.Errors.size(), 1U);
        EXPECT_TRUE(decoded.Message != nullptr || !decoded.Ok);
    }
}

TEST_F(OutOfMemory, LookupByALongName) {
    const SECSItemPtr wanted = List->Item(3);
    const std::string name = kLongText + "3";
    SECSItemPtr found;
    const auto check = [&] { EXPECT_EQ(found, Site.Errors.empty() ? wanted : nullptr); };
    const std::vector<std::string> own{"(SECSItem-Get Item) "};
    FailEverywhere([&] { found = List->Item(name); }, check, own);
    FailEverywhere([&] { found = List->Item(name.c_str()); }, check, own);
    FailEverywhere([&] { found = List->Item(std::string_view(name)); }, check, own);
    const std::string listName = kLongText + "A";  // In another letter case.
    FailEverywhere([&] { found = Subject->Item(listName); },
                   [&] { EXPECT_EQ(found, Site.Errors.empty() ? List : nullptr); },
                   {"(SECSMessage-Get Item) "});
}

TEST_F(OutOfMemory, TextsOfAMessage) {
    FailEverywhere([&] { Subject->Name(kLongText); }, [] {}, {"(SECSMessage-Let Name) "});
    FailEverywhere(
        [&] { Subject->Description(kLongText); }, [] {}, {"(SECSMessage-Let Description) "});
    std::string read;
    FailEverywhere([&] { read = Subject->Name(); }, [] {}, {"(SECSMessage-Get Name) "});
    FailEverywhere(
        [&] { read = Subject->Description(); }, [] {}, {"(SECSMessage-Get Description) "});
}

TEST_F(OutOfMemory, DuplicateLeavesTheListInOrder) {
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        Site.Errors.clear();
        const bool reached = FailsRequest(request, [&] { static_cast<void>(List->Duplicate()); });
        std::int32_t index = 0;
        for (const SECSItemPtr& child : *Subject->Root())
            ASSERT_EQ(child->ItemIndex(), ++index);
        if (!reached) break;
        // A child that could not be made is missed once more when its fields are to be copied.
        ASSERT_GE(Site.Errors.size(), 1U) << request;
        EXPECT_EQ(Site.Errors[0].Code, 7);
        for (std::size_t later = 1; later < Site.Errors.size(); ++later) {
            EXPECT_EQ(Site.Errors[later].Code, 91);
        }
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(OutOfMemory, BuildReportsIt) {
    std::vector<std::uint8_t> bytes;
    FailEverywhere(
        [&] {
            bytes = {};
            detail::SECSMessageAccess::Build(*Subject, bytes);
        },
        [] {},
        {"(SECSMessage-Build) ", "(SECSMessage-lBuildSECSMessage) ", "(ModGeneral-HexDumpArray) "});
}

TEST_F(OutOfMemory, BuildNeverAnswersWithTheBytesOfBefore) {
    std::vector<std::uint8_t> before;
    const auto encodeAnother = [&] {
        List->Item(1)->Value(kLongText + "before");
        before = EncodeBody(*Subject);
        List->Item(1)->Value("now");
    };
    encodeAnother();
    std::vector<std::uint8_t> bytes;
    FailEverywhere([&] { detail::SECSMessageAccess::Build(*Subject, bytes); },
                   [&] {
                       EXPECT_NE(bytes, before);
                       EXPECT_TRUE(Subject->Length() == 0 ||
                                   Subject->Length() == Subject->Raw().UpperBound() + 1);
                       encodeAnother();
                   },
                   {"(SECSMessage-Build) ", "(SECSMessage-lBuildSECSMessage) "});
    EXPECT_EQ(bytes.size(), before.size() - kLongText.size() - 3);
}

TEST_F(OutOfMemory, ParseReportsItAndKeepsWhatItHas) {
    const std::vector<std::uint8_t> body{0x01, 3, 0x41, 3, 65,   66, 67, 0x01, 1, 0x69, 4,
                                         0,    1, 0,    2, 0xB1, 4,  0,  0,    0, 9};
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        const SECSMessagePtr message = New<SECSMessage>();
        Site.Errors.clear();
        bool parsed = false;
        const bool reached = FailsRequest(
            request, [&] { parsed = detail::SECSMessageAccess::Parse(*message, body); });
        EXPECT_TRUE(parsed);
        EXPECT_LE(message->Root()->ItemCount(), 1);
        if (!reached) break;
        ASSERT_GE(Site.Errors.size(), 1U) << request;
        EXPECT_EQ(Site.Errors[0].Code, 7);
        // An item that could not be made is missed, and its place by those behind it.
        for (std::size_t later = 1; later < Site.Errors.size(); ++later) {
            EXPECT_NE(Site.Errors[later].Code, 7);
        }
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(OutOfMemory, ToSmlReportsItAndClosesNoListThatItDidNotOpen) {
    const SECSItemPtr inner = List->AddNew(5);
    inner->Format(FormatList);
    inner->AddNew(1);
    std::string text;
    const auto has = [&](const char* line) { return text.find(line) != std::string::npos; };
    // The length of the first text moves the place where the whole text has to grow.
    for (std::size_t length = 400; length < 700; ++length) {
        List->Item(1)->Value(std::string(length, 'x'));
        FailEverywhere(
            [&] { text = RenderSml(*Subject, true); },
            [&] {
                EXPECT_TRUE(has("\r\n< L \r\n") || !has("\r\n >\r\n"));
                EXPECT_TRUE(has("\r\n  < L \r\n") || !has("\r\n   >\r\n"));
            },
            {"(SECSMessage-ToSML) ", "(SECSMessage-ItemToSML) ", "(ModGeneral-GetSMLIndent) "});
        EXPECT_TRUE(has("\r\n   >\r\n"));
    }
}

TEST_F(OutOfMemory, ParseSmlSaysSoAndGivesNoMessage) {
    const std::string body = "< L \r\n  < A '" + kLongText + "' >\r\n  < U1 1 2 3 >\r\n  < V " +
                             kLongText + " >\r\n >\r\n.";
    for (const std::string& text :
         {"'" + kLongText + "': S1F1 W\r\n" + body, "S1F1 W\r\n" + body + kLongText}) {
        const ParsedSml whole = ParseSml(text);
        int failures = 0;
        for (long request = 1;; ++request) {
            ASSERT_LT(request, 1000);
            ParsedSml parsed;
            if (!FailsRequest(request, [&] { parsed = ParseSml(text); })) break;
            if (parsed.Error == "out of memory") {
                ++failures;
                EXPECT_EQ(parsed.Message, nullptr);
                EXPECT_FALSE(parsed.IsIncomplete);
            } else {  // A root missed its name, or a tree could not go in one go.
                EXPECT_EQ(parsed.Error, whole.Error) << request;
                EXPECT_EQ(parsed.Message == nullptr, whole.Message == nullptr) << request;
            }
        }
        EXPECT_GT(failures, 5);
    }
}

TEST_F(OutOfMemory, DumpsAreEmpty) {
    const Variant bytes(std::vector<std::uint8_t>(1000, 7));
    std::string text;
    FailEverywhere(
        [&] { text = ModGeneral::HexDumpArray(bytes); }, [] {}, {"(ModGeneral-HexDumpArray) "});
    FailEverywhere(
        [&] { text = ModGeneral::ChrDumpArray(bytes); }, [] {}, {"(ModGeneral-ChrDumpArray) "});
}

TEST_F(OutOfMemory, ArrayTextGivesWhatWasBuilt) {
    struct Row {
        enmItemFormat Format;
        std::string Text;
        std::string Builder;
    };
    const std::string longOne = std::string(100, '0') + "1";
    for (const Row& row :
         {Row{FormatI4, longOne + " 1 1 1 1 1", "lVariantArrayValue"},
          Row{FormatF8, "1 1 " + longOne + " 1", "lVariantArrayValue"},
          Row{FormatBinary, "1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1", "lByteArrayValue"},
          Row{FormatBoolean, "1 1 1 " + longOne + " 1", "lBoolArrayValue"}}) {
        List->Item(1)->Format(row.Format);
        const SECSItemPtr item = List->Item(1);
        Variant value;
        FailEverywhere([&] { value = ModGeneral::lAssignArrayValue(*item, row.Text); },
                       [&] { EXPECT_TRUE(value.IsEmpty() || value.IsArray()); },
                       {"(ModGeneral-lAssignArrayValue) ",
                        "(ModGeneral-" + row.Builder + ") ",
                        "(ModGeneral-lAssignValue) ",
                        "(ModGeneral-lVarBoolean) "});
        EXPECT_TRUE(value.IsArray());
    }
}

TEST_F(OutOfMemory, TextOfAnErrorIsEmpty) {
    std::string text;
    FailEverywhere([&] { text = ModErrorMsg::FormatErrorMsg(1001); },
                   [&] { EXPECT_EQ(text.empty(), !Site.Errors.empty()); },
                   {"(ModErrorMsg-FormatErrorMsg) "});
}

TEST_F(OutOfMemory, RejectedValueStaysOutWhateverBecomesOfTheReport) {
    std::set<std::string> missed;
    for (long request = 1; request < 30; ++request) {
        Site.Errors.clear();
        FailsRequest(request, [&] {
            List->Format(7);
            List->NLB(9);
            Subject->Stream(128);
        });
        EXPECT_EQ(List->Format(), FormatList);
        EXPECT_EQ(List->NLB(), 0);
        EXPECT_EQ(Subject->Stream(), 0);
        EXPECT_GE(Site.Errors.size(), 2U);
        for (const auto& error : Site.Errors) {
            if (error.Code == 7) missed.insert(error.Text);
        }
    }
    EXPECT_EQ(missed,
              (std::set<std::string>{"(ModErrorMsg-FormatErrorMsg) Out of memory",
                                     "(SECSItem-Let Format) Out of memory",
                                     "(SECSItem-Let NLB) Out of memory",
                                     "(SECSMessage-Let Stream) Out of memory"}));
}

TEST_F(OutOfMemory, TearDownEmptiesTheTreeAllTheSame) {
    for (long request = 1; request < 20; ++request) {
        const SECSItemPtr root = New<SECSItem>();
        root->Format(FormatList);
        SECSItemPtr inner = root;
        for (int depth = 0; depth < 3; ++depth) {
            inner = inner->AddNew(1);
            inner->Format(FormatList);
            static_cast<void>(inner->AddNew(1));
        }
        FailsRequest(request, [&] { detail::SECSItemAccess::TearDown(*root); });
        EXPECT_EQ(root->ItemCount(), 0);
    }
}

}  // namespace
}  // namespace hexmire
