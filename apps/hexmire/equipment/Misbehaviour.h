#pragma once

#include "ScriptWords.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace hexmire::program {

/// One way to answer a primary wrongly.
struct Misbehaviour {
    enum class Kind : std::uint8_t {
        Late,              ///< the reply comes after a time
        Silent,            ///< no reply
        WrongFunction,     ///< the reply's function plus 2
        WrongSystemBytes,  ///< the reply does not belong to the primary
        Truncated,         ///< the last byte of the body is missing
        Duplicate,         ///< the reply comes twice
        Disconnect         ///< the link is closed instead, and opened again
    };
    StreamAndFunction Primary{};
    Kind What = Kind::Silent;
    Duration Delay{0};                   ///< of a late reply
    std::optional<std::uint32_t> Times;  ///< none: always
    bool operator==(const Misbehaviour&) const = default;
};

/// How Misbehaviour is written.
constexpr std::string_view kMisbehaviourUsage =
    "SxFy late SECONDS|silent|wrong-function|wrong-system-bytes|truncated|duplicate|disconnect "
    "[TIMES|always]";

/// Reads the words of kMisbehaviourUsage; without TIMES it is once. Throws BadCommand, and
/// UsageOfCommand when the words do not look like that.
[[nodiscard]] Misbehaviour ReadMisbehaviour(const std::vector<std::string_view>& words);

/// What is planned for the primaries to come.
class Misbehaviours {
public:
    /// In place of what was planned for the same primary.
    void Plan(const Misbehaviour& misbehaviour);
    void Clear() { planned_.clear(); }

    /// What is to happen with the primary that has come; counts it.
    [[nodiscard]] std::optional<Misbehaviour> Take(std::int32_t stream, std::int32_t function);

private:
    std::vector<Misbehaviour> planned_;
};

}  // namespace hexmire::program
