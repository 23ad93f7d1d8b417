#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace hexmire::link {

/// Finds bodies that would only burn the host: lists nested too deep, or lists that claim far more
/// items than the bytes could hold. It reads item headers only (SEMI E5, item header), allocates
/// nothing for what a body claims and does not recurse. Other malformed bodies pass: they are
/// reported where they are decoded.
class BodyCheck {
public:
    enum class Verdict : std::uint8_t {
        Pass,
        TooDeep,         ///< more lists inside one another than allowed
        TooManyClaimed,  ///< open lists want over 4 096 items more than there are bytes left
    };
    /// Items that lists may claim beyond the bytes that remain; each of them costs the host one
    /// error.
    static constexpr std::uint64_t kExcessItems = 4'096;

    /// Walks the first top-level item of a body, by the decoder's own rules for what an item takes.
    [[nodiscard]] Verdict Check(std::span<const std::uint8_t> body, std::uint32_t maxDepth);

private:
    std::vector<std::uint32_t> open_;  // items still to come in the lists around the innermost
};

}  // namespace hexmire::link
