#pragma once

#include "Frames.h"

#include <string>
#include <vector>

namespace hexmire::program {

class Command;

/// `hexmire decode`: bytes of messages to SML.
struct DecodeOptions {
    std::vector<std::string> Words{};  ///< as ReadInput takes them
    bool Binary = false;
    bool Header = false;
    bool Exact = false;
    bool Json = false;
    program::Framing Framing = program::Framing::Find;
};

void AddDecodeOptions(Command command, DecodeOptions& options);

/// Writes to the standard output. Throws UsageError for what is no hex and no message, and Failure
/// when a body does not decode as a whole.
void RunDecode(const DecodeOptions& options);

}  // namespace hexmire::program
