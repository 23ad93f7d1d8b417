#pragma once

#include <hexmire/core/SECSItem.h>

#include <cstdint>
#include <span>

/// The workers behind a message's decoding (SEMI E5, item encoding).
namespace hexmire::detail {

/// Decodes one item that begins behind `position` (-1 at the start) into the parent's children at
/// the 1-based `index`, with everything below it, and leaves the position on its last byte. Reading
/// past the end is a fault of the item concerned: it is reported, what was added stays, and each
/// item still awaited fails the same way. False after an unknown format code. The body is an array
/// of Byte; long values share its memory.
bool lParseSECSMessage(const Variant& body,
                       std::int64_t& position,
                       const SECSItemPtr& parent,
                       std::int32_t index);

/// Magnitude of a negative big-endian number in two's complement.
void lToPInt(std::span<std::uint8_t> bytes) noexcept;

}  // namespace hexmire::detail
