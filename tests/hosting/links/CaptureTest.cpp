// Captures of real connections, read back packet by packet.
#include "../../fakes/CaptureReader.h"
#include "HeldFiles.h"
#include "RecordsRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using fakes::ReadCapture;
using fakes::ReadSegment;
using fakes::ShowCapture;
using fakes::TempFolder;
using testing::ElementsAre;
using testing::StartsWith;

class CaptureTest : public RecordsRig {
protected:
    CaptureTest() {
        settings_.Trace = false;
        settings_.CaptureFolder = folder_.Path();
    }
    [[nodiscard]] std::string File(const std::string& day = "05") const {
        return TempFolder::Read(folder_ / Name(day, ".pcapng"));
    }
};

TEST_F(CaptureTest, AnHsmsConnectionIsCapturedFromItsOpeningToItsEnd) {
    Connect();
    const std::string caller =
        "127.0.0.1:" + std::to_string(peer_.Socket().local_endpoint().port());
    Linktest();
    peer_.Close();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    Destroy();
    EXPECT_THAT(
        ShowCapture(File()),
        ElementsAre("< S 0 0 | connected: " + caller + " to 127.0.0.1:" + std::to_string(port_),
                    "> SA 0 1",
                    "< A 1 1",
                    "< PA 1 1 | 00 00 00 0A FF FF 00 00 00 01 00 00 00 01 ",
                    "> PA 1 15 | 00 00 00 0A FF FF 00 00 00 02 00 00 00 01 ",
                    "< PA 15 15 | 00 00 00 0A FF FF 00 00 00 05 00 00 00 02 ",
                    "> PA 15 29 | 00 00 00 0A FF FF 00 00 00 06 00 00 00 02 ",
                    "< FA 29 29 | disconnected: closed by the peer",
                    "> FA 29 30",
                    "< A 30 30"));
}

TEST_F(CaptureTest, PacketsNameBothEndsAndTheMoment) {
    Connect();
    const std::uint16_t caller = peer_.Socket().local_endpoint().port();
    Destroy();
    const fakes::CaptureFile file = ReadCapture(File());
    EXPECT_EQ(file.Sections, 1);
    EXPECT_THAT(file.Interfaces,
                ElementsAre("at-127.0.0.1-" + std::to_string(port_) + "-device-5"));
    const fakes::Segment first = ReadSegment(file.Packets.at(0).Frame);
    EXPECT_EQ(first.Source, "7F 00 00 01 : " + std::to_string(caller));
    EXPECT_EQ(first.Destination, "7F 00 00 01 : " + std::to_string(port_));
    EXPECT_EQ(
        file.Packets.at(0).Nanoseconds,
        static_cast<std::uint64_t>(std::chrono::nanoseconds(now_.time_since_epoch()).count()));
}

TEST_F(CaptureTest, SecsIOverTcpIsCapturedAsWell) {
    settings_.PortType = 3;
    Make();
    driver_->OpenLink();
    ASSERT_TRUE(peer_.ConnectTo(port_));
    peer_.Send("05");
    ASSERT_EQ(peer_.Read(1), "04 ");
    peer_.Reset();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    Destroy();
    const auto lines = ShowCapture(File());
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[3], "< PA 1 1 | 05 ");
    EXPECT_EQ(lines[4], "> PA 1 2 | 04 ");
    EXPECT_EQ(lines[5], "< RA 2 2 | disconnected: Connection reset by peer (104)");
}

TEST_F(CaptureTest, AConnectionOfOursOverIPv6OpensFromOurSide) {
    asio::ip::tcp::acceptor listener(rig_.Loop, {asio::ip::address_v6::loopback(), 0});
    settings_ = LinkRig::Active(listener.local_endpoint().port());
    settings_.RemoteIPAddress = settings_.LocalIPAddress = "::1";
    settings_.CaptureFolder = folder_.Path();
    Make();
    driver_->OpenLink();
    ASSERT_TRUE(peer_.AcceptFrom(listener));
    EXPECT_THAT(peer_.Read(kFrame), StartsWith("00 00 00 0A FF FF 00 00 00 01 "));
    const std::string path =
        folder_ / ("SECSI_to-%3A%3A1-" + std::to_string(listener.local_endpoint().port()) +
                   "-device-5_2024-03-05.pcapng");
    ASSERT_TRUE(rig_.RunUntil([&] { return ShowCapture(TempFolder::Read(path)).size() == 4; }));
    Destroy();
    const auto lines = ShowCapture(TempFolder::Read(path));
    EXPECT_THAT(lines.at(0), StartsWith("> S 0 0 | connected: [::1]:"));
    EXPECT_THAT(lines.at(3), StartsWith("> PA 1 1 | 00 00 00 0A FF FF 00 00 00 01 "));
    EXPECT_THAT(lines.at(4), StartsWith("> FA "));
}

TEST_F(CaptureTest, ASecondRunGoesOnWithTheSameFile) {
    Connect();
    Destroy();
    peer_.Close();
    events_.Lines.clear();
    Connect();
    Destroy();
    const fakes::CaptureFile file = ReadCapture(File());
    EXPECT_EQ(file.Sections, 1);
    EXPECT_EQ(
        std::count_if(file.Packets.begin(),
                      file.Packets.end(),
                      [](const auto& packet) { return packet.Comment.starts_with("connected"); }),
        2);
}

TEST_F(CaptureTest, EachConnectionHasAnEndOfItsOwn) {
    settings_.AutoReconnect = true;
    Connect();
    peer_.Close();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    ASSERT_TRUE(peer_.ConnectTo(port_));
    peer_.Send(kSelect);
    ASSERT_EQ(peer_.Read(kFrame), "00 00 00 0A FF FF 00 00 00 02 00 00 00 01 ");
    Destroy();
    std::vector<std::string> ends;
    for (const std::string& line : ShowCapture(File())) {
        if (line.ends_with("closed by the peer") || line.ends_with("closed by this side"))
            ends.push_back(line.substr(0, 4) + line.substr(line.find("closed")));
    }
    EXPECT_THAT(ends, ElementsAre("< FAclosed by the peer", "> FAclosed by this side"));
}

TEST_F(CaptureTest, MidnightStartsANewFileWithAnInterfaceOfItsOwn) {
    now_ = LocalMoment(5, 23, 59, 59, 999'999us);
    Connect();
    now_ += 1us;
    Linktest();
    Destroy();
    EXPECT_EQ(ShowCapture(File()).size(), 5U);
    EXPECT_THAT(ShowCapture(File("06")).at(0),
                StartsWith("< PA 15 15 | 00 00 00 0A FF FF 00 00 00 05 "));
}

TEST_F(CaptureTest, APacketThatWasLeftOutShowsAsAHoleInTheSequence) {
    const auto held = std::make_shared<HeldFiles>();
    files_ = held;
    held->Fail("full");
    Connect();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3080") == 1; }));
    ASSERT_TRUE(rig_.RunUntil([&] { return driver_->Statistics().TraceEntriesLost == 3; }));
    held->Fail("");
    Linktest();
    Destroy();
    EXPECT_THAT(ShowCapture(held->Files().begin()->second).at(0), StartsWith("< PA 15 15 | "));
}

TEST_F(CaptureTest, WithoutAFolderThereIsNone) {
    settings_.CaptureFolder = "";
    Connect();
    Destroy();
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

}  // namespace
}  // namespace hexmire::test
