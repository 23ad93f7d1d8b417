#include <hexmire/trans/SECSTrans.h>

#include "../fakes/Messages.h"
#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::HexOf;
using fakes::TransHost;
using Reports = TransHost::Reports;

constexpr std::int32_t kLongMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLongMin = std::numeric_limits<std::int32_t>::min();

struct HeaderRow {
    std::int32_t PortType;
    bool HostRole;
    std::int32_t DeviceId;
    bool ReplyExpected;
    std::int32_t Stream;
    std::int32_t Function;
    std::int32_t SystemBytes;
    const char* Header;
};

/// A transaction of the row's values, whose two messages bear the same numbers.
class TransHeader : public ::testing::TestWithParam<HeaderRow> {
protected:
    TransHeader() {
        const HeaderRow& row = GetParam();
        host_.PortType = row.PortType;
        host_.HostRole = row.HostRole;
        trans_ = host_.Make<SECSTrans>();
        for (const SECSMessagePtr& message : {trans_->Primary(), trans_->Secondary()}) {
            message->Stream(row.Stream);
            message->Func(row.Function);
        }
        trans_->DeviceID(row.DeviceId);
        trans_->ReplyExpected(row.ReplyExpected);
        trans_->AutoSystemBytes(false);
        Access::SystemBytes(*trans_, row.SystemBytes);
    }
    void ExpectSent(const std::string& direction) {
        ASSERT_EQ(host_.Record.Sent.size(), 1U);
        EXPECT_EQ(HexOf(host_.Record.Sent[0].Header), GetParam().Header);
        EXPECT_EQ(host_.LogLines().at(0), "SECS I HEADER " + direction + " : " + GetParam().Header);
        EXPECT_EQ(trans_->SystemBytes(), GetParam().SystemBytes);
        EXPECT_EQ(host_.Take(), Reports{});
    }

    TransHost host_;
    SECSTransPtr trans_;
};

class SendHeader : public TransHeader {};
class ReplyHeader : public TransHeader {};

TEST_P(SendHeader, HasTheTenBytesOfTheRow) {
    trans_->Send();
    ExpectSent("Send");
}

TEST_P(ReplyHeader, HasTheTenBytesOfTheRow) {
    trans_->Reply();
    ExpectSent("Reply");
}

INSTANTIATE_TEST_SUITE_P(
    Rows,
    SendHeader,
    ::testing::Values(
        // Host role: never the R-bit.
        HeaderRow{1, true, 0, true, 1, 1, 1, "00 00 81 01 00 00 00 00 00 01"},
        HeaderRow{2, true, 0, true, 1, 1, 1, "00 00 81 01 00 00 00 00 00 01"},
        HeaderRow{3, true, 0, true, 1, 1, 1, "00 00 81 01 00 00 00 00 00 01"},
        HeaderRow{4, true, 0, true, 1, 1, 1, "00 00 81 01 00 00 00 00 00 01"},
        // Equipment role: on all links but HSMS.
        HeaderRow{1, false, 0, true, 1, 1, 1, "80 00 81 01 00 00 00 00 00 01"},
        HeaderRow{2, false, 0, true, 1, 1, 1, "00 00 81 01 00 00 00 00 00 01"},
        HeaderRow{3, false, 0, true, 1, 1, 1, "80 00 81 01 00 00 00 00 00 01"},
        HeaderRow{4, false, 0, true, 1, 1, 1, "80 00 81 01 00 00 00 00 00 01"},
        // Device IDs.
        HeaderRow{1, true, 32767, true, 1, 1, 1, "7F FF 81 01 00 00 00 00 00 01"},
        HeaderRow{1, false, 32767, true, 1, 1, 1, "FF FF 81 01 00 00 00 00 00 01"},
        HeaderRow{2, false, 32767, true, 1, 1, 1, "7F FF 81 01 00 00 00 00 00 01"},
        HeaderRow{1, true, 255, true, 1, 1, 1, "00 FF 81 01 00 00 00 00 00 01"},
        HeaderRow{1, true, 256, true, 1, 1, 1, "01 00 81 01 00 00 00 00 00 01"},
        // W-bit, stream and function.
        HeaderRow{1, true, 0, false, 1, 1, 1, "00 00 01 01 00 00 00 00 00 01"},
        HeaderRow{1, true, 0, true, 0, 0, 1, "00 00 80 00 00 00 00 00 00 01"},
        HeaderRow{1, true, 0, true, 127, 255, 1, "00 00 FF FF 00 00 00 00 00 01"},
        HeaderRow{1, true, 0, false, 127, 255, 1, "00 00 7F FF 00 00 00 00 00 01"},
        HeaderRow{1, true, 0, true, 64, 128, 1, "00 00 C0 80 00 00 00 00 00 01"},
        // System bytes, most significant first.
        HeaderRow{1, true, 0, true, 1, 1, 0, "00 00 81 01 00 00 00 00 00 00"},
        HeaderRow{1, true, 0, true, 1, 1, 0x01020304, "00 00 81 01 00 00 01 02 03 04"},
        HeaderRow{1, true, 0, true, 1, 1, 0x7FFFFFFF, "00 00 81 01 00 00 7F FF FF FF"},
        HeaderRow{1, true, 0, true, 1, 1, 256, "00 00 81 01 00 00 00 00 01 00"},
        HeaderRow{1, true, 0, true, 1, 1, 900000000, "00 00 81 01 00 00 35 A4 E9 00"},
        // Below zero the shift drops what the division by 256 leaves of the fraction.
        HeaderRow{1, true, 0, true, 1, 1, -1, "00 00 81 01 00 00 00 00 00 FF"},
        HeaderRow{1, true, 0, true, 1, 1, -256, "00 00 81 01 00 00 00 00 FF 00"},
        HeaderRow{1, true, 0, true, 1, 1, -257, "00 00 81 01 00 00 00 00 FF FF"},
        HeaderRow{1, true, 0, true, 1, 1, -65537, "00 00 81 01 00 00 00 FF 00 FF"},
        HeaderRow{1, true, 0, true, 1, 1, kLongMin, "00 00 81 01 00 00 80 00 00 00"}));

INSTANTIATE_TEST_SUITE_P(
    Rows,
    ReplyHeader,
    ::testing::Values(
        // The R-bit as for a primary.
        HeaderRow{1, true, 0, true, 1, 2, 5, "00 00 01 02 00 00 00 00 00 05"},
        HeaderRow{2, true, 0, true, 1, 2, 5, "00 00 01 02 00 00 00 00 00 05"},
        HeaderRow{3, true, 0, true, 1, 2, 5, "00 00 01 02 00 00 00 00 00 05"},
        HeaderRow{4, true, 0, true, 1, 2, 5, "00 00 01 02 00 00 00 00 00 05"},
        HeaderRow{1, false, 0, true, 1, 2, 5, "80 00 01 02 00 00 00 00 00 05"},
        HeaderRow{2, false, 0, true, 1, 2, 5, "00 00 01 02 00 00 00 00 00 05"},
        HeaderRow{3, false, 0, true, 1, 2, 5, "80 00 01 02 00 00 00 00 00 05"},
        HeaderRow{4, false, 0, true, 1, 2, 5, "80 00 01 02 00 00 00 00 00 05"},
        HeaderRow{1, false, 32767, true, 1, 2, 5, "FF FF 01 02 00 00 00 00 00 05"},
        // Never the W-bit.
        HeaderRow{1, true, 0, false, 1, 2, 5, "00 00 01 02 00 00 00 00 00 05"},
        HeaderRow{1, true, 258, true, 127, 0, 5, "01 02 7F 00 00 00 00 00 00 05"},
        HeaderRow{1, true, 0, true, 0, 255, 5, "00 00 00 FF 00 00 00 00 00 05"},
        // The system bytes of the received primary.
        HeaderRow{1, true, 0, true, 1, 2, 0, "00 00 01 02 00 00 00 00 00 00"},
        HeaderRow{1, true, 0, true, 1, 2, kLongMax, "00 00 01 02 00 00 7F FF FF FF"},
        HeaderRow{1, true, 0, true, 1, 2, -257, "00 00 01 02 00 00 00 00 FF FF"}));

}  // namespace
}  // namespace hexmire
