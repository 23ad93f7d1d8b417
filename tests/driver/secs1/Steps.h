#pragma once

#include "../../fakes/Secs1Rig.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire::test {

/// A line for the rig and what it causes. What "take" causes is told without the EOT and the ACK
/// that every block gets.
struct Step {
    std::string Line;
    std::string Expected;
};
using Steps = std::vector<Step>;

inline void ExpectSteps(Secs1Rig& rig, const Steps& steps) {
    const std::string granted = "tx EOT; tx ACK";
    std::size_t number = 0;
    for (const Step& step : steps) {
        ++number;
        std::string expected = step.Expected;
        if (step.Line.starts_with("take ")) {
            expected = granted + (expected.empty() ? "" : "; ") + expected;
        }
        EXPECT_EQ(rig.Do(step.Line), expected) << "step " << number << ": " << step.Line;
        EXPECT_EQ(rig.Violation, "") << "step " << number << ": " << step.Line;
    }
}

/// A rig that is connected.
struct ConnectedRig : Secs1Rig {
    explicit ConnectedRig(const LinkSettings& settings) : Secs1Rig(settings) {
        Do("open");
        Do("connected");
    }
};

inline Step Take(const std::string& block, const std::string& expected) {
    return {"take " + block, expected};
}
/// The block is accepted and tells so, and nothing else.
inline Step Accept(const std::string& block) { return {"take " + block, "Block " + block}; }
/// The block is accepted and completes this message.
inline Step Complete(const std::string& block, const std::string& message) {
    return {"take " + block, "Block " + block + "; Received " + message};
}

}  // namespace hexmire::test
