#pragma once

#include <hexmire/hexmire.h>

#include <cstdint>
#include <string>
#include <vector>

namespace hexmire::program {

class Command;

/// `hexmire encode`: SML to the bytes that go over a link.
struct EncodeOptions {
    std::vector<std::string> Words{};  ///< as ReadInput takes them
    bool Binary = false;
    bool Header = false;
    bool Length = false;
    bool Latin1 = false;
    std::uint16_t DeviceID = 0;
    std::uint32_t SystemBytes = 1;
};

void AddEncodeOptions(Command command, EncodeOptions& options);

/// Throws UsageError when an item of an encoded message is longer than its three length bytes can
/// say (SEMI E5, item header): the encoder keeps the low bits alone.
void CheckItemLengths(const SECSMessage& message);

/// Writes to the standard output. Throws Failure or UsageError.
void RunEncode(const EncodeOptions& options);

}  // namespace hexmire::program
