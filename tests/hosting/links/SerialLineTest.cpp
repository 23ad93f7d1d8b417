// Traffic on a serial port in real time: characters at the pace of the line, noise, and timers.
#include <hexmire/driver/LinkStatistics.h>

#include "LinkRig.h"
#include "Pty.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr const char* kBlock = "8005 0605 8001 00000101";  // S6F5 for a host

class SerialLine : public testing::Test {
protected:
    void Connect() {
        driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
        driver_->OpenLink();
        ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Connect"); }));
        events_.Lines.clear();
    }
    /// The peer asks for the line and gets it.
    void Ask() {
        peer_.Send("05");
        ASSERT_EQ(peer_.Read(1), "04 ");
    }
    /// Sends when a timer of the driver that was started after `since` has expired, but has not
    /// been told to it yet: the loop was busy elsewhere.
    void SendLate(std::string_view hex,
                  std::chrono::steady_clock::time_point since,
                  std::chrono::milliseconds wait) {
        bool sent = false;
        asio::steady_timer justBefore(rig_.Loop, since + wait - 1ms);
        justBefore.async_wait([&](const asio::error_code&) {
            peer_.Send(hex);
            while (pty_.Unread() < static_cast<int>(Bytes(hex).size()))
                std::this_thread::yield();
            sent = true;
        });
        const auto expired = std::chrono::steady_clock::now() + wait + 1ms;
        while (std::chrono::steady_clock::now() < expired)
            std::this_thread::yield();
        ASSERT_TRUE(rig_.RunUntil([&] { return sent; }));
    }

    LinkRig rig_;
    Pty pty_;
    RawLine peer_{rig_, pty_};
    LinkSettings settings_ = LinkRig::Serial(pty_.Path());
    LinkRecorder events_;
    std::unique_ptr<TransportDriver> driver_;
};

TEST_F(SerialLine, TakesTheCharactersOfABlockAsTheyCome) {
    settings_.T1 = 250ms;
    Connect();
    Ask();
    std::string data = "420081";
    for (int count = 0; count < 129; ++count)
        data += "5A";
    peer_.SendPaced(BlockHex(kBlock, data), 2083us);  // 302 ms at 4800 bit/s
    EXPECT_EQ(peer_.Read(1), "06 ");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Message"); }));
    EXPECT_TRUE(events_.Lines.back().ends_with("| 132"));
}

TEST_F(SerialLine, BreaksOffABlockThatStopsComing) {
    settings_.T1 = 30ms;
    Connect();
    Ask();
    peer_.Send("0A 8005 0605");
    EXPECT_EQ(peer_.Read(1), "15 ");
    EXPECT_EQ(driver_->Statistics().T1Timeouts, 1U);
    Ask();
    peer_.Send(BlockHex(kBlock));
    EXPECT_EQ(peer_.Read(1), "06 ");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Message"); }));
    EXPECT_EQ(events_.Lines.front(), "Error 3001");
}

TEST_F(SerialLine, RefusesADamagedBlockOnceTheLineIsSilent) {
    settings_.T1 = 30ms;
    Connect();
    Ask();
    std::string damaged = BlockHex(kBlock, "0102030405");
    damaged[30] = damaged[30] == '0' ? '1' : '0';
    peer_.Send(damaged);
    const auto asked = std::chrono::steady_clock::now();
    EXPECT_EQ(peer_.Read(1), "15 ");
    EXPECT_GE(std::chrono::steady_clock::now() - asked, 29ms);
    Ask();
    peer_.Send(BlockHex(kBlock, "0102030405"));
    EXPECT_EQ(peer_.Read(1), "06 ");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Message"); }));
    EXPECT_EQ(events_.Lines.front(), "Error 3012");
}

TEST_F(SerialLine, IsDeafToNoise) {
    Connect();
    peer_.Send("FF 00 15 06 04");
    Ask();
    peer_.Send(BlockHex(kBlock));
    EXPECT_EQ(peer_.Read(1), "06 ");
    EXPECT_EQ(driver_->Statistics().LineNoise, 5U);
    driver_->SendMessage(Header(1, 1, 7), "", 0);
    EXPECT_EQ(peer_.Read(1), "05 ");
    peer_.Send("15 06 FF");
    peer_.Send("04");
    const std::string block = peer_.Read(13);
    EXPECT_TRUE(block.starts_with("0A 00 05 01 01 80 01 "));
    peer_.Send("FF");  // what was to be an ACK
    EXPECT_EQ(peer_.Read(1), "05 ");
    peer_.Send("04");
    EXPECT_EQ(peer_.Read(13), block);
    peer_.Send("06");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Sent"); }));
    EXPECT_EQ(events_.Count("Error"), 0U);
}

TEST_F(SerialLine, GivesUpAMessageAfterTheRetriesAndStays) {
    settings_.T2 = 10ms;
    settings_.ConnectionRetryLimit = 2;
    Connect();
    driver_->SendMessage(Header(1, 1, 7), "", 0);
    EXPECT_EQ(peer_.Read(3), "05 05 05 ");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3010"); }));
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3010"));
    EXPECT_THAT(events_.Texts.back(), testing::EndsWith(" hdr=00050101800100000007"));
    Ask();
    peer_.Send(BlockHex(kBlock));
    EXPECT_EQ(peer_.Read(1), "06 ");
}

TEST_F(SerialLine, WaitsForTheAckAsLongAsTheBlockIsOnTheLine) {
    settings_.T2 = 150ms;
    settings_.BaudRate = 1200;
    Connect();
    const std::vector<std::uint8_t> body(244, 0x41);
    driver_->SendMessage(Header(6, 1, 1), Variant::Bytes(body), 244);
    EXPECT_EQ(peer_.Read(1), "05 ");
    peer_.Send("04");
    (void)peer_.Read(257);  // all at once here, but 2.1 s of a real line
    rig_.RunFor(200ms);
    peer_.Send("06");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Sent"); }));
    EXPECT_EQ(driver_->Statistics().BlocksRetried, 0U);
}

TEST_F(SerialLine, ReadsWhatWaitsBeforeT1Counts) {
    settings_.T1 = 20ms;
    Connect();
    Ask();
    const std::string block = BlockHex(kBlock);
    const auto since = std::chrono::steady_clock::now();
    peer_.Send(block.substr(0, 15));
    while (pty_.Unread() != 5)
        std::this_thread::yield();
    ASSERT_TRUE(rig_.RunUntil([&] { return pty_.Unread() == 0; }));
    SendLate(block.substr(15), since, 20ms);
    EXPECT_EQ(peer_.Read(1), "06 ");
    EXPECT_EQ(driver_->Statistics().T1Timeouts, 0U);
    EXPECT_EQ(driver_->Statistics().LateReads, 1U);
}

TEST_F(SerialLine, ReadsWhatWaitsBeforeT2Counts) {
    settings_.T2 = 50ms;
    constexpr auto kOneCharacter = 21ms;  // and what an adapter holds back
    constexpr auto kOneBlock = 27ms;
    Connect();
    auto since = std::chrono::steady_clock::now();
    driver_->SendMessage(Header(1, 1, 7), "", 0);
    EXPECT_EQ(peer_.Read(1), "05 ");
    SendLate("04", since, settings_.T2 + kOneCharacter);
    since = std::chrono::steady_clock::now() - 2ms;
    EXPECT_TRUE(peer_.Read(13).starts_with("0A "));
    SendLate("06", since, settings_.T2 + kOneBlock);
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Sent"); }));
    EXPECT_EQ(driver_->Statistics().T2Timeouts, 0U);
    EXPECT_EQ(driver_->Statistics().LateReads, 2U);
}

TEST_F(SerialLine, IsNotHeldUpByNoiseThatWaitsWhenT2Expires) {
    settings_.T2 = 150ms;
    settings_.ConnectionRetryLimit = 0;
    Connect();
    const auto since = std::chrono::steady_clock::now();
    driver_->SendMessage(Header(1, 1, 7), "", 0);
    EXPECT_EQ(peer_.Read(1), "05 ");
    SendLate("FF", since, settings_.T2 + 21ms);
    EXPECT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3010"); }, 120ms))
        << "within less than one more T2";
    EXPECT_EQ(driver_->Statistics().LateReads, 1U);
}

TEST_F(SerialLine, TakesASettingOfItsTimersAtOnce) {
    Connect();
    driver_->T1(0.03F);
    driver_->ConnectionRetryLimit(0);
    Ask();
    peer_.Send("0A 8005");
    EXPECT_EQ(peer_.Read(1), "15 ") << "after the new T1 of 30 ms";
    driver_->T2(0.01F);
    driver_->SendMessage(Header(1, 1, 7), "", 0);
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3010"); }));
    EXPECT_EQ(peer_.Read(1), "05 ") << "once, and no retry";
    EXPECT_EQ(driver_->Statistics().BlocksRetried, 0U);
}

}  // namespace
}  // namespace hexmire::test
