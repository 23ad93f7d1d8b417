#pragma once

#include <cstdint>

namespace hexmire::link {

/// What ties a reply to its primary, in the header of every link.
struct MessageId {
    std::uint8_t Stream = 0;
    std::uint8_t Function = 0;
    std::uint32_t SystemBytes = 0;

    /// An odd function opens a transaction, an even one (0 included) answers one.
    [[nodiscard]] bool IsPrimary() const noexcept { return (Function & 1U) != 0; }

    bool operator==(const MessageId&) const = default;
};

}  // namespace hexmire::link
