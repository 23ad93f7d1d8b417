// When replies go out while further messages wait for their handlers, which may take any time.
#include "LinkRig.h"
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kReply = 14;

/// A host that answers each S1F1; the peer sends several of them in one piece.
class BlockingHandlers : public testing::Test {
protected:
    BlockingHandlers() {
        driver_->OpenLink();
        EXPECT_TRUE(peer_.ConnectTo(port_));
        peer_.Send("0000000A FFFF 0000 0001 00000001");
        EXPECT_EQ(peer_.Read(14), "00 00 00 0A FF FF 00 00 00 02 00 00 00 01 ");
        EXPECT_TRUE(rig_.RunUntil([&] { return events_.Has("Connect"); }));
        events_.Recording = false;
        events_.Hook = [this](const std::string& line) {
            if (line.starts_with("Message")) Handle();
        };
    }
    void Handle() {
        outBefore_.push_back(peer_.Socket().available() / kReply);
        if (++handled_ == blocksAt_) {
            const auto end = std::chrono::steady_clock::now() + 6ms;
            while (std::chrono::steady_clock::now() < end) {
            }
        }
        driver_->SendMessage(Header(1, 2, static_cast<std::uint32_t>(handled_)), "", 0);
    }
    /// So many primaries at once; how many replies the peer had before each of their handlers.
    std::vector<std::size_t> Ask(std::size_t count) {
        outBefore_.clear();
        std::string all;
        for (std::size_t number = 0; number < count; ++number)
            all += "0000000A 0005 8101 0000 00000007 ";
        peer_.Send(all);
        EXPECT_TRUE(rig_.RunUntil([&] { return outBefore_.size() == count; }));
        EXPECT_EQ(peer_.Read(count * kReply).size(), count * kReply * 3);
        return outBefore_;
    }
    /// Enough quick handlers for messages to be held from then on.
    void BeQuick() {
        for (int round = 0; round < 10; ++round)
            (void)Ask(32);
    }

    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    LinkRecorder events_;
    RawPeer peer_{rig_};
    std::unique_ptr<TransportDriver> driver_ =
        std::make_unique<TransportDriver>(rig_.Loop, events_, LinkRig::Passive(port_));
    std::size_t handled_ = 0;
    std::size_t blocksAt_ = 0;
    std::vector<std::size_t> outBefore_;
};

TEST_F(BlockingHandlers, AReplyIsOnTheWireBeforeTheNextHandlerBegins) {
    EXPECT_EQ(Ask(4), (std::vector<std::size_t>{0, 1, 2, 3}));
}

TEST_F(BlockingHandlers, RepliesOfAHostThatIsQuickGoOutTogether) {
    BeQuick();
    // The hold may run out on a busy machine: one of several rounds is enough.
    const std::vector<std::size_t> together(8, 0);
    bool seen = false;
    for (int round = 0; round < 50 && !seen; ++round)
        seen = Ask(together.size()) == together;
    EXPECT_TRUE(seen);
}

TEST_F(BlockingHandlers, AHandlerThatBlocksEndsTheHolding) {
    BeQuick();
    blocksAt_ = handled_ + 2;
    const auto before = Ask(5);
    EXPECT_EQ(before[2], 2U) << "written as soon as it has returned";
    EXPECT_EQ(before[3], 3U);
    EXPECT_EQ(before[4], 4U);
    EXPECT_EQ(Ask(4), (std::vector<std::size_t>{0, 1, 2, 3})) << "and in later turns";
}

}  // namespace
}  // namespace hexmire::test
