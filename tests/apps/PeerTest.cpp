#include "FreePort.h"
#include "Peer.h"
#include "ProgramRun.h"
#include "ScriptCommands.h"
#include "equipment/EquipmentRole.h"
#include "equipment/OperatorCommands.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace hexmire::program {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

class Unseen final : public EventOutput {
public:
    void Connect() override {}
    void Disconnect(std::int32_t, const std::string&) override {}
    void Error(std::int32_t, const std::string&, std::int32_t) override {}
    void Message(const MessageRecord&) override {}
    [[nodiscard]] bool IsGood() const override { return true; }
};

/// Two sides of a loopback link; nothing answers by itself.
class TwoPeers : public testing::Test {
protected:
    static LinkOptions Options(Role role, const Endpoint& at) {
        LinkOptions options;
        (role == Role::Host ? options.Remote : options.Local) = at;
        options.NoLog = true;
        options.T5 = 1;
        return options;
    }

    void SetUp() override {
        equipment_.StartOpening();
        ASSERT_TRUE(host_.Open([] { return false; }, 20s));
        ASSERT_TRUE(loop_.RunUntil([&] { return equipment_.IsConnected(); }, 20s));
    }
    void TearDown() override {
        host_.Close();
        equipment_.Close();
    }

    /// A primary to the host that expects a reply.
    void Send(std::int32_t function, std::size_t length) {
        const SECSTransPtr trans = equipment_.Control().NewSECSTransaction();
        trans->Primary()->Stream(7);
        trans->Primary()->Func(function);
        const SECSItemPtr item = trans->Primary()->Root()->AddNew(1);
        item->Format(FormatAscii);
        item->Value(std::string(length, 'x'));
        trans->ReplyExpected(true);
        ASSERT_TRUE(equipment_.Send(trans));
        ASSERT_TRUE(loop_.RunUntil([&] { return host_.TakeReceived(7, function); }, 20s));
    }

    EventLoop loop_;
    Unseen output_;
    const Endpoint at_{.Address = "127.0.0.1", .Port = FindFreePort()};
    Peer equipment_{loop_, output_, Options(Role::Equipment, at_), Role::Equipment};
    Peer host_{loop_, output_, Options(Role::Host, at_), Role::Host};
};

TEST_F(TwoPeers, primaries_wait_for_replies_as_long_as_their_bodies_are_short) {
    constexpr std::size_t kLength = 1'500'000;
    for (const std::int32_t function : {1, 3, 5})
        Send(function, kLength);
    EXPECT_EQ(host_.TakeWaiting(7, 2), nullptr);
    EXPECT_NE(host_.TakeWaiting(7, 4), nullptr);
    Send(7, kLength);
    EXPECT_NE(host_.TakeWaiting(7, 6), nullptr);
    EXPECT_NE(host_.TakeWaiting(7, 8), nullptr);
    EXPECT_EQ(host_.TakeWaiting(), nullptr);
}

TEST_F(TwoPeers, last_primary_waits_however_long_it_is) {
    Send(1, 10);
    Send(3, 4'500'000);
    EXPECT_EQ(host_.TakeWaiting(7, 2), nullptr);
    EXPECT_NE(host_.TakeWaiting(7, 4), nullptr);
}

TEST_F(TwoPeers, no_primary_waits_where_nobody_asks_for_replies) {
    host_.KeepNoneWaiting();
    Send(1, 10);
    EXPECT_EQ(host_.TakeWaiting(), nullptr);
}

TEST(Help, names_the_commands_that_each_side_has) {
    EventLoop loop;
    Unseen output;
    LinkOptions options;
    options.NoLog = true;
    Peer peer(loop, output, options, Role::Equipment);
    EquipmentRole role(loop, peer, {});
    ScriptCommands commands = CommonCommands();
    const std::size_t common = commands.All().size();
    AddOperatorCommands(commands, role);
    const std::string host = fakes::RunProgram({"host", "--help"}).Output;
    const std::string equipment = fakes::RunProgram({"equipment", "--help"}).Output;
    for (std::size_t i = 0; i < commands.All().size(); ++i) {
        const ScriptCommand& command = commands.All().at(i);
        const std::string arguments = command.Arguments.empty() ? "" : ' ' + command.Arguments;
        const std::string name = (i == 0 ? ": " : ", ") + command.Name + arguments;
        EXPECT_THAT(equipment, HasSubstr(name));
        EXPECT_EQ(host.find(name) == std::string::npos, i >= common) << name;
    }
}

}  // namespace
}  // namespace hexmire::program
