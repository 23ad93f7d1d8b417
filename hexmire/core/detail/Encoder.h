#pragma once

#include <hexmire/core/SECSItem.h>
#include <hexmire/support/Decimal.h>

#include <cstdint>
#include <span>
#include <vector>

/// The workers behind a message's encoding (SEMI E5, item encoding). Faults inside are reported in
/// the name of the message's routines.
namespace hexmire::detail {

/// Appends one item and, for a list, its subtree to the output. A value that does not convert is
/// reported and leaves its item short; its siblings follow.
void lBuildSECSMessage(std::vector<std::uint8_t>& bytes, const SECSItemPtr& item);

/// Writes a non-negative whole number into `count` bytes, most significant first, beginning with
/// its lowest bit in the last byte; bytes that are not reached keep their content. A full byte
/// before the first place is a fault; a partly filled one lands on the first place. A fraction is
/// rounded half to even when its byte is stored; of a negative number the lowest bit alone is
/// written.
void lDecToByte(const Decimal& value, std::span<std::uint8_t> bytes, std::int16_t count);

/// Two's complement negative of a big-endian magnitude.
void lToNInt(std::span<std::uint8_t> bytes) noexcept;

}  // namespace hexmire::detail
