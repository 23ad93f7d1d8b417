#pragma once

#include <hexmire/hexmire.h>

#include <cstdint>
#include <string>

namespace hexmire::program {

enum class SmlNotes : std::uint8_t {
    None,
    Names,  ///< names and descriptions of items as comments at the ends of their lines, no counts
};

/// SML that reads back to the same values whatever they are, LF at the ends of lines: texts are
/// double-quoted pieces and bytes ("it's" 0x0D 0x0A), lists carry counts, minus zero and every NaN
/// keep their bits. The item without a header, its last line ended.
[[nodiscard]] std::string ExactItemSml(const SECSItemPtr& item, SmlNotes notes = SmlNotes::None);

/// The same with "S1F3 W" in front and "." behind; its last line is ended.
[[nodiscard]] std::string ExactSml(const SECSMessage& message,
                                   bool replyExpected,
                                   SmlNotes notes = SmlNotes::None);

}  // namespace hexmire::program
