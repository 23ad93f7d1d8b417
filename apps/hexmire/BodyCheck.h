#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace hexmire::program {

/// Something that is wrong with a message, and how many bytes stand in front of it.
struct BodyFinding {
    std::size_t Offset = 0;
    std::string Text;
};

/// What is wrong with the items of a body (SEMI E5, item header): one that ends too early, an
/// unknown format, a length that is no multiple of its elements, bytes behind the item. Looks no
/// further than the first that makes the rest unreadable.
[[nodiscard]] std::vector<BodyFinding> CheckBody(std::span<const std::uint8_t> body);

/// How many items lists still claim where the body ends, as the control decodes it, which goes on
/// behind what is wrong. It reports each of them: a few bytes can claim millions.
[[nodiscard]] std::uint64_t MissingItems(std::span<const std::uint8_t> body);

}  // namespace hexmire::program
