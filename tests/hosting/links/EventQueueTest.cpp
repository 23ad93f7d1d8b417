// Events on their way to the control: what a huge one leaves behind.
#include <hexmire/hosting/links/EventQueue.h>

#include "../../fakes/HeapInUse.h"
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace hexmire::test {
namespace {

/// Counts the characters of the bodies that it is told.
class BodyCounter : public SECSIServiceEvents {
public:
    void Connect() override {}
    void Disconnect(std::int32_t /*code*/, const std::string& /*text*/) override {}
    void Error(std::int32_t /*code*/, const std::string& /*text*/) override {}
    void SecsMsgSend(const std::string& /*message*/) override {}
    void SecsBlockReceive(const std::string& /*block*/) override {}
    void SecsMsgReceive(const std::string& /*header*/,
                        const std::string& body,
                        std::int32_t /*length*/) override {
        Characters += body.size();
    }

    std::size_t Characters = 0;
};

TEST(EventQueue, AHugeMessageIsNotPaidForEver) {
    constexpr std::size_t kBody = std::size_t{4} << 20U;
    BodyCounter counter;
    link::EventQueue events(counter);
    const auto raise = [&](std::size_t bytes) {
        link::RaiseReceived received;
        received.Body.assign(bytes, 0x41);
        events.Push(std::move(received));
        events.RaiseNext();
    };
    raise(100);
    const std::size_t before = fakes::HeapInUse();
    raise(kBody);
    EXPECT_EQ(counter.Characters, 3 * (100 + kBody));
    EXPECT_LT(fakes::HeapInUse(), before + kBody / 4);
}

}  // namespace
}  // namespace hexmire::test
