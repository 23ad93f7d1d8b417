// A host that ends its link, or its driver, from inside a handler, on every port type.
#include "LinkRig.h"
#include "Pty.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <tuple>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

enum class Ending : std::uint8_t { CloseLink, Destroy, Reopen };

using Case = std::tuple<std::int32_t, std::string, Ending>;

/// Port type, the event whose handler acts, and what it does.
class StopInHandlers : public testing::TestWithParam<Case> {
protected:
    StopInHandlers() {
        hostSettings_.PortType = equipmentSettings_.PortType = PortType();
        equipmentSettings_.AutoReconnect = true;
        if (PortType() == 1) {
            cable_.emplace();
            hostSettings_.SerialPort = cable_->PathA();
            equipmentSettings_.SerialPort = cable_->PathB();
        }
        hostSettings_.T1 = equipmentSettings_.T1 = 2s;
        hostSettings_.T2 = equipmentSettings_.T2 = 5s;
        host_ = std::make_unique<TransportDriver>(rig_.Loop, hostEvents_, hostSettings_);
        equipment_ =
            std::make_unique<TransportDriver>(rig_.Loop, equipmentEvents_, equipmentSettings_);
    }
    [[nodiscard]] static std::int32_t PortType() { return std::get<0>(GetParam()); }

    /// The equipment answers whatever it gets.
    void Answer(const std::string& line) {
        if (!line.starts_with("Message")) return;
        std::uint8_t header[10]{};
        ASSERT_TRUE(ReadHexText(line.substr(8), 10, header));
        header[2] = 1, header[3] = 2;
        equipment_->SendMessage(header, "", 0);
    }
    void Act() {
        switch (std::get<2>(GetParam())) {
            case Ending::Destroy:
                return host_.reset();
            case Ending::CloseLink:
                return host_->CloseLink();
            case Ending::Reopen:
                host_->CloseLink();
                return host_->OpenLink();
        }
    }

    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    LinkSettings hostSettings_ = LinkRig::Active(port_);
    LinkSettings equipmentSettings_ = LinkRig::Passive(port_);
    std::optional<PtyCable> cable_;
    LinkRecorder hostEvents_;
    LinkRecorder equipmentEvents_;
    std::unique_ptr<TransportDriver> host_;
    std::unique_ptr<TransportDriver> equipment_;
};

TEST_P(StopInHandlers, NothingOfTheOldConnectionFollows) {
    bool acted = false;
    std::vector<std::string> after;
    equipmentEvents_.Hook = [this](const std::string& line) { Answer(line); };
    hostEvents_.Hook = [&](const std::string& line) {
        if (acted) return after.push_back(line);
        if (line == "Connect") host_->SendMessage(Header(0x81, 1, 3), "", 0);
        if (!line.starts_with(std::get<1>(GetParam()))) return;
        acted = true;
        Act();
    };
    equipment_->OpenLink();
    host_->OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return acted; }));
    hostEvents_.Hook = [&](const std::string& line) { after.push_back(line); };
    const auto ended = [&] { return !after.empty() && after.back() == "Connect"; };
    const auto disconnected = [&] {
        return testing::Matches(testing::Contains("Disconnect 0"))(after);
    };
    switch (std::get<2>(GetParam())) {
        case Ending::Destroy:
            rig_.RunFor(5ms);
            EXPECT_THAT(after, testing::IsEmpty());
            break;
        case Ending::CloseLink:
            EXPECT_FALSE(host_->LinkStatus());
            ASSERT_TRUE(rig_.RunUntil(disconnected, 5s));
            EXPECT_EQ(after.back(), "Disconnect 0");
            break;
        case Ending::Reopen:
            EXPECT_TRUE(host_->LinkStatus());
            ASSERT_TRUE(rig_.RunUntil(ended, 5s)) << testing::PrintToString(after);
            EXPECT_THAT(after, testing::Contains("Disconnect 0").Times(1));
            break;
    }
    // The end of a connection is the last that is told of it; what waited may be told before.
    for (const std::string& line : after)
        EXPECT_FALSE(line.starts_with("Error 309")) << line;
}

INSTANTIATE_TEST_SUITE_P(
    All,
    StopInHandlers,
    testing::Combine(testing::Values(1, 2, 3, 4),
                     testing::Values("Connect", "Sent", "Block", "Message"),
                     testing::Values(Ending::CloseLink, Ending::Destroy, Ending::Reopen)));

}  // namespace
}  // namespace hexmire::test
