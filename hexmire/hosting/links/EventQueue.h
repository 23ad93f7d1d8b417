#pragma once

#include <hexmire/driver/LinkAction.h>
#include <hexmire/platform/SECSIService.h>

#include <cstddef>
#include <deque>
#include <string>
#include <utility>
#include <variant>

namespace hexmire::link {

/// Events on their way to the control, in their order. It turns them into the texts of the driver's
/// interface as they are raised, so that what waits is the bytes alone.
class EventQueue {
public:
    explicit EventQueue(SECSIServiceEvents& sink) : sink_(&sink) {}

    /// Takes a Raise... action.
    void Push(Action&& event) {
        if (sink_ != nullptr) events_.push_back(std::move(event));
    }
    /// Raises the oldest event. Afterwards the queue may have been closed by its handler, or have
    /// grown. Lets an exception of the handler through.
    void RaiseNext();
    /// Nothing is raised any more.
    void Close() noexcept;

    [[nodiscard]] bool IsEmpty() const noexcept { return events_.empty(); }
    /// True when the oldest event is an Error 3099.
    [[nodiscard]] bool IsInternalErrorNext() const noexcept;
    /// True when the oldest event tells of a message that has gone out: no host waits for it.
    [[nodiscard]] bool IsSentNext() const noexcept {
        return !events_.empty() && std::holds_alternative<RaiseSent>(events_.front());
    }
    [[nodiscard]] bool IsClosed() const noexcept { return sink_ == nullptr; }
    /// Received messages raised since the last call.
    [[nodiscard]] std::size_t TakeConsumed() noexcept { return std::exchange(consumed_, 0); }

private:
    void Raise(const RaiseConnect& event);
    void Raise(const RaiseDisconnect& event);
    void Raise(const RaiseError& event);
    void Raise(const RaiseSent& event);
    void Raise(const RaiseBlock& event);
    void Raise(const RaiseReceived& event);
    template <class Other>
    void Raise(const Other&) {}  // what is no event never gets here

    SECSIServiceEvents* sink_;
    std::deque<Action> events_;
    std::size_t consumed_ = 0;
    // Texts of the event being raised; kept to spare an allocation for each.
    std::string headerText_;
    std::string bodyText_;
    std::string messageText_;
};

}  // namespace hexmire::link
