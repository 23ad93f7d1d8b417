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
#include <sanitizer/allocator_interface.h>
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
