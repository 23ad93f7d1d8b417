#pragma once

#include "../fakes/TestHost.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::fakes {

/// Keeps what the handler of a control is called with, then runs an action.
class Handler {
public:
    Handler(Hexmire& control, std::function<void()> action) : action_(std::move(action)) {
        control.Events().Error =
            [this](std::int32_t code, const std::string& text, std::int32_t line) {
                Heard.push_back({code, text, line});
                if (action_) action_();
            };
    }

    std::vector<ErrorEvent> Heard;

private:
    std::function<void()> action_;
};

}  // namespace hexmire::fakes
