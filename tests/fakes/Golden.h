#pragma once

#include <hexmire/core/SECSItem.h>
#include <hexmire/core/SECSMessage.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// Golden tables of encoded items: one line each, "name | item notation | hex", "#" comments.
///
/// Notation: <FORMAT elements>, format names as SML shows them. A list holds items, A and V one
/// double-quoted text (\xNN, \" and \\ inside), B bytes such as 0x0A, BOOL the letters T and F,
/// anything else numbers. No element: an item without value; one: a scalar; more: an array. Behind
/// an element or an item, *N repeats it. In the hex column (bytes)*N does.
namespace hexmire::fakes {

struct GoldenVector {
    std::string Name;
    std::string Notation;
    std::vector<std::uint8_t> Bytes;
};

/// The vectors of a table; throws std::runtime_error with the line that does not read.
[[nodiscard]] std::vector<GoldenVector> LoadGolden(const std::filesystem::path& path);

/// Appends the items of a notation to a list; the values have the kinds that decoding gives. Throws
/// std::runtime_error for a text that does not read.
void AppendItems(const SECSItemPtr& list, std::string_view notation);
/// A message whose body is the first item of the notation.
[[nodiscard]] SECSMessagePtr MessageFromNotation(std::string_view notation);

/// Same kind and, bit for bit, same value: one NaN equals itself, -0 differs from 0.
[[nodiscard]] bool SameValue(const Variant& left, const Variant& right);
/// Same formats, values and children all the way down.
[[nodiscard]] bool SameTree(const SECSItemPtr& left, const SECSItemPtr& right);
/// A short description of a tree for failure messages, in the notation; long values are cut.
[[nodiscard]] std::string Describe(const SECSItemPtr& item);

}  // namespace hexmire::fakes
