#pragma once

#include <hexmire/core/detail/SmlScanner.h>
#include <hexmire/support/Variant.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace hexmire::detail {

/// A value as it was read, and how many elements (characters of a text) it has. The value has the
/// kind that decoding the same item gives: none, a scalar, or an array from two elements on.
struct SmlValue {
    Variant Value;
    std::size_t Count = 0;
};

/// Reads the elements of a Binary, Boolean or number item up to its ">", which is not taken. Throws
/// SmlError for an element that is none of its format's or that the format cannot hold.
[[nodiscard]] SmlValue ReadSmlElements(SmlScanner& scanner, std::int32_t format);

/// The parts of a text item: quoted pieces and bytes such as 0x0D, in any order.
struct SmlParts {
    std::string Text;
    std::size_t Count = 0;
};

/// Reads them up to the item's ">", which is not taken. Throws SmlError.
///
/// A double-quoted piece ends at the next double quote. A single-quoted one may hold single quotes:
/// it ends at the first that something follows which can follow a piece.
[[nodiscard]] SmlParts ReadSmlParts(SmlScanner& scanner);

/// What comes behind the offset may follow an item's ">".
[[nodiscard]] bool CanFollowSmlItem(const SmlScanner& scanner, std::size_t offset) noexcept;

}  // namespace hexmire::detail
