#pragma once

#include <cstdint>
#include <string_view>

namespace hexmire::link {

/// What the text of a network address is, judged by its form alone.
enum class AddressKind : std::uint8_t {
    Bad,   ///< nothing that could ever be resolved
    IPv4,  ///< four decimal numbers
    IPv6,  ///< groups of hexadecimal digits, a zone after "%" allowed
    Name,  ///< a host name, resolved at each attempt
};

/// Judges an address text. A text of digits and dots alone is a number or it is bad, never a name.
[[nodiscard]] AddressKind ClassifyAddress(std::string_view text) noexcept;

/// True for the address that stands for every interface of this computer.
[[nodiscard]] bool IsAnyAddress(std::string_view text) noexcept;

}  // namespace hexmire::link
