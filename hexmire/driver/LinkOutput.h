#pragma once

#include <hexmire/driver/ErrorLimiter.h>
#include <hexmire/driver/LinkAction.h>
#include <hexmire/driver/LinkStatistics.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::link {

/// What the parts of one link machine put out together: actions in their order, errors through the
/// limiter, and the time of the input at work.
class LinkOutput {
public:
    /// Room for the actions of a usual input, made before they are needed: a machine that has no
    /// memory for what it asks would be at odds with its shell.
    static constexpr std::size_t kUsualActions = 8;

    explicit LinkOutput(LinkStatistics& statistics) : statistics_(statistics) {
        actions_.reserve(kUsualActions);
    }

    void Emit(Action action) { actions_.push_back(std::move(action)); }
    void Start(TimerId id, std::chrono::milliseconds delay) { Emit(StartTimer{id, delay}); }
    void Stop(TimerId id) { Emit(StopTimer{id}); }
    /// An Error event, unless too many of its code have been raised just now: those are told of in
    /// a summary when TimerId::ErrorWindow expires.
    void Raise(LinkError code, std::string text);
    /// TimerId::ErrorWindow has expired.
    void RaiseSummaries();

    /// Swaps the actions since the last call, oldest first, into `into`, which loses its content.
    void TakeActions(std::vector<Action>& into);

    [[nodiscard]] TimePoint Now() const noexcept { return now_; }
    void Now(TimePoint now) noexcept { now_ = now; }

private:
    LinkStatistics& statistics_;
    std::vector<Action> actions_;
    ErrorLimiter limiter_;
    TimePoint now_;
};

}  // namespace hexmire::link
