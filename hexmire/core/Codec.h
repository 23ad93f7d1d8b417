#pragma once

#include <hexmire/core/SECSItem.h>
#include <hexmire/support/Decimal.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// The workers behind a message's body bytes and text. Faults inside are reported in the name of
/// the message's routines.
namespace hexmire::detail {

/// Appends one item and, for a list, its subtree to the output (SEMI E5, item encoding).
void lBuildSECSMessage(std::vector<std::uint8_t>& bytes, const SECSItemPtr& item);
/// Writes the magnitude of a non-negative whole number into the last of `count` bytes backwards,
/// bit by bit; bytes that are not reached keep their content.
void lDecToByte(Decimal value, std::span<std::uint8_t> bytes, std::int16_t count);
/// Two's complement negation of a big-endian magnitude, and its inverse.
void lToNInt(std::span<std::uint8_t> bytes) noexcept;
void lToPInt(std::span<std::uint8_t> bytes) noexcept;

/// Decodes one item that begins behind `position` into the parent's children at `index` and leaves
/// the position on its last byte. False after an unknown format code.
bool lParseSECSMessage(std::span<const std::uint8_t> bytes,
                       std::int64_t& position,
                       const SECSItemPtr& parent,
                       std::int32_t index);

/// Appends the text of one item and, for a list, of its subtree.
void ItemToSML(const SECSItemPtr& item, std::int32_t level, std::string& text);

}  // namespace hexmire::detail
