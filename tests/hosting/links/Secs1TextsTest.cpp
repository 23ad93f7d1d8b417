// The texts that the control gets from a SECS-I link: each byte three characters, headers in the
// form that it knows, events in their order. No socket: the machine's events, raised one by one.
#include <hexmire/driver/secs1/LinkMachine.h>
#include <hexmire/hosting/links/EventQueue.h>

#include "LinkRig.h"
#include <gtest/gtest.h>

#include <array>

namespace hexmire::test {
namespace {

using secs1::BlockHeader;
using Lines = std::vector<std::string>;

/// A connected machine whose events are raised as a shell raises them: after the turn, in order.
class Secs1Texts : public testing::Test {
protected:
    void SetUp() override {
        machine_.Open(now_);
        machine_.OnConnected({"10.0.0.1", 40'000, "10.0.0.2", 5'000, false}, now_);
        Turn();
        recorder_.Lines.clear();
    }
    static LinkSettings Settings() {
        LinkSettings settings;
        settings.PortType = 3;
        settings.DeviceID = 5;
        return settings;
    }
    void Feed(const std::vector<std::uint8_t>& bytes) {
        machine_.OnBytes(bytes, now_);
        Turn();
    }
    /// One turn of a loop: the actions, the writes, then the events.
    void Turn() {
        Perform();
        while (!events_.IsEmpty()) {
            events_.RaiseNext();
            Perform();
        }
    }
    void Perform() {
        std::vector<link::Action> actions;
        std::array<std::span<const std::uint8_t>, 16> views;
        do {
            machine_.TakeActions(actions);
            for (link::Action& action : actions) {
                if (link::IsEvent(action)) events_.Push(std::move(action));
            }
            std::size_t count = 0;
            for (std::size_t view = machine_.Output(views); view > 0; --view) {
                count += views[view - 1].size();
            }
            if (count > 0) machine_.OnWritten(count, now_);
        } while (!actions.empty());
    }
    /// ENQ and a block of the equipment.
    static std::vector<std::uint8_t> Block(BlockHeader header,
                                           const std::vector<std::uint8_t>& data) {
        header.ToHost = true;
        header.DeviceID = 5;
        auto bytes = secs1::EncodeBlock(header, data);
        bytes.insert(bytes.begin(), secs1::kEnq);
        return bytes;
    }

    link::TimePoint now_{std::chrono::hours(1)};
    LinkStatistics counts_;
    LinkRecorder recorder_;
    link::EventQueue events_{recorder_};
    secs1::LinkMachine machine_{Settings(), counts_};
};

const BlockHeader kFirst{
    .WBit = true, .Stream = 6, .Function = 11, .IsLast = false, .Number = 1, .SystemBytes = 77};
const BlockHeader kLast{
    .WBit = true, .Stream = 6, .Function = 11, .IsLast = true, .Number = 2, .SystemBytes = 77};

TEST_F(Secs1Texts, BlocksKeepTheirHeaderAndMessagesHaveThatOfTheLast) {
    Feed(Block(kFirst, {0x01}));
    EXPECT_EQ(recorder_.Lines, Lines{"Block 80 05 86 0B 00 01 00 00 00 4D 01 "});
    recorder_.Lines.clear();
    Feed(Block(kLast, {0x00, 0xAF}));
    EXPECT_EQ(recorder_.Lines,
              (Lines{"Block 80 05 86 0B 80 02 00 00 00 4D 00 AF ",
                     "Message 00 05 86 0B 80 02 00 00 00 4D | 01 00 AF | 3"}));
}

TEST_F(Secs1Texts, AMessageWithoutABodyIsItsHeader) {
    Feed(Block({.WBit = true, .Stream = 1, .Function = 1, .SystemBytes = 0x01020304}, {}));
    EXPECT_EQ(recorder_.Lines,
              (Lines{"Block 80 05 81 01 80 01 01 02 03 04 ",
                     "Message 00 05 81 01 80 01 01 02 03 04 | | 0"}));
}

TEST_F(Secs1Texts, WhatIsSentIsToldInTheSameForm) {
    const std::vector<std::uint8_t> body(245, 0x41);
    machine_.Send(Header(0x87, 3, 78), body, now_);
    Turn();
    Feed({secs1::kEot});
    Feed({secs1::kAck});
    Feed({secs1::kEot});
    EXPECT_EQ(recorder_.Lines, Lines{});
    Feed({secs1::kAck});
    std::string expected = "Sent 00 05 87 03 80 02 00 00 00 4E ";
    for (std::size_t byte = 0; byte < body.size(); ++byte) {
        expected += "41 ";
    }
    EXPECT_EQ(recorder_.Lines, Lines{expected});
}

TEST_F(Secs1Texts, TheSendIsToldBeforeTheReplyThatComesWithItsAck) {
    machine_.Send(Header(0x81, 1, 79), {}, now_);
    Turn();
    Feed({secs1::kEot});
    auto bytes = Block({.Stream = 1, .Function = 2, .SystemBytes = 79}, {0x01, 0x00});
    bytes.insert(bytes.begin(), secs1::kAck);
    Feed(bytes);
    EXPECT_EQ(recorder_.Lines,
              (Lines{"Sent 00 05 81 01 80 01 00 00 00 4F ",
                     "Block 80 05 01 02 80 01 00 00 00 4F 01 00 ",
                     "Message 00 05 01 02 80 01 00 00 00 4F | 01 00 | 2"}));
}

TEST_F(Secs1Texts, AHandlerThatClosesTheLinkSeesItsEndLast) {
    machine_.Send(Header(0x81, 1, 80), {}, now_);
    machine_.Send(Header(0x81, 3, 81), {}, now_);
    Turn();
    recorder_.Hook = [this](const std::string& line) {
        if (line.starts_with("Sent")) machine_.Close(now_);
    };
    Feed({secs1::kEot});
    Feed({secs1::kAck});
    EXPECT_EQ(recorder_.Lines,
              (Lines{"Sent 00 05 81 01 80 01 00 00 00 50 ", "Error 3073", "Disconnect 0"}));
    EXPECT_FALSE(machine_.IsOpen());
}

}  // namespace
}  // namespace hexmire::test
