#include "FreePort.h"
#include "Peer.h"
#include "equipment/EquipmentRole.h"
#include "equipment/ModelFile.h"
#include "equipment/OperatorCommands.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::program {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

/// What a peer shows: "connect", "S1F2", "error 2012".
class Shown final : public EventOutput {
public:
    void Connect() override { Lines.emplace_back("connect"); }
    void Disconnect(std::int32_t code, const std::string&) override {
        Lines.push_back("disconnect " + std::to_string(code));
    }
    void Error(std::int32_t code, const std::string&, std::int32_t) override {
        Lines.push_back("error " + std::to_string(code));
    }
    void Message(const MessageRecord& message) override {
        const bool sent = message.Kind == MessageKind::Sent;
        if (!sent) Lines.push_back(StreamFunction(message.Stream, message.Function));
        if (!sent) Last = message;
    }

    [[nodiscard]] bool IsGood() const override { return true; }

    std::vector<std::string> Lines;
    MessageRecord Last;
};

/// A host and a simulated equipment on a loopback link.
class EquipmentOnALink : public testing::Test {
protected:
    static LinkOptions Options(Role role, const Endpoint& at) {
        LinkOptions options;
        (role == Role::Host ? options.Remote : options.Local) = at;
        options.NoLog = true;
        options.T3 = 1;
        options.T5 = 1;
        return options;
    }

    void Start() {
        const auto never = [] { return false; };
        for (Peer* peer : {&equipmentSide_, &hostSide_}) {
            peer->Control().SECSDictionaryFile(HEXMIRE_SOURCE_DIR "/dictionaries/Default.xml");
            peer->Control().LoadXMLDictionary();
        }
        equipmentSide_.StartOpening();
        ASSERT_TRUE(hostSide_.Open(never, 20s));
        ASSERT_TRUE(loop_.RunUntil([&] { return equipmentSide_.IsConnected(); }, 20s));
        host_.Lines.clear();
    }
    void TearDown() override {
        hostSide_.Close();
        equipmentSide_.Close();
    }

    void Send(std::int32_t stream, std::int32_t function) {
        const SECSTransPtr trans = hostSide_.Control().NewSECSTransaction();
        trans->Name(StreamFunction(stream, function));
        trans->Primary()->Stream(stream);
        trans->Primary()->Func(function);
        trans->Secondary()->Stream(stream);
        trans->Secondary()->Func(function + 1);
        hostSide_.Send(trans);
    }
    void Plan(const char* text) { role_.Planned().Plan(ReadMisbehaviour(SplitWords(text))); }

    /// Does a command of the operator; what it fails with, "" when it does not.
    std::string Do(const std::string& command) {
        ScriptCommands commands;
        AddOperatorCommands(commands, role_);
        ScriptContext context{.Loop = loop_,
                              .Side = equipmentSide_,
                              .Commands = commands,
                              .Out = std::cout,
                              .GivenUp = [] { return false; }};
        try {
            commands.Read(command)(context);
        } catch (const std::exception& error) {
            return error.what();
        }
        return "";
    }

    /// What the host sees until it has seen this.
    std::vector<std::string> SeenUntil(const std::string& last) {
        const auto seen = [&] { return std::ranges::count(host_.Lines, last) > 0; };
        EXPECT_TRUE(loop_.RunUntil(seen, 20s)) << last;
        return std::exchange(host_.Lines, {});
    }

    EventLoop loop_;
    Shown host_;
    Shown equipment_;
    const Endpoint endpoint_{"127.0.0.1", FindFreePort()};
    EquipmentRole::Options options_{.Model = BuiltInModel()};
    Peer hostSide_{loop_, host_, Options(Role::Host, endpoint_), Role::Host};
    Peer equipmentSide_{loop_,
                        equipment_,
                        Options(Role::Equipment, endpoint_),
                        Role::Equipment,
                        [this](Platform& platform) { AddTruncation(platform, options_.Truncate); }};
    EquipmentRole role_{loop_, equipmentSide_, options_};
};

TEST_F(EquipmentOnALink, AHostSeesALateReplyInTime) {
    Start();
    Plan("S1F1 late 0.05");
    Send(1, 1);
    Send(2, 17);
    EXPECT_THAT(SeenUntil("S1F2"), ElementsAre("S2F18", "S1F2"));
}

TEST_F(EquipmentOnALink, AHostIsToldOfASecondReplyAsOneWithoutPrimary) {
    Start();
    Plan("S1F1 duplicate");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("error 2013"), ElementsAre("S1F2", "S1F2", "error 2013"));
}

TEST_F(EquipmentOnALink, AHostIsToldOfABodyThatIsCutShortAndGetsWhatIsLeft) {
    Start();
    Plan("S1F1 truncated");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("S1F2"), ElementsAre("error 9", "S1F2"));
    EXPECT_EQ(host_.Last.Sml, "S1F2\r\n< L \r\n  < A 'HXM-200' >\r\n  < A >\r\n >\r\n.");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("S1F2"), ElementsAre("S1F2"));
}

TEST_F(EquipmentOnALink, AHostMissesWhatComesWithAnotherFunctionOrNotAtAll) {
    Start();
    Plan("S1F1 wrong-function");
    Plan("S2F17 silent 2");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("error 2013"), ElementsAre("S1F4", "error 2013"));
    Send(2, 17);
    const auto both = [&] { return std::ranges::count(host_.Lines, "error 2012") == 2; };
    EXPECT_TRUE(loop_.RunUntil(both, 20s));
}

TEST_F(EquipmentOnALink, AHostThatChecksSystemBytesMissesAReplyWithOthers) {
    hostSide_.Control().SystemBytesCheck(true);
    Start();
    Plan("S1F1 wrong-system-bytes");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("error 2012"), ElementsAre("S1F2", "error 2013", "error 2012"));
    EXPECT_EQ(host_.Last.SystemBytes, 0);
}

TEST_F(EquipmentOnALink, AHostLosesALinkThatTheEquipmentClosesAndGetsItBack) {
    Start();
    Plan("S1F1 disconnect");
    Send(1, 1);
    const std::vector<std::string> seen = SeenUntil("connect");
    EXPECT_EQ(seen.front(), "disconnect 3035");
    EXPECT_EQ(seen.back(), "connect");
    Send(1, 1);
    EXPECT_EQ(SeenUntil("S1F2").back(), "S1F2");
}

TEST_F(EquipmentOnALink, AnEquipmentWhoseEventNobodyAcknowledgesTellsSo) {
    Start();
    role_.Simulated().FindEvent("3020")->Enabled = true;
    role_.Simulated().Fire("3020");
    role_.Flush();
    EXPECT_THAT(SeenUntil("S9F9"), ElementsAre("S6F11", "S9F9"));
    EXPECT_THAT(host_.Last.BodyHex, testing::StartsWith("21 0A 00 00 86 0B 00 00 00 00 00 "));
    EXPECT_THAT(equipment_.Lines, testing::Contains("error 2012"));
}

TEST_F(EquipmentOnALink, NothingIsSentWithoutAConnection) {
    Start();
    role_.Simulated().FindEvent("3020")->Enabled = true;
    EXPECT_EQ(Do("event 3020"), "");
    EXPECT_THAT(SeenUntil("S6F11"), ElementsAre("S6F11"));
    hostSide_.Close();
    const auto timedOut = [&] { return std::ranges::count(equipment_.Lines, "error 2012") == 1; };
    EXPECT_TRUE(loop_.RunUntil(timedOut, 20s));
    EXPECT_EQ(Do("event 3020"), "");
    EXPECT_THAT(equipment_.Lines, ElementsAre("connect", "disconnect 3035", "error 2012"));
}

TEST_F(EquipmentOnALink, AnOperatorLetsThingsHappen) {
    Start();
    role_.Simulated().FindEvent("3020")->Enabled = true;
    for (const char* command : {"event 3020", "alarm 4002 set", "terminal out of  gas"})
        EXPECT_EQ(Do(command), "") << command;
    EXPECT_THAT(SeenUntil("S10F1"), ElementsAre("S6F11", "S5F1", "S10F1"));
    EXPECT_THAT(host_.Last.Sml, HasSubstr("< A 'out of  gas' >"));
    for (const char* command :
         {"variable 1101 LOT  7", "variable 1012 5", "variable 2001 77", "busy on", "offline"})
        EXPECT_EQ(Do(command), "") << command;
    EXPECT_EQ(role_.Simulated().ValueOf("1101"), Ascii("LOT  7"));
    EXPECT_EQ(role_.Simulated().ValueOf("1012"), Unsigned4(5));
    EXPECT_TRUE(role_.Simulated().Busy);
    Send(1, 1);
    EXPECT_EQ(SeenUntil("S1F0").front(), "S1F0");
    Send(1, 17);
    EXPECT_THAT(SeenUntil("S1F18").back(), "S1F18");
    EXPECT_THAT(host_.Last.BodyHex, "21 01 01");
    for (const char* command : {"online", "busy off", "misbehave S1F1 silent", "behave"})
        EXPECT_EQ(Do(command), "") << command;
    EXPECT_FALSE(role_.Simulated().Busy);
    Send(1, 1);
    EXPECT_THAT(SeenUntil("S1F2").back(), "S1F2");
}

TEST_F(EquipmentOnALink, AnOperatorIsToldWhatCannotBeDone) {
    const std::pair<const char*, const char*> kCases[] = {
        {"event 77", "no event has the id 77"},
        {"event", "expected 'event CEID'"},
        {"alarm 77 set", "no alarm has the id 77"},
        {"alarm 4001 on", "expected 'alarm ALID set|clear'"},
        {"variable 77 1", "no variable has the id 77"},
        {"variable 1012 x", "'x' is no value of format U4"},
        {"variable 1001 x", "variable 1001 is made by the equipment"},
        {"variable 1001", "expected 'variable ID VALUE'"},
        {"terminal", "expected 'terminal TEXT'"},
        {"busy maybe", "expected 'busy on|off'"},
        {"online now", "expected 'online'"},
        {"misbehave S1F1", "expected 'misbehave SxFy KIND [TIMES|always]'"}};
    for (const auto& [command, failure] : kCases)
        EXPECT_EQ(Do(command), failure) << command;
}

TEST_F(EquipmentOnALink, ADictionaryWithValuesIsAnsweredAsItStands) {
    Start();
    const auto entry = equipmentSide_.Control().SECSDictionary()->SECSTrans("S1F1");
    entry->Secondary()->Item(1)->Item(1)->Value("OTHER");
    Send(1, 1);
    SeenUntil("S1F2");
    EXPECT_THAT(host_.Last.Sml, HasSubstr("< A 'OTHER' >"));
}

}  // namespace
}  // namespace hexmire::program
