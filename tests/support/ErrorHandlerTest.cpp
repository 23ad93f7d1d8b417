#include <hexmire/core/SECSItem.h>

#include "Handler.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// What the host's error handler may do while it runs: throw, cause errors, correct, replace or
// remove itself, send, end the control, drop the object that reports.

namespace hexmire {
namespace {

using detail::HexmireAccess;
using fakes::ErrorEvent;
using fakes::Handler;
using fakes::TestHost;
using Events = std::vector<ErrorEvent>;

const ErrorEvent kDeviceIdRefused{
    1047, "(Hexmire-Let DeviceID) The DeviceID must be between 0 and 32767.", 0};

TEST(ErrorHandler, StillReadsTheOldCode) {
    TestHost host;
    host.Control().BaudRate(1);
    std::vector<std::int32_t> codes;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        codes.push_back(host.Control().ErrorCode());
    };
    host.Control().DeviceID(-1);
    HexmireAccess::TriggerError(host.Control(), 5, "", 0);
    New<SECSItem>()->NLB(9);
    EXPECT_EQ(codes, (std::vector<std::int32_t>{1046, 1047, 5}));
    EXPECT_EQ(host.Control().ErrorCode(), 1003);
}

TEST(ErrorHandler, ThatCausesAnErrorHearsItAtOnceAndTheOuterCodeRemains) {
    TestHost host;
    std::vector<std::int32_t> codes;
    host.Control().Events().Error = [&](std::int32_t code, const std::string&, std::int32_t) {
        codes.push_back(code);
        if (code == 1047) host.Control().BaudRate(1);
        codes.push_back(-code);
    };
    host.Control().DeviceID(-1);
    EXPECT_EQ(codes, (std::vector<std::int32_t>{1047, 1046, -1046, -1047}));
    EXPECT_EQ(host.Control().ErrorCode(), 1047);
}

TEST(ErrorHandler, ThatThrowsIsTriggerErrorsOwnFault) {
    TestHost host;
    Events events;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t line) {
            events.push_back({code, text, line});
            if (events.size() == 1) throw std::out_of_range("host");
        };
    HexmireAccess::TriggerError(host.Control(), 1003, "first", 7);
    EXPECT_EQ(
        events,
        (Events{{1003, "first", 7}, {9, "(Hexmire-TriggerError) Subscript out of range", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 9);
}

TEST(ErrorHandler, ThatThrowsAForeignExceptionKeepsItsWords) {
    TestHost host;
    Events events;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t line) {
            events.push_back({code, text, line});
            if (events.size() == 1) throw std::runtime_error("display is gone");
        };
    New<SECSItem>()->NLB(9);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[1], (ErrorEvent{440, "(Hexmire-TriggerError) display is gone", 0}));
    EXPECT_EQ(host.Control().ErrorCode(), 440);
}

TEST(ErrorHandler, ThatAlwaysThrowsIsCalledTwiceAndNothingEscapes) {
    TestHost host;
    int calls = 0;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        ++calls;
        throw std::bad_alloc();
    };
    HexmireAccess::TriggerError(host.Control(), 1003, "first", 0);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(host.Control().ErrorCode(), 7);
}

TEST(ErrorHandler, ThatThrowsDoesNotStopASetter) {
    TestHost host;
    host.Control().Events().Error = [](std::int32_t, const std::string&, std::int32_t) {
        throw 42;
    };
    host.Control().DeviceID(-1);
    EXPECT_EQ(host.Control().DeviceID(), 0);
    EXPECT_EQ(host.Control().ErrorCode(), 440);
    const SECSItemPtr item = New<SECSItem>();
    item->NLB(9);
    EXPECT_EQ(item->NLB(), 0);
}

TEST(ErrorHandler, MayRemoveItself) {
    TestHost host;
    const auto alive = std::make_shared<int>(0);
    host.Control().Events().Error = [&host, alive](std::int32_t, const std::string&, std::int32_t) {
        host.Control().Events().Error = nullptr;
        ++*alive;
    };
    host.Control().DeviceID(-1);
    host.Control().DeviceID(-1);
    EXPECT_EQ(*alive, 1);
}

TEST(ErrorHandler, MayKeepTheTextThoughItRemovesItself) {
    TestHost host;
    std::string kept;
    host.Control().Events().Error = [&](std::int32_t, const std::string& text, std::int32_t) {
        host.Control().Events().Error = nullptr;
        host.Control().BaudRate(1);
        kept = text;
    };
    host.Control().DeviceID(-1);
    EXPECT_EQ(kept, kDeviceIdRefused.Text);
}

TEST(ErrorHandler, MayTerminateItsControl) {
    TestHost host;
    int calls = 0;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        if (++calls == 1) host.Control().ControlTerminate();
    };
    host.Control().DeviceID(-1);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(host.Control().ErrorCode(), 1047);
    EXPECT_FALSE(host.Driver.Alive);
}

TEST(ErrorHandler, ThatThrowsTwiceLeavesTheCodeThatWasToldLast) {
    TestHost host;
    int calls = 0;
    const auto fail = [&] {
        if (++calls % 2 == 1) throw std::out_of_range("first");
        throw std::overflow_error("second");
    };
    const Handler handler(host.Control(), fail);
    HexmireAccess::TriggerError(host.Control(), 1003, "text", 4);
    EXPECT_EQ(handler.Heard,
              (Events{{1003, "text", 4}, {9, "(Hexmire-TriggerError) Subscript out of range", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 9);
    host.Control().BaudRate(1);
    ASSERT_EQ(handler.Heard.size(), 4U);
    EXPECT_EQ(handler.Heard[3],
              (ErrorEvent{9, "(Hexmire-Let BaudRate) Subscript out of range", 0}));
    EXPECT_EQ(host.Control().ErrorCode(), 9);
}

TEST(ErrorHandler, MayPutAnotherInItsPlace) {
    TestHost host;
    std::vector<std::string> calls;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
            calls.emplace_back("second");
        };
        calls.emplace_back("first");
    };
    host.Control().DeviceID(-1);
    EXPECT_EQ(calls, (std::vector<std::string>{"first"}));
    host.Control().DeviceID(-1);
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "second"}));
}

TEST(ErrorHandler, ThatThrowsHavingRemovedItselfIsNotCalledAgain) {
    TestHost host;
    int calls = 0;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        ++calls;
        host.Control().Events().Error = nullptr;
        throw std::out_of_range("x");
    };
    New<SECSItem>()->NLB(4);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(host.Control().ErrorCode(), 9);
}

TEST(ErrorHandler, MayCorrectTheValueThatWasRefused) {
    TestHost host;
    const SECSItemPtr item = New<SECSItem>();
    const Handler handler(host.Control(), [&] { item->NLB(2); });
    item->NLB(4);
    EXPECT_EQ(item->NLB(), 2);
    EXPECT_EQ(host.Control().ErrorCode(), 1003);
}

TEST(ErrorHandler, MayDropTheObjectThatReports) {
    TestHost host;
    SECSMessagePtr message = New<SECSMessage>();
    SECSItemPtr list = message->Root()->AddNew(1);
    list->Format(FormatList);
    SECSTransPtr trans = host.Control().NewSECSTransaction();
    const std::weak_ptr<SECSItem> item = list->AddNew(1);
    const Handler handler(host.Control(), [&] {
        message.reset();
        list.reset();
        trans.reset();
    });
    item.lock()->NLB(4);
    EXPECT_TRUE(item.expired());
    trans = host.Control().NewSECSTransaction();
    SECSTrans& reporting = *trans;
    const SECSTransPtr held = trans;
    reporting.DeviceID(-1);
    EXPECT_EQ(handler.Heard.size(), 2U);
}

TEST(ErrorHandler, MayEndAnotherControl) {
    TestHost first;
    auto second = std::make_unique<TestHost>();
    const Handler handler(first.Control(), [&] { second.reset(); });
    first.Control().DeviceID(-1);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(handler.Heard, (Events{kDeviceIdRefused}));
    New<SECSItem>()->NLB(4);  // The first one serves the host's own objects now.
    EXPECT_EQ(first.Control().ErrorCode(), 1003);
}

TEST(ErrorHandler, OfTheMakerThatThrowsIsToldToTheMaker) {
    TestHost first;
    const SECSTransPtr trans = first.Control().NewSECSTransaction();
    TestHost second;
    const Handler handler(first.Control(), [] { throw std::bad_alloc(); });
    trans->DeviceID(-1);
    ASSERT_EQ(handler.Heard.size(), 2U);
    EXPECT_EQ(handler.Heard[1], (ErrorEvent{7, "(Hexmire-TriggerError) Out of memory", 0}));
    EXPECT_EQ(first.Control().ErrorCode(), 7);
    EXPECT_EQ(second.Control().ErrorCode(), 0);
    EXPECT_TRUE(second.Errors.empty());
}

TEST(ErrorHandler, OfAnotherEventThatThrowsIsToldOnceAndEndsTheRoutine) {
    TestHost host;
    HexmireEvents& events = host.Control().Events();
    events.ReceivedPrimary = [](const SECSTransPtr&, std::int32_t, const std::string&) {
        throw std::out_of_range("x");
    };
    events.ReceivedSecondary = events.ReceivedPrimary;
    for (const std::int32_t function : {1, 2}) {
        host.Errors.clear();
        host.MessageReceived(fakes::Header(0, function == 1, 7, function, 1), {});
        EXPECT_EQ(
            host.Errors,
            (Events{{9, "(Hexmire-moSECSIService_SecsMsgReceive) Subscript out of range", 0}}));
        EXPECT_EQ(host.Control().ErrorCode(), 9);
    }
}

TEST(ErrorHandler, HearsLineZeroAgainAfterAnErrorWithALine) {
    TestHost host;
    host.XML.Succeeds = false;
    host.XML.ErrorCode = 5;
    host.Control().LoadXMLDictionary();
    host.Control().DeviceID(-1);
    ASSERT_EQ(host.Errors.size(), 2U);
    EXPECT_EQ(host.Errors[0],
              (ErrorEvent{
                  2001, "(Hexmire-LoadXMLDictionary) Read and parsing xml input file failed.", 2}));
    EXPECT_EQ(host.Errors[1], kDeviceIdRefused);
}

}  // namespace
}  // namespace hexmire
