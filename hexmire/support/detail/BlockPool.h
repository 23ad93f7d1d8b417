#pragma once

#include <algorithm>
#include <cstddef>
#include <new>

namespace hexmire::detail {

// AddressSanitizer finds no use behind the end of an object whose block is in use again.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kPoolsBlocks = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr bool kPoolsBlocks = false;
#else
inline constexpr bool kPoolsBlocks = true;
#endif
#else
inline constexpr bool kPoolsBlocks = true;
#endif

/// Blocks of one size that this thread has given back, kept for its next requests: a tree is made
/// of many nodes that come and go together. A block may be given back by another thread than the
/// one that took it. What a thread keeps is bounded, and goes when the thread ends.
template <std::size_t Size>
class BlockPool {
public:
    /// Bytes that one thread keeps at most.
    static constexpr std::size_t kMostBytes = std::size_t{1} << 20U;
    static constexpr std::size_t kMostBlocks = kMostBytes / Size;

    /// A block of Size bytes; std::bad_alloc when there is none.
    [[nodiscard]] static void* Take() {
        if (kept_ == 0) return ::operator new(Size);
        void* const taken = blocks_[--kept_];
        if (kept_ > kAhead) Fetch(blocks_[kept_ - kAhead]);
        return taken;
    }
    static void Give(void* place) noexcept {
        if (kept_ == room_ && !MakeRoom()) {
            ::operator delete(place);
        } else {
            blocks_[kept_++] = place;
        }
    }
    /// Blocks that this thread keeps now.
    [[nodiscard]] static std::size_t Kept() noexcept { return kept_; }

private:
    static constexpr std::size_t kAhead = 8;
    static constexpr std::size_t kFirstRoom = 64;
    static constexpr std::size_t kCacheLine = 64;

    struct ThreadEnd {
        ThreadEnd() noexcept = default;
        ThreadEnd(const ThreadEnd&) = delete;
        ThreadEnd& operator=(const ThreadEnd&) = delete;
        ~ThreadEnd() {
            isOver_ = true;
            while (kept_ > 0)
                ::operator delete(blocks_[--kept_]);
            ::operator delete(blocks_);
            room_ = 0;
        }
    };

    static void Fetch(const void* block) noexcept {
        for (std::size_t at = 0; at < Size; at += kCacheLine)
            __builtin_prefetch(static_cast<const char*>(block) + at, 1);
    }
    /// False when the pool is to take no more.
    static bool MakeRoom() noexcept {
        static thread_local ThreadEnd end;
        const std::size_t room = std::min(std::max(2 * room_, kFirstRoom), kMostBlocks);
        if (isOver_ || room == room_) return false;
        auto** const blocks =
            static_cast<void**>(::operator new(room * sizeof(void*), std::nothrow));
        if (blocks == nullptr) return false;
        std::copy_n(blocks_, kept_, blocks);
        ::operator delete(blocks_);
        blocks_ = blocks;
        room_ = room;
        return true;
    }

    // They can be used until the thread is gone: objects may end after ThreadEnd.
    // NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables): what a thread keeps is one
    static inline thread_local void** blocks_ = nullptr;
    static inline thread_local std::size_t kept_ = 0;
    static inline thread_local std::size_t room_ = 0;
    static inline thread_local bool isOver_ = false;
    // NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)
};

/// Makes single objects in blocks of a pool.
template <class T>
struct PoolAllocator {
    using value_type = T;

    PoolAllocator() noexcept = default;
    template <class Other>
    // An allocator of one type stands for those of all others.
    // NOLINTNEXTLINE(google-explicit-constructor)
    PoolAllocator(const PoolAllocator<Other>& /*other*/) noexcept {}

    // NOLINTBEGIN(readability-identifier-naming): the standard library asks for these names
    [[nodiscard]] T* allocate(std::size_t count) {
        static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
        if (count == 1) return static_cast<T*>(BlockPool<sizeof(T)>::Take());
        return static_cast<T*>(::operator new(count * sizeof(T)));
    }
    void deallocate(T* place, std::size_t count) noexcept {
        if (count == 1) {
            BlockPool<sizeof(T)>::Give(place);
        } else {
            ::operator delete(place);
        }
    }
    // NOLINTEND(readability-identifier-naming)
    bool operator==(const PoolAllocator&) const noexcept = default;
};

}  // namespace hexmire::detail
