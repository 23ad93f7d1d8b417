// The byte trace of a real port.
#include "HeldFiles.h"
#include "Pty.h"
#include "RecordsRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using fakes::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ByteTraceTest : public RecordsRig {
protected:
    /// The lines of a day's file without their line ends, dates and times.
    [[nodiscard]] std::vector<std::string> Lines(const std::string& path) const {
        constexpr std::size_t kTime = 27;  // "2024/03/05 14:07:09.042000 "
        const std::string text = TempFolder::Read(path);
        std::vector<std::string> lines;
        for (std::size_t begin = 0; begin < text.size();) {
            const std::size_t end = text.find("\r\n", begin);
            if (end == std::string::npos) {
                ADD_FAILURE() << "a line without an end";
                break;
            }
            lines.push_back(text.substr(begin + kTime, end - begin - kTime));
            begin = end + 2;
        }
        return lines;
    }
    [[nodiscard]] std::vector<std::string> Lines() const {
        return Lines(folder_ / Name("05", ".log"));
    }
    void UseHeldFiles() { files_ = held_; }
    [[nodiscard]] std::string HeldText() const {
        const auto files = held_->Files();
        return files.empty() ? std::string() : files.begin()->second;
    }

    std::shared_ptr<HeldFiles> held_ = std::make_shared<HeldFiles>();
    const std::string connected_ = "Note connected: 127.0.0.1:";
};

TEST_F(ByteTraceTest, EveryByteOfAnHsmsLinkIsShown) {
    Connect();
    const std::string peer = std::to_string(peer_.Socket().local_endpoint().port());
    Linktest();
    peer_.Send("0000000B 0005 8101 0000 0000 0009 21");  // one byte of a body
    peer_.Send("0000000A FFFF 0000 0009 00000003");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    Destroy();
    const auto lines = Lines();
    ASSERT_GE(lines.size(), 7U);
    EXPECT_EQ(lines[0], connected_ + peer + " to 127.0.0.1:" + std::to_string(port_));
    EXPECT_EQ(lines[1], "Recv 14: 00 00 00 0A FF FF 00 00 00 01 00 00 00 01");
    EXPECT_EQ(lines[2], "Send 14: 00 00 00 0A FF FF 00 00 00 02 00 00 00 01");
    EXPECT_EQ(lines[3], "Recv 14: 00 00 00 0A FF FF 00 00 00 05 00 00 00 02");
    EXPECT_EQ(lines[4], "Send 14: 00 00 00 0A FF FF 00 00 00 06 00 00 00 02");
    EXPECT_THAT(lines[5], HasSubstr(": 00 00 00 0B 00 05 81 01 00 00 00 00 00 09 21"));
    EXPECT_THAT(lines, testing::Contains("Note Disconnect 3035 Separate.req received"));
    EXPECT_EQ(lines.back(), "Note disconnected: closed by this side");
    EXPECT_THAT(TempFolder::Read(folder_ / Name("05", ".log")),
                testing::StartsWith("2024/03/05 14:07:09.042000 Note connected"));
}

TEST_F(ByteTraceTest, EveryByteOfASecsIConnectionOverTcpIsShown) {
    settings_.PortType = 3;
    Make();
    driver_->OpenLink();
    ASSERT_TRUE(peer_.ConnectTo(port_));
    peer_.Send("05");
    ASSERT_EQ(peer_.Read(1), "04 ");
    peer_.Close();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    Destroy();
    const auto lines = Lines();
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(lines[1], "Recv 1: 05");
    EXPECT_EQ(lines[2], "Send 1: 04");
    EXPECT_EQ(lines.back(), "Note disconnected: closed by the peer");
}

TEST_F(ByteTraceTest, EveryByteOfASerialPortIsShown) {
    Pty line;
    settings_.PortType = 1;
    Make();
    driver_->SerialPort(line.Path());
    driver_->OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Connect"); }));
    ASSERT_EQ(::write(line.Master(), "\x05", 1), 1);
    char answer = 0;
    ASSERT_TRUE(rig_.RunUntil([&] {
        asio::posix::stream_descriptor master(rig_.Loop, ::dup(line.Master()));
        master.non_blocking(true);
        asio::error_code ignored;
        return master.read_some(asio::buffer(&answer, 1), ignored) == 1;
    }));
    EXPECT_EQ(answer, '\x04');
    Destroy();
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path()))
        names.push_back(entry.path().filename());
    const std::string device = line.Path().substr(std::string("/dev/pts/").size());
    ASSERT_THAT(names, ElementsAre("SECSI_serial-pts%2F" + device + "_2024-03-05.log"));
    EXPECT_THAT(Lines(folder_ / names[0]),
                ElementsAre("Note connected: " + line.Path(),
                            "Recv 1: 05",
                            "Send 1: 04",
                            "Note Disconnect 0",
                            "Note disconnected: closed by this side"));
}

TEST_F(ByteTraceTest, LinesAreThereWhileTheLinkIsUp) {
    Connect();
    Linktest();
    EXPECT_TRUE(rig_.RunUntil([&] { return Lines().size() == 5; }));
}

TEST_F(ByteTraceTest, WithoutTraceThereIsNoFile) {
    settings_.Trace = false;
    Connect();
    Linktest();
    Destroy();
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(ByteTraceTest, TurningItOnAndOffCountsAtOnce) {
    settings_.Trace = false;
    Connect();
    driver_->Trace(true);
    Linktest();
    driver_->Trace(false);
    Linktest();
    driver_->Trace(true);
    Linktest();
    Destroy();
    const auto lines = Lines();
    EXPECT_EQ(std::count(
                  lines.begin(), lines.end(), "Recv 14: 00 00 00 0A FF FF 00 00 00 05 00 00 00 02"),
              2);
    EXPECT_EQ(std::count(
                  lines.begin(), lines.end(), "Send 14: 00 00 00 0A FF FF 00 00 00 06 00 00 00 02"),
              2);
}

TEST_F(ByteTraceTest, AnotherFolderCountsAtOnceAndIsMadeWhenItIsMissing) {
    Connect();
    Linktest();
    driver_->SECSILogPath(folder_.Path() + "\\other\\");
    Linktest();
    Destroy();
    EXPECT_EQ(Lines().size(), 5U);
    EXPECT_THAT(Lines(folder_ / ("other/" + Name("05", ".log"))),
                testing::Contains("Recv 14: 00 00 00 0A FF FF 00 00 00 05 00 00 00 02").Times(1));
}

TEST_F(ByteTraceTest, MidnightStartsANewFile) {
    now_ = LocalMoment(5, 23, 59, 59, 999'999us);
    Connect();
    Linktest();
    now_ += 1us;
    Linktest();
    Destroy();
    EXPECT_EQ(Lines().size(), 5U);
    const std::string next = folder_ / Name("06", ".log");
    EXPECT_THAT(TempFolder::Read(next), testing::StartsWith("2024/03/06 00:00:00.000000 Recv 14"));
    EXPECT_THAT(Lines(next),
                testing::Contains("Send 14: 00 00 00 0A FF FF 00 00 00 06 00 00 00 02"));
}

TEST_F(ByteTraceTest, AFullDiskIsToldOnceAndTrafficGoesOn) {
    std::filesystem::create_symlink("/dev/full", folder_ / Name("05", ".log"));
    Connect();
    for (int count = 0; count < 10; ++count)
        Linktest();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3080"); }));
    for (int count = 0; count < 10; ++count)
        Linktest();
    EXPECT_EQ(events_.Count("Error"), 1U);
    EXPECT_EQ(events_.Texts.at(0),
              "Trace file cannot be written: " + (folder_ / Name("05", ".log")) +
                  ": No space left on device (28)");
    EXPECT_TRUE(driver_->LinkStatus());
    EXPECT_GT(driver_->Statistics().TraceEntriesLost, 0U);
}

TEST_F(ByteTraceTest, AFailureOfTheDriverItselfIsALineOfIt) {
    Connect();
    driver_->SendMessage(Header(0x81, 1, 3), Variant::Bytes(Bytes("0100")), 3);
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3099"); }));
    Destroy();
    EXPECT_THAT(Lines(),
                testing::Contains(
                    "Note Error 3099 Internal failure: message body shorter than its length"));
}

TEST_F(ByteTraceTest, AHandlerThatThrowsEachTimeIsNoFloodOfErrors) {
    Connect();
    events_.Hook = [](const std::string& line) {
        if (line.starts_with("Message")) throw std::runtime_error("handler");
    };
    for (int count = 0; count < 60; ++count)
        peer_.Send("0000000A 0005 0601 0000 00000007");
    const auto& statistics = driver_->Statistics();
    ASSERT_TRUE(rig_.RunUntil([&] { return statistics.InternalFailures == 60; }));
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3099") == 51; }));
    EXPECT_EQ(events_.Texts.back(), "Internal failure: 10 more left out");
    EXPECT_EQ(statistics.ErrorsLeftOut, 10U);
}

TEST_F(ByteTraceTest, AFailureIsToldAgainOnceWritingHasWorked) {
    UseHeldFiles();
    held_->Fail("disk gone");
    Connect();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3080") == 1; }));
    Linktest();
    held_->Fail("");
    Linktest();
    ASSERT_TRUE(rig_.RunUntil([&] { return !HeldText().empty(); }));
    EXPECT_THAT(HeldText(), HasSubstr(" lines are missing here\r\n"));
    held_->Fail("disk gone again");
    Linktest();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3080") == 2; }));
    Linktest();
    Linktest();
    EXPECT_EQ(events_.Count("Error"), 2U);
}

TEST_F(ByteTraceTest, AFolderThatIsNoneIsToldOnceForEachFolder) {
    settings_.SECSILogPath = "/proc/none";
    Connect();
    Linktest();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3080") == 1; }));
    driver_->SECSILogPath("/proc/other");
    Linktest();
    Linktest();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3080") == 2; }));
    EXPECT_THAT(events_.Texts.at(1), HasSubstr("/proc/other/SECSI_at-"));
}

TEST_F(ByteTraceTest, ADiskThatHangsHoldsUpNothing) {
    UseHeldFiles();
    held_->Hold();
    Connect();
    for (int count = 0; count < 100; ++count)
        Linktest();
    EXPECT_EQ(held_->Writes(), 0);
    held_->Release();
    Destroy();
    const std::string text = HeldText();
    std::size_t sent = 0;
    for (std::size_t at = text.find(" Send "); at != std::string::npos;
         at = text.find(" Send ", at + 1))
        ++sent;
    EXPECT_EQ(sent, 102U) << "Select.rsp, 100 Linktest.rsp, Separate.req";
}

TEST_F(ByteTraceTest, TheTailIsWrittenWhenTheDriverIsDestroyed) {
    Connect();
    Destroy();
    const auto lines = Lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_THAT(lines[3], testing::StartsWith("Send 14: 00 00 00 0A FF FF 00 00 00 09 "));
    EXPECT_EQ(lines[4], "Note disconnected: closed by this side");
}

TEST_F(ByteTraceTest, TheTailIsWrittenWhenTheDriverIsDestroyedInsideItsEvent) {
    events_.Hook = [&](const std::string& line) {
        if (line == "Disconnect 0") driver_.reset();
    };
    Connect();
    driver_->CloseLink();
    peer_.Send("0000000A FFFF 0000 0005 00000009");
    EXPECT_THAT(peer_.ReadToEnd(), testing::StartsWith("00 00 00 0A FF FF 00 00 00 09 "));
    peer_.Close();
    ASSERT_TRUE(rig_.RunUntil([&] { return driver_ == nullptr; }));
    EXPECT_THAT(Lines(), testing::Contains(testing::StartsWith("Note disconnected: closed by")));
}

TEST_F(ByteTraceTest, AnEndHasItsReason) {
    Connect();
    peer_.Reset();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    Destroy();
    EXPECT_THAT(Lines(), testing::Contains("Note disconnected: Connection reset by peer (104)"));
}

TEST_F(ByteTraceTest, EveryFailedAttemptIsNoted) {
    settings_ = LinkRig::Active(port_);
    settings_.Trace = settings_.AutoReconnect = true;
    settings_.SECSILogPath = folder_.Path();
    Make();
    driver_->OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return driver_->Statistics().ConnectFailures == 3; }));
    Destroy();
    const std::string path =
        folder_ / ("SECSI_to-127.0.0.1-" + std::to_string(port_) + "-device-5_2024-03-05.log");
    const auto lines = Lines(path);
    EXPECT_THAT(lines, testing::Contains("Note connect failed: Connection refused (111)").Times(3));
    EXPECT_THAT(lines, testing::Contains(testing::StartsWith("Note Error 3050 ")).Times(3));
}

TEST_F(ByteTraceTest, AListenerThatCannotListenIsNoted) {
    asio::ip::tcp::acceptor taken(rig_.Loop, {asio::ip::address_v4::loopback(), port_});
    Make();
    driver_->OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3052"); }));
    Destroy();
    EXPECT_THAT(Lines(), testing::Contains("Note listen failed: Address already in use (98)"));
}

TEST_F(ByteTraceTest, ASerialPortThatCannotBeOpenedIsNoted) {
    settings_.PortType = 1;
    settings_.SerialPort = "no/such/device";
    Make();
    driver_->OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3060"); }));
    Destroy();
    EXPECT_THAT(Lines(folder_ / "SECSI_serial-no%2Fsuch%2Fdevice_2024-03-05.log"),
                testing::Contains("Note open failed: No such file or directory (2)"));
}

TEST_F(ByteTraceTest, ANameCountsFromTheNextConnectionOn) {
    settings_.AutoReconnect = true;
    Connect();
    driver_->DeviceID(6);
    Linktest();
    EXPECT_TRUE(rig_.RunUntil([&] { return Lines().size() == 5; })) << "the file stays";
}

}  // namespace
}  // namespace hexmire::test
