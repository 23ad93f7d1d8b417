#include <hexmire/support/detail/BlockPool.h>

#include "../fakes/HeapInUse.h"
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <set>
#include <thread>
#include <vector>

namespace hexmire::detail {
namespace {

// Each test has blocks of a size of its own, and so a pool of its own.

TEST(BlockPool, GivesOutAgainWhatCameBackLast) {
    using Pool = BlockPool<1001>;
    void* const first = Pool::Take();
    void* const second = Pool::Take();
    EXPECT_NE(first, second);
    Pool::Give(first);
    Pool::Give(second);
    EXPECT_EQ(Pool::Kept(), 2U);
    EXPECT_EQ(Pool::Take(), second);
    EXPECT_EQ(Pool::Take(), first);
    EXPECT_EQ(Pool::Kept(), 0U);
    Pool::Give(first);
    Pool::Give(second);
}

TEST(BlockPool, NoBlockIsOutTwice) {
    using Pool = BlockPool<1002>;
    std::set<void*> out;
    for (int round = 0; round < 3; ++round) {
        for (int block = 0; block < 300; ++block)
            EXPECT_TRUE(out.insert(Pool::Take()).second);
        for (void* const block : out)
            Pool::Give(block);
        EXPECT_EQ(Pool::Kept(), 300U);
        out.clear();
    }
}

TEST(BlockPool, KeepsNoMoreThanItsBound) {
    using Pool = BlockPool<4096>;
    ASSERT_EQ(Pool::kMostBlocks, 256U);
    std::vector<void*> out(1000);
    for (void*& block : out)
        block = Pool::Take();
    const std::size_t before = fakes::HeapInUse();
    for (void* const block : out)
        Pool::Give(block);
    EXPECT_EQ(Pool::Kept(), 256U);
    EXPECT_LT(fakes::HeapInUse() + 700 * std::size_t{4096}, before);
}

TEST(BlockPool, ABlockMayComeBackInAnotherThread) {
    using Pool = BlockPool<1003>;
    void* const block = Pool::Take();
    std::thread([block] {
        Pool::Give(block);
        EXPECT_EQ(Pool::Kept(), 1U);
    }).join();
    EXPECT_EQ(Pool::Kept(), 0U);
}

TEST(BlockPool, AThreadTakesNothingWithIt) {
    using Pool = BlockPool<4097>;
    const auto work = [] {
        std::vector<void*> out(200);
        for (void*& block : out)
            block = Pool::Take();
        for (void* const block : out)
            Pool::Give(block);
        EXPECT_EQ(Pool::Kept(), 200U);
    };
    std::thread(work).join();  // What the first thread of all needs is no leak.
    const std::size_t before = fakes::HeapInUse();
    for (int thread = 0; thread < 20; ++thread)
        std::thread(work).join();
    EXPECT_LT(fakes::HeapInUse(), before + 200 * std::size_t{4097});
}

/// Gives a block back when its thread ends: before the pool's own end, or behind it.
template <class Pool>
struct LateGiver {
    LateGiver() = default;
    LateGiver(const LateGiver&) = delete;
    LateGiver& operator=(const LateGiver&) = delete;
    ~LateGiver() { Pool::Give(Block); }

    void* Block = nullptr;
};

TEST(BlockPool, ABlockMayComeBackBehindTheThreadsEnd) {
    using Pool = BlockPool<1004>;
    std::thread([] {
        static thread_local LateGiver<Pool> giver;  // Ends last, for it was made first.
        giver.Block = Pool::Take();
        Pool::Give(Pool::Take());
    }).join();
    std::thread([] {
        Pool::Give(Pool::Take());
        static thread_local LateGiver<Pool> giver;
        giver.Block = Pool::Take();
    }).join();
    EXPECT_EQ(Pool::Kept(), 0U);  // The sanitizers tell whether all of them have gone.
}

TEST(BlockPool, TheAllocatorServesSingleObjectsFromThePool) {
    struct Node {
        std::byte Bytes[1005];
    };
    PoolAllocator<Node> allocator;
    Node* const one = allocator.allocate(1);
    Node* const three = allocator.allocate(3);
    allocator.deallocate(three, 3);
    EXPECT_EQ(BlockPool<sizeof(Node)>::Kept(), 0U);
    allocator.deallocate(one, 1);
    EXPECT_EQ(BlockPool<sizeof(Node)>::Kept(), 1U);
    EXPECT_TRUE(allocator == PoolAllocator<Node>(PoolAllocator<int>()));
}

}  // namespace
}  // namespace hexmire::detail
