#pragma once

#include <hexmire/core/SECSItem.h>

#include <cstdint>
#include <string>

namespace hexmire::detail {

/// The text that an item of any format is sent as: the value's own text, "[ 01 0A ]" for an array
/// of bytes, "[ 1, 2 ]" for any other array.
[[nodiscard]] std::string AnyFormatText(const Variant& value);

/// Appends the text of one item and, for a list, of its subtree. An item that faults adds nothing
/// and its siblings follow; when indentation alone passes 64 MiB, fault 7 ends the text.
void ItemToSML(const SECSItemPtr& item, std::int32_t level, std::string& text);

}  // namespace hexmire::detail
