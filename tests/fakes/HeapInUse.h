#pragma once

#include <malloc.h>

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define HEXMIRE_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HEXMIRE_ADDRESS_SANITIZER 1
#endif
#endif
#ifdef HEXMIRE_ADDRESS_SANITIZER
/// Part of the sanitizer's run-time library; GCC installs no header that declares it.
extern "C" std::size_t
__sanitizer_get_current_allocated_bytes();  // NOLINT(bugprone-reserved-identifier)
#endif

namespace hexmire::fakes {

/// Bytes that this program has requested and not given back.
inline std::size_t HeapInUse() {
#ifdef HEXMIRE_ADDRESS_SANITIZER
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
#endif
}

}  // namespace hexmire::fakes
