#pragma once

#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/hosting/RecordFiles.h>
#include <hexmire/hosting/links/RecordSite.h>

#include "../TempFolder.h"
#include "LinkRig.h"
#include <gtest/gtest.h>

#include <ctime>

namespace hexmire::test {

/// A moment of local time.
[[nodiscard]] inline std::chrono::system_clock::time_point LocalMoment(
    int day, int hour, int minute, int second, std::chrono::microseconds more = {}) {
    std::tm parts{};
    parts.tm_year = 2024 - 1900;
    parts.tm_mon = 3 - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&parts)) + more;
}

/// One driver that keeps records, its clock set by hand to 2024/03/05 14:07:09.042, and a raw peer
/// at the other end.
class RecordsRig : public testing::Test {
protected:
    static constexpr const char* kSelect = "0000000A FFFF 0000 0001 00000001";
    static constexpr const char* kLinktest = "0000000A FFFF 0000 0005 00000002";
    static constexpr std::size_t kFrame = 14;

    RecordsRig() {
        settings_.Trace = true;
        settings_.SECSILogPath = folder_.Path();
    }
    void Make() {
        const link::RecordSite site{.Files = files_, .Now = [this] { return now_; }};
        driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_, site);
    }
    /// Opens the driver and connects the peer; on HSMS it selects.
    void Connect() {
        Make();
        driver_->OpenLink();
        ASSERT_TRUE(peer_.ConnectTo(port_));
        peer_.Send(kSelect);
        ASSERT_EQ(peer_.Read(kFrame), "00 00 00 0A FF FF 00 00 00 02 00 00 00 01 ");
        ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Connect"); }));
    }
    /// One question of the peer and its answer.
    void Linktest() {
        peer_.Send(kLinktest);
        ASSERT_EQ(peer_.Read(kFrame), "00 00 00 0A FF FF 00 00 00 06 00 00 00 02 ");
    }
    /// Ends the driver, after which everything is written.
    void Destroy() { driver_.reset(); }
    [[nodiscard]] std::string Name(const std::string& day, const std::string& extension) const {
        return "SECSI_at-127.0.0.1-" + std::to_string(port_) + "-device-5_2024-03-" + day +
               extension;
    }

    fakes::TempFolder folder_;
    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    LinkSettings settings_ = LinkRig::Passive(port_);
    std::shared_ptr<IRecordFiles> files_ = std::make_shared<RecordFiles>();
    std::chrono::system_clock::time_point now_ =
        LocalMoment(5, 14, 7, 9, std::chrono::milliseconds(42));
    LinkRecorder events_;
    RawPeer peer_{rig_};
    std::unique_ptr<TransportDriver> driver_;
};

}  // namespace hexmire::test
