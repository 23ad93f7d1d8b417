#pragma once

#include <cstdint>

namespace hexmire::program {

/// A TCP port of the loopback address 127.0.0.1 that nobody listens on at the moment. Throws
/// Failure when there is none.
[[nodiscard]] std::int32_t FindFreePort();

}  // namespace hexmire::program
