// A control that lags behind: reading stops, nothing is lost, and the link is not given up for it.
#include <hexmire/driver/LinkStatistics.h>

#include "LinkRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

class BackPressure : public testing::TestWithParam<std::int32_t> {
protected:
    void Open() {
        hostSettings_.PortType = equipmentSettings_.PortType = GetParam();
        host_ = std::make_unique<TransportDriver>(rig_.Loop, hostEvents_, hostSettings_);
        equipment_ =
            std::make_unique<TransportDriver>(rig_.Loop, equipmentEvents_, equipmentSettings_);
        equipment_->OpenLink();
        host_->OpenLink();
        ASSERT_TRUE(rig_.RunUntil(
            [&] { return hostEvents_.Has("Connect") && equipmentEvents_.Has("Connect"); }));
        equipmentEvents_.Lines.clear();
    }
    /// The first message keeps the equipment busy until it has stopped reading.
    void SendThroughABusyHandler(std::uint32_t messages) {
        bool busy = false;
        std::uint32_t received = 0;
        std::vector<std::uint32_t> wrong;
        equipmentEvents_.Recording = false;
        equipmentEvents_.Hook = [&](const std::string& line) {
            if (!line.starts_with("Message")) return;
            std::uint8_t header[10]{};
            EXPECT_TRUE(ReadHexText(line.substr(8), 10, header));
            const auto number = static_cast<std::uint32_t>(header[8] << 8U | header[9]);
            if (number != received++) wrong.push_back(number);
            if (std::exchange(busy, true)) return;
            EXPECT_TRUE(rig_.RunUntil([&] { return equipment_->Statistics().ReadingPauses == 1; }));
        };
        for (std::uint32_t number = 0; number < messages; ++number)
            host_->SendMessage(Header(6, 1, number), "", 0);
        ASSERT_TRUE(rig_.RunUntil([&] { return received == messages; }, 30s)) << received;
        EXPECT_THAT(wrong, testing::IsEmpty()) << "out of their order";
        EXPECT_TRUE(equipment_->LinkStatus());
        EXPECT_EQ(hostEvents_.Count("Error"), 0U);
        EXPECT_THAT(equipmentEvents_.Texts,
                    testing::ElementsAre(testing::StartsWith("Receive backlog, ")));
    }

    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    LinkSettings hostSettings_ = LinkRig::Active(port_);
    LinkSettings equipmentSettings_ = LinkRig::Passive(port_);
    LinkRecorder hostEvents_;
    LinkRecorder equipmentEvents_;
    std::unique_ptr<TransportDriver> host_;
    std::unique_ptr<TransportDriver> equipment_;
};

class FrameBackPressure : public BackPressure {};

TEST_P(FrameBackPressure, StopsReadingAtTenThousandWaitingMessages) {
    Open();
    EXPECT_EQ(equipmentSettings_.MaxWaitingMessages, 10'000U);
    SendThroughABusyHandler(15'000);
}

INSTANTIATE_TEST_SUITE_P(All, FrameBackPressure, testing::Values(2, 4));

class BlockBackPressure : public BackPressure {};

TEST_P(BlockBackPressure, StopsTheLineBetweenTwoBlocks) {
    equipmentSettings_.MaxWaitingMessages = 50;
    hostSettings_.T2 = 5s;  // longer than the equipment is busy
    Open();
    SendThroughABusyHandler(150);
    EXPECT_EQ(host_->Statistics().BlocksRetried, 0U);
}

INSTANTIATE_TEST_SUITE_P(All, BlockBackPressure, testing::Values(3));

}  // namespace
}  // namespace hexmire::test
