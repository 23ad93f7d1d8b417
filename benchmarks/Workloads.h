#pragma once

#include <hexmire/core/SECSMessage.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

/// The bodies that the benchmarks decode, encode and send: their bytes, made without the library,
/// and the same bodies built as item trees the way a host builds them.
namespace hexmire::bench {

using ByteVector = std::vector<std::uint8_t>;

struct Workload {
    std::string Name;
    ByteVector Bytes;
    /// Puts the same body below the root of a fresh message.
    std::function<void(const SECSItemPtr& root)> Build;
};

/// a: an event report, 164 bytes, 26 items.  b: a list of 10 000 U4 items.  c: one U4 item of a
/// million values.  d: one ASCII item of 1 MiB.  e: 50 lists one inside the other.
const std::vector<Workload>& CodecWorkloads();

/// The event report of workload a.
const Workload& EventReport();

/// Reads the value of every item below this one.
void ReadTree(const SECSItemPtr& item);

/// Empty when the message encodes to the wanted bytes, a true Boolean being any byte but 0;
/// otherwise what differs.
std::string Difference(std::span<const std::uint8_t> wanted, std::span<const std::uint8_t> encoded);

}  // namespace hexmire::bench
