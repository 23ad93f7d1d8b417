#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace hexmire::link {

/// A process program as a message carries it: views into the message's body.
struct Recipe {
    std::span<const std::uint8_t> Id;    ///< value bytes of PPID
    std::span<const std::uint8_t> Body;  ///< what is stored of PPBODY
};

/// True for an S7F3, and for an S7F6 unless its body says that there is no such process program: no
/// item, or an empty list.
[[nodiscard]] bool CarriesRecipe(std::uint8_t stream,
                                 std::uint8_t function,
                                 std::span<const std::uint8_t> body) noexcept;

/// The process program of an S7F3 or S7F6 (SEMI E5, stream 7): L,2 {PPID, PPBODY}, PPID an ASCII or
/// binary item. Of a PPBODY that is one item the value bytes are what is stored; of a list, which
/// means nothing without its structure, the whole encoded item. None for every other message, and
/// for a body of any other shape or with bytes left over.
[[nodiscard]] std::optional<Recipe> FindRecipe(std::uint8_t stream,
                                               std::uint8_t function,
                                               std::span<const std::uint8_t> body) noexcept;

}  // namespace hexmire::link
