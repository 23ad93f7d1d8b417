#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace hexmire::program {

/// A character of UTF-8 and the bytes that it takes; none for what is no UTF-8.
struct Utf8Character {
    std::size_t Size = 0;
    std::uint32_t Code = 0;
};

/// The one that a text, which is not empty, begins with.
[[nodiscard]] Utf8Character FirstCharacter(std::string_view text);

}  // namespace hexmire::program
