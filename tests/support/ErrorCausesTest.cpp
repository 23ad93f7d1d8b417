#include <hexmire/core/SECSItem.h>

#include "Handler.h"
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// Every kind of routine that reports, by what the host's error handler does meanwhile.

namespace hexmire {
namespace {

using fakes::ErrorEvent;
using fakes::Handler;
using fakes::TestHost;

/// One way to cause an error, and whose fault a throwing handler then is.
struct Cause {
    std::int32_t Code;
    const char* Prefix;
    std::function<void(TestHost&)> Run;
};

std::vector<Cause> Causes() {
    return {
        {1003, "(Hexmire-TriggerError) ", [](TestHost&) { New<SECSItem>()->NLB(4); }},
        {1079,
         "(Hexmire-TriggerError) ",
         [](TestHost&) { static_cast<void>(New<SECSItem>()->Delete()); }},
        {1133,
         "(Hexmire-TriggerError) ",
         [](TestHost&) { static_cast<void>(New<SECSItem>()->Duplicate()); }},
        {1014, "(Hexmire-TriggerError) ", [](TestHost&) { New<SECSMessage>()->Func(256); }},
        {1004,
         "(Hexmire-TriggerError) ",
         [](TestHost&) { EXPECT_EQ(New<SECSMessage>()->Item(1), nullptr); }},
        {1047,
         "(Hexmire-TriggerError) ",
         [](TestHost& host) { host.Control().NewSECSTransaction()->DeviceID(-1); }},
        {1079,
         "(Hexmire-TriggerError) ",
         [](TestHost& host) { host.Control().NewSECSTransaction()->Delete(); }},
        {2009,
         "(Hexmire-TriggerError) ",
         [](TestHost& host) { host.Control().SECSDictionary()->SECSTrans(1)->Send(); }},
        {1026,
         "(Hexmire-TriggerError) ",
         [](TestHost& host) { EXPECT_EQ(host.Control().SECSDictionary()->SECSTrans(2), nullptr); }},
        {2004,
         "(Hexmire-TriggerError) ",
         [](TestHost& host) {
             EXPECT_EQ(host.Control().SECSDictionary()->AddNewTrans(9), nullptr);
         }},
        {2014,
         "(Hexmire-TriggerError) ",
         [](TestHost& host) { host.Control().SECSLogFile("trace.txt"); }},
        {1046, "(Hexmire-Let BaudRate) ", [](TestHost& host) { host.Control().BaudRate(1); }},
        {1089, "(Hexmire-ClosePort) ", [](TestHost& host) { host.Control().ClosePort(); }},
        {1025,
         "(Hexmire-NewSECSTransaction) ",
         [](TestHost& host) { EXPECT_EQ(host.Control().NewSECSTransaction("none"), nullptr); }},
        {1022,
         "(Hexmire-NewSECSTransaction) ",
         [](TestHost& host) { EXPECT_EQ(host.Control().NewSECSTransaction(0), nullptr); }},
        {2001,
         "(Hexmire-LoadXMLDictionary) ",
         [](TestHost& host) {
             host.XML.Succeeds = false;
             host.XML.ErrorCode = 5;
             host.Control().LoadXMLDictionary();
         }},
        {10061,
         "(Hexmire-moSECSIService_Error) ",
         [](TestHost& host) { host.DriverEvents().Error(10061, "refused"); }},
        {2016,
         "(Hexmire-moSECSIService_SecsMsgSend) ",
         [](TestHost& host) { host.DriverEvents().SecsMsgSend(""); }},
        {2016,
         "(Hexmire-moSECSIService_SecsBlockReceive) ",
         [](TestHost& host) { host.DriverEvents().SecsBlockReceive(""); }},
        {2010,
         "(Hexmire-moSECSIService_SecsMsgReceive) ",
         [](TestHost& host) {
             host.DriverEvents().SecsMsgReceive("00 00 81 01 80 01 00 00 00 01 ", "", 1);
         }},
        {2011,
         "(Hexmire-moSECSIService_SecsMsgReceive) ",
         [](TestHost& host) { host.MessageReceived(fakes::Header(0, true, 7, 1, 1), {}); }},
        {2013,
         "(Hexmire-moSECSIService_SecsMsgReceive) ",
         [](TestHost& host) { host.MessageReceived(fakes::Header(0, false, 7, 2, 1), {}); }},
    };
}

TEST(ErrorCauses, AHandlerThatThrowsIsTheFaultOfWhoeverRaised) {
    for (const Cause& cause : Causes()) {
        TestHost host;
        host.AddTemplate("S1F1", 1, 1);
        const Handler handler(host.Control(), [] { throw std::runtime_error("display is gone"); });
        cause.Run(host);
        ASSERT_EQ(handler.Heard.size(), 2U) << cause.Code << cause.Prefix;
        EXPECT_EQ(handler.Heard[0].Code, cause.Code) << cause.Prefix;
        EXPECT_EQ(handler.Heard[1],
                  (ErrorEvent{440, std::string(cause.Prefix) + "display is gone", 0}));
        EXPECT_EQ(host.Control().ErrorCode(), 440);
    }
}

TEST(ErrorCauses, AHandlerMayTerminateTheControl) {
    for (const Cause& cause : Causes()) {
        TestHost host;
        host.AddTemplate("S1F1", 1, 1);
        bool ended = false;
        const Handler handler(host.Control(), [&] {
            if (!std::exchange(ended, true)) host.Control().ControlTerminate();
        });
        cause.Run(host);
        ASSERT_EQ(handler.Heard.size(), 1U) << cause.Code << cause.Prefix;
        EXPECT_EQ(handler.Heard[0].Code, cause.Code) << cause.Prefix;
        EXPECT_EQ(host.Control().ErrorCode(), cause.Code) << cause.Prefix;
        EXPECT_FALSE(host.Driver.Alive);
    }
}

TEST(ErrorCauses, AHandlerMaySend) {
    for (const Cause& cause : Causes()) {
        TestHost host;
        host.AddTemplate("S1F1", 1, 1);
        const Handler handler(host.Control(),
                              [&] { host.Control().NewSECSTransaction("S1F1")->Send(); });
        cause.Run(host);
        EXPECT_EQ(handler.Heard.size(), 1U) << cause.Code << cause.Prefix;
        EXPECT_EQ(host.Driver.Sent.size(), 1U) << cause.Code << cause.Prefix;
        EXPECT_EQ(host.Table()->TransCount(), 1);
        EXPECT_EQ(host.Control().ErrorCode(), cause.Code) << cause.Prefix;
    }
}

}  // namespace
}  // namespace hexmire
