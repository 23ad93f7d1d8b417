#pragma once

#include <hexmire/hexmire.h>

#include <string>
#include <vector>

namespace hexmire::program {

/// A dictionary file, in UTF-8, of messages one behind the other: a primary and the secondary right
/// behind it make a transaction. It has the name that stands in front of the primary, else SxFy. A
/// primary without secondary has a reply without body when it has the W-bit, and none otherwise.
///
/// Throws UsageError for a secondary without its primary, for a name that is there twice, and for a
/// value that a dictionary file cannot hold: what is written loads as it was given.
[[nodiscard]] std::string DictionaryXml(const std::vector<ParsedSml>& messages);

}  // namespace hexmire::program
