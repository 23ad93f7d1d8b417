// Two controls over every kind of link: a question, a large recipe, and events both ways at once.
#include <hexmire/hexmire.h>
#include <hexmire/support/Conversion.h>

#include "../TempFolder.h"
#include "LinkRig.h"
#include "Pty.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using fakes::TempFolder;

constexpr auto kBound = 60s;  // Only ends a test that fails.
constexpr std::uint32_t kEvents = 1'000;
constexpr std::size_t kRecipeBytes = 1'000'000;

constexpr const char* kDictionary =
    "<D>"
    "<Trans Name='S1F1' Desc=''><Primary Stream='1' Func='1' Name='' Desc=''><Root/></Primary>"
    "<Secondary Stream='1' Func='2' Name='' Desc=''><Root/></Secondary></Trans>"
    "<Trans Name='S6F11' Desc=''><Primary Stream='6' Func='11' Name='' Desc=''><Root/></Primary>"
    "<Secondary Stream='6' Func='12' Name='' Desc=''><Root/></Secondary></Trans>"
    "<Trans Name='S7F3' Desc=''><Primary Stream='7' Func='3' Name='' Desc=''><Root/></Primary>"
    "<Secondary Stream='7' Func='4' Name='' Desc=''><Root/></Secondary></Trans>"
    "</D>";

struct Combination {
    std::string Name;
    std::int32_t PortType;
    std::int32_t HostMode;
    std::int32_t EquipmentMode;
};

void PrintTo(const Combination& combination, std::ostream* out) { *out << combination.Name; }

/// One control, and what it has seen.
class End {
public:
    End(EventLoop& loop, const std::string& dictionary) : Control(loop.Platform(Options())) {
        Control.SECSDictionaryFile(dictionary);
        Control.LoadXMLDictionary();
        HexmireEvents& events = Control.Events();
        events.Connect = [this] { ++Connects; };
        events.Disconnect = [this](std::int32_t code, const std::string& text) {
            Errors.push_back("Disconnect " + std::to_string(code) + " " + text);
        };
        events.Error = [this](std::int32_t code, const std::string& text, std::int32_t) {
            constexpr std::int32_t kConnectFailed = 3050;  // an alternating end that is too early
            if (code != kConnectFailed) Errors.push_back(std::to_string(code) + " " + text);
        };
        events.ReceivedPrimary =
            [this](const SECSTransPtr& trans, std::int32_t, const std::string&) { Answer(trans); };
        events.ReceivedSecondary =
            [this](const SECSTransPtr& trans, std::int32_t, const std::string&) {
                if (trans->Name() == "S6F11")
                    return Acknowledged.push_back(Number(*trans->Secondary()));
                Replies.push_back(trans->Name());
            };
    }

    void Send(const std::string& name, std::int32_t format, const Variant& value) {
        const SECSTransPtr trans = Control.NewSECSTransaction(name);
        trans->ReplyExpected(true);
        const SECSItemPtr item = trans->Primary()->Root()->AddNew(1);
        item->Format(format);
        item->Value(value);
        trans->Send();
    }

    Hexmire Control;
    int Connects = 0;
    std::vector<std::string> Errors;
    std::vector<std::string> Replies;         ///< names of answered questions
    std::vector<std::uint32_t> Events;        ///< numbers of the events received
    std::vector<std::uint32_t> Acknowledged;  ///< numbers of the events answered
    std::vector<std::vector<std::uint8_t>> Recipes;

private:
    static PlatformOptions Options() {
        PlatformOptions options;
        options.MessageLog = false;
        options.Link.AllowShortTimers = true;
        options.Link.AutoReconnect = true;
        return options;
    }

    static std::uint32_t Number(const SECSMessage& message) {
        return static_cast<std::uint32_t>(ToLong(message.Root()->Item(1)->Value()));
    }

    void Answer(const SECSTransPtr& trans) {
        const SECSItemPtr answer = trans->Secondary()->Root()->AddNew(1);
        if (trans->Name() == "S6F11") {
            Events.push_back(Number(*trans->Primary()));
            answer->Format(FormatU4);
            answer->Value(static_cast<std::int32_t>(Events.back()));
        } else {
            if (trans->Name() == "S7F3") {
                const Variant recipe = trans->Primary()->Root()->Item(1)->Value();
                const auto bytes = recipe.View<std::uint8_t>();
                Recipes.emplace_back(bytes.begin(), bytes.end());
            }
            answer->Format(FormatBinary);
            answer->Value(std::uint8_t{0});
        }
        trans->Reply();
    }
};

class LinkMatrix : public testing::TestWithParam<Combination> {
protected:
    void SetUp() override {
        const std::string dictionary = folder_.Write("d.xml", kDictionary);
        host_ = std::make_unique<End>(loop_, dictionary);
        equipment_ = std::make_unique<End>(loop_, dictionary);
        LinkRig ports;
        const std::int32_t hostPort = ports.FreePort();
        std::int32_t equipmentPort = ports.FreePort();
        while (equipmentPort == hostPort)
            equipmentPort = ports.FreePort();
        Configure(host_->Control, true, GetParam().HostMode, hostPort, equipmentPort);
        Configure(equipment_->Control, false, GetParam().EquipmentMode, equipmentPort, hostPort);
        if (GetParam().PortType == PortTypeRS232) {
            cable_.emplace();
            host_->Control.SerialPort(cable_->PathA());
            equipment_->Control.SerialPort(cable_->PathB());
        }
    }
    void Configure(Hexmire& control,
                   bool isHost,
                   std::int32_t mode,
                   std::int32_t localPort,
                   std::int32_t remotePort) {
        control.ConnectionHost(isHost);
        control.ConnectionPortType(GetParam().PortType);
        control.HSMSConnectionType(mode);
        control.DeviceID(5);
        control.LocalIPAddress("127.0.0.1");
        control.LocalIPPort(localPort);
        control.RemoteIPAddress("127.0.0.1");
        control.RemoteIPPort(remotePort);
        control.BaudRate(BaudRate19200);
        control.T1Timeout(2.0F);
        control.T2Timeout(10.0F);
        control.T5Timeout(1);
    }
    bool RunUntil(const std::function<bool()>& condition) {
        return loop_.RunUntil(condition, kBound);
    }

    TempFolder folder_;
    EventLoop loop_;
    std::optional<PtyCable> cable_;
    std::unique_ptr<End> host_;
    std::unique_ptr<End> equipment_;
};

TEST_P(LinkMatrix, NothingIsLostDoubledOrReordered) {
    // A side that listens opens before one that does not, or the other would wait for T5.
    const bool hostFirst = GetParam().EquipmentMode == ConnectionModeActive ||
                           GetParam().HostMode == ConnectionModePassive;
    (hostFirst ? *host_ : *equipment_).Control.OpenPort();
    (hostFirst ? *equipment_ : *host_).Control.OpenPort();
    ASSERT_TRUE(RunUntil([&] { return host_->Connects == 1 && equipment_->Connects == 1; }))
        << testing::PrintToString(host_->Errors) << testing::PrintToString(equipment_->Errors);

    for (End* end : {host_.get(), equipment_.get()})
        end->Send("S1F1", FormatBinary, std::uint8_t{1});
    std::vector<std::uint8_t> recipe(kRecipeBytes);
    std::iota(recipe.begin(), recipe.end(), std::uint8_t{0});
    for (End* end : {host_.get(), equipment_.get()})
        end->Send("S7F3", FormatBinary, Variant::Bytes(recipe));
    for (std::uint32_t event = 0; event < kEvents; ++event) {
        for (End* end : {host_.get(), equipment_.get()})
            end->Send("S6F11", FormatU4, static_cast<std::int32_t>(event));
    }
    ASSERT_TRUE(RunUntil([&] {
        return host_->Acknowledged.size() >= kEvents &&
               equipment_->Acknowledged.size() >= kEvents && host_->Replies.size() >= 2 &&
               equipment_->Replies.size() >= 2;
    }));
    // What came twice would come now.
    for (End* end : {host_.get(), equipment_.get()})
        end->Send("S1F1", FormatBinary, std::uint8_t{2});
    ASSERT_TRUE(
        RunUntil([&] { return host_->Replies.size() > 2 && equipment_->Replies.size() > 2; }));

    std::vector<std::uint32_t> numbers(kEvents);
    std::iota(numbers.begin(), numbers.end(), 0U);
    for (const End* end : {host_.get(), equipment_.get()}) {
        EXPECT_EQ(end->Events, numbers);
        EXPECT_EQ(end->Acknowledged, numbers);
        EXPECT_THAT(end->Errors, testing::IsEmpty());
        EXPECT_EQ(end->Connects, 1);
        EXPECT_THAT(end->Replies, testing::ElementsAre("S1F1", "S7F3", "S1F1"));
        EXPECT_TRUE(end->Recipes == std::vector<std::vector<std::uint8_t>>{recipe});
    }
}

const Combination kCombinations[] = {
    {"rs232", PortTypeRS232, ConnectionModeActive, ConnectionModeActive},
    {"tcpip_active_host", PortTypeTCPIP, ConnectionModeActive, ConnectionModePassive},
    {"tcpip_passive_host", PortTypeTCPIP, ConnectionModePassive, ConnectionModeActive},
    {"tcpip_alternating", PortTypeTCPIP, ConnectionModeAlternating, ConnectionModeAlternating},
    {"tcpip_alternating_host", PortTypeTCPIP, ConnectionModeAlternating, ConnectionModePassive},
    {"tcpip_alternating_equipment", PortTypeTCPIP, ConnectionModeActive, ConnectionModeAlternating},
    {"hsms_active_host", PortTypeHSMS, ConnectionModeActive, ConnectionModePassive},
    {"hsms_passive_host", PortTypeHSMS, ConnectionModePassive, ConnectionModeActive},
    {"hsms_alternating", PortTypeHSMS, ConnectionModeAlternating, ConnectionModeAlternating},
    {"hsms_alternating_equipment", PortTypeHSMS, ConnectionModePassive, ConnectionModeAlternating},
    {"hsms_ss_active_host", PortTypeHSMS_SS, ConnectionModeActive, ConnectionModePassive},
    {"hsms_ss_passive_host", PortTypeHSMS_SS, ConnectionModePassive, ConnectionModeActive},
    {"hsms_ss_alternating_host", PortTypeHSMS_SS, ConnectionModeAlternating, ConnectionModeActive},
    {"hsms_ss_alternating", PortTypeHSMS_SS, ConnectionModeAlternating, ConnectionModeAlternating},
};

INSTANTIATE_TEST_SUITE_P(All, LinkMatrix, testing::ValuesIn(kCombinations), [](const auto& one) {
    return one.param.Name;
});

}  // namespace
}  // namespace hexmire::test
