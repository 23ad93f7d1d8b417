// A serial port as the driver opens it, keeps it for itself, and loses it.
#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/hosting/links/SerialStream.h>

#include "../TempFolder.h"
#include "LinkRig.h"
#include "Pty.h"
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <filesystem>
#include <memory>
#include <utility>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using fakes::TempFolder;
using testing::ElementsAre;

class SerialPort : public testing::Test {
protected:
    void Open() {
        driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
        driver_->OpenLink();
    }
    bool Connect() {
        Open();
        return rig_.RunUntil([&] { return events_.Has("Connect"); });
    }
    /// The line goes away, as an adapter that is pulled out.
    void HangUp() {
        peer_.Close();
        pty_.HangUp();
    }
    [[nodiscard]] termios Settings() const {
        termios present{};
        EXPECT_EQ(::tcgetattr(pty_.Slave(), &present), 0);
        return present;
    }
    [[nodiscard]] bool IsExclusive() const {
        int exclusive = -1;
        EXPECT_EQ(::ioctl(pty_.Slave(), TIOCGEXCL, &exclusive), 0);
        return exclusive == 1;
    }

    LinkRig rig_;
    Pty pty_;
    RawLine peer_{rig_, pty_};
    LinkSettings settings_ = LinkRig::Serial(pty_.Path());
    LinkRecorder events_;
    std::unique_ptr<TransportDriver> driver_;
};

// --- opening -------------------------------------------------------------------------------------

TEST_F(SerialPort, IsConnectedAsSoonAsItIsOpen) {
    Open();
    EXPECT_TRUE(driver_->LinkStatus());
    EXPECT_THAT(events_.Lines, testing::IsEmpty()) << "no event from inside the call";
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Connect"); }));
    EXPECT_THAT(events_.Lines, ElementsAre("Connect"));
}

TEST_F(SerialPort, CarriesMessagesBothWays) {
    ASSERT_TRUE(Connect());
    events_.Lines.clear();
    driver_->SendMessage(Header(0x81, 1, 0x101), "", 0);
    EXPECT_EQ(peer_.Read(1), "05 ");
    peer_.Send("04");
    EXPECT_EQ(peer_.Read(13), "0A 00 05 81 01 80 01 00 00 01 01 01 0A ");
    peer_.Send("06");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Sent"); }));
    peer_.Send("05");
    EXPECT_EQ(peer_.Read(1), "04 ");
    peer_.Send(BlockHex("8005 0102 8001 00000101", "0100"));
    EXPECT_EQ(peer_.Read(1), "06 ");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Message"); }));
    EXPECT_THAT(events_.Lines,
                ElementsAre("Sent 00 05 81 01 80 01 00 00 01 01 ",
                            "Block 80 05 01 02 80 01 00 00 01 01 01 00 ",
                            "Message 00 05 01 02 80 01 00 00 01 01 | 01 00 | 2"));
}

TEST_F(SerialPort, IsRawWithEightBitsNoParityAndNoFlowControlWhateverItWas) {
    termios before = Settings();
    before.c_lflag |= ICANON | ECHO | ISIG;
    before.c_iflag |= IXON | IXOFF | ICRNL | INLCR;
    before.c_oflag |= OPOST;
    before.c_cflag |= CSTOPB | CRTSCTS;
    before.c_cc[VMIN] = 0;
    before.c_cc[VTIME] = 5;
    ASSERT_EQ(::tcsetattr(pty_.Slave(), TCSANOW, &before), 0);
    ASSERT_TRUE(Connect());
    const termios present = Settings();
    const tcflag_t line = CSIZE | PARENB | CSTOPB | CRTSCTS | CLOCAL | CREAD;
    EXPECT_EQ(present.c_cflag & line, tcflag_t{CS8 | CLOCAL | CREAD});
    EXPECT_EQ(present.c_lflag & (ICANON | ECHO | ISIG), 0U);
    EXPECT_EQ(present.c_iflag & (IXON | IXOFF | ICRNL | INLCR | IGNPAR), tcflag_t{IGNPAR});
    EXPECT_EQ(present.c_oflag & OPOST, 0U);
    EXPECT_EQ(present.c_cc[VMIN], 1);
    EXPECT_EQ(present.c_cc[VTIME], 0);
}

TEST_F(SerialPort, HasTheSpeedThatIsSet) {
    constexpr std::pair<int, speed_t> kSpeeds[] = {{150, B150},
                                                   {300, B300},
                                                   {1200, B1200},
                                                   {2400, B2400},
                                                   {4800, B4800},
                                                   {9600, B9600},
                                                   {19200, B19200}};
    for (const auto& [baud, speed] : kSpeeds) {
        settings_.BaudRate = baud;
        events_.Lines.clear();
        ASSERT_TRUE(Connect()) << baud;
        const termios present = Settings();
        EXPECT_EQ(::cfgetispeed(&present), speed);
        EXPECT_EQ(::cfgetospeed(&present), speed);
        driver_.reset();
    }
}

TEST_F(SerialPort, TakesAnotherSpeedWithItsNextOpening) {
    ASSERT_TRUE(Connect());
    driver_->BaudRate(1200);
    termios present = Settings();
    EXPECT_EQ(::cfgetospeed(&present), speed_t{B19200}) << "the line stays as it is";
    driver_->CloseLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect 0"); }));
    driver_->OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Connect") == 2; }));
    present = Settings();
    EXPECT_EQ(::cfgetospeed(&present), speed_t{B1200});
}

TEST_F(SerialPort, IsNotHandedDownToChildProcesses) {
    ASSERT_TRUE(Connect());
    int found = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const int descriptor = std::stoi(entry.path().filename().string());
        const auto target = std::filesystem::read_symlink(entry.path(), gone);
        if (target != pty_.Path() || descriptor == pty_.Slave()) continue;
        ++found;
        EXPECT_EQ(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    }
    EXPECT_EQ(found, 1);
}

TEST_F(SerialPort, ForgetsWhatCameBeforeItWasOpened) {
    peer_.Send("05 05 05");
    ASSERT_TRUE(rig_.RunUntil([&] { return pty_.Unread() == 3; }));
    ASSERT_TRUE(Connect());
    peer_.Send("05");
    EXPECT_EQ(peer_.Read(1), "04 ");
    peer_.Send(BlockHex("8005 0102 8001 00000101"));
    EXPECT_EQ(peer_.Read(1), "06 ");
    EXPECT_EQ(driver_->Statistics().BadBlockLengths, 0U);
}

TEST_F(SerialPort, CountsAT1ThatIsTooShortForTheSpeed) {
    settings_.BaudRate = 150;
    settings_.T1 = 219ms;
    ASSERT_TRUE(Connect());
    EXPECT_EQ(driver_->Statistics().ShortT1s, 1U);
    driver_.reset();
    events_.Lines.clear();
    settings_.T1 = 220ms;
    ASSERT_TRUE(Connect());
    EXPECT_EQ(driver_->Statistics().ShortT1s, 0U);
}

// --- openings that fail --------------------------------------------------------------------------

TEST_F(SerialPort, ThatDoesNotExistLeavesThePortClosed) {
    settings_.AutoReconnect = true;
    settings_.SerialPort = "/dev/no-such-port";
    Open();
    EXPECT_FALSE(driver_->LinkStatus());
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error"); }));
    rig_.RunFor(50ms);
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3060")) << "it is not tried again";
    EXPECT_EQ(events_.Texts.at(0),
              "Serial port cannot be opened: /dev/no-such-port, No such file or directory (2)");
}

TEST_F(SerialPort, ThatIsAFileLeavesThePortClosed) {
    const TempFolder folder;
    settings_.SerialPort = folder.Write("no-port", "");
    Open();
    EXPECT_FALSE(driver_->LinkStatus());
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error"); }));
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3061"));
}

TEST_F(SerialPort, BelongsToTheFirstDriver) {
    ASSERT_TRUE(Connect());
    EXPECT_TRUE(IsExclusive());
    LinkRecorder others;
    TransportDriver other(rig_.Loop, others, settings_);
    other.OpenLink();
    EXPECT_TRUE(other.LinkStatus()) << "the port may come free";
    ASSERT_TRUE(rig_.RunUntil([&] { return others.Count("Error 3062") == 2; }));
    EXPECT_EQ(others.Lines.size(), 2U) << "one attempt every T5";
    EXPECT_THAT(events_.Lines, ElementsAre("Connect")) << "the first one notices nothing";
    driver_->CloseLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return others.Has("Connect"); }));
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect 0"); }));
}

TEST_F(SerialPort, ThatAnotherProgramHasLockedIsInUse) {
    ASSERT_EQ(::flock(pty_.Slave(), LOCK_EX | LOCK_NB), 0);
    Open();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3062"); }));
    ASSERT_EQ(::flock(pty_.Slave(), LOCK_UN), 0);
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Connect"); }));
}

TEST_F(SerialPort, IsFreeAgainOnceItIsClosed) {
    ASSERT_TRUE(Connect());
    driver_->CloseLink();
    EXPECT_FALSE(driver_->LinkStatus());
    EXPECT_FALSE(IsExclusive());
    EXPECT_EQ(::flock(pty_.Slave(), LOCK_EX | LOCK_NB), 0);
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    EXPECT_THAT(events_.Lines, ElementsAre("Connect", "Disconnect 0"));
    EXPECT_THAT(events_.Texts, ElementsAre(""));
}

TEST(SerialDevicePath, PutsANameWithoutASlashIntoDev) {
    EXPECT_EQ(link::SerialDevicePath("COM1"), "/dev/COM1");
    EXPECT_EQ(link::SerialDevicePath("ttyUSB0"), "/dev/ttyUSB0");
    EXPECT_EQ(link::SerialDevicePath("/dev/ttyS1"), "/dev/ttyS1");
    EXPECT_EQ(link::SerialDevicePath("./tty"), "./tty");
}

// --- loss ----------------------------------------------------------------------------------------

TEST_F(SerialPort, ThatIsLostClosesThePort) {
    ASSERT_TRUE(Connect());
    HangUp();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    EXPECT_FALSE(driver_->LinkStatus());
    rig_.RunFor(50ms);
    EXPECT_THAT(events_.Lines, ElementsAre("Connect", "Disconnect 3063"));
}

TEST_F(SerialPort, ThatIsLostWhileAMessageWaitsTellsOfTheMessage) {
    ASSERT_TRUE(Connect());
    driver_->SendMessage(Header(0x81, 1, 1), "", 0);
    driver_->SendMessage(Header(0x81, 3, 2), "", 0);
    EXPECT_EQ(peer_.Read(1), "05 ");
    HangUp();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    EXPECT_THAT(events_.Lines,
                ElementsAre("Connect", "Error 3073", "Error 3073", "Disconnect 3063"));
}

TEST_F(SerialPort, ThatIsLostIsNoticedByAWriteToo) {
    ASSERT_TRUE(Connect());
    HangUp();
    driver_->SendMessage(Header(0x81, 1, 1), "", 0);
    EXPECT_FALSE(driver_->LinkStatus());
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    EXPECT_THAT(events_.Lines, ElementsAre("Connect", "Error 3073", "Disconnect 3063"));
}

TEST_F(SerialPort, ThatIsLostIsOpenedAgainWhenItComesBack) {
    const TempFolder folder;
    const std::string path = folder / "port";
    std::filesystem::create_symlink(pty_.Path(), path);
    settings_.SerialPort = path;
    settings_.AutoReconnect = true;
    ASSERT_TRUE(Connect());
    HangUp();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 306") == 2; }));
    EXPECT_TRUE(driver_->LinkStatus());
    EXPECT_TRUE(events_.Has("Disconnect 3063"));

    const Pty next;
    RawLine line(rig_, next);
    std::filesystem::remove(path);
    std::filesystem::create_symlink(next.Path(), path);
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Connect") == 2; }));
    line.Send("05");
    EXPECT_EQ(line.Read(1), "04 ") << "and nothing of the time before is left";
}

}  // namespace
}  // namespace hexmire::test
