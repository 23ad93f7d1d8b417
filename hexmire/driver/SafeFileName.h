#pragma once

#include <string>
#include <string_view>

namespace hexmire::link {

/// A file name for a text that somebody else has chosen: letters, digits, "-", "_" and dots inside
/// stay; every other byte becomes "%" and two digits, and so do a dot at either end and the first
/// letter of a name that shared folders take for a device (CON, nul.txt, COM1). The name of "" is
/// "%empty". No name leads out of its folder, and none begins with a dot.
///
/// A name is at most 140 bytes long, as encrypting file systems take no more. Different texts have
/// different names as long as they fit; a longer one keeps its start and ends in "%~" and the 16
/// digits of a hash over the whole text (FNV-1a, 64 bits).
[[nodiscard]] std::string SafeFileName(std::string_view text);

}  // namespace hexmire::link
