#pragma once

#include "ErrorRecorder.h"
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <vector>

namespace hexmire::fakes {

/// The n-th request for memory after requestsLeft = n finds none, all others do.
inline long requestsLeft = 0;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

inline void* Request(std::size_t size) {
    if (requestsLeft > 0 && --requestsLeft == 0) throw std::bad_alloc();
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

}  // namespace hexmire::fakes

// The memory of the whole program, so that one file of it includes this. The language wants these
// definitions not to be inline. NOLINTBEGIN(misc-definitions-in-headers)
void* operator new(std::size_t size) { return hexmire::fakes::Request(size); }
void* operator new[](std::size_t size) { return hexmire::fakes::Request(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
// NOLINTEND(misc-definitions-in-headers)

namespace hexmire::fakes {

/// Finds out what becomes of an operation that runs out of memory, wherever that happens.
class FailingMemory : public testing::Test {
protected:
    /// Runs an operation once for each of its requests for memory, that one failing. Every failure
    /// must be told once, under number 7, in one of these routines' names.
    void FailEverywhere(const std::function<void()>& operation,
                        const std::function<void()>& check,
                        const std::vector<std::string>& prefixes) {
        int failures = 0;
        for (long request = 1; request < 1000; ++request) {
            Site.Errors.clear();
            requestsLeft = request;
            operation();
            const bool reached = requestsLeft == 0;
            requestsLeft = 0;
            check();
            if (!reached) break;
            ++failures;
            ASSERT_EQ(Site.Errors.size(), 1U) << request;
            EXPECT_EQ(Site.Errors[0].Code, 7);
            bool known = false;
            for (const std::string& prefix : prefixes) {
                known = known || Site.Errors[0].Text == prefix + "Out of memory";
            }
            EXPECT_TRUE(known) << Site.Errors[0].Text;
        }
        EXPECT_GT(failures, 0);
        EXPECT_TRUE(Site.Errors.empty());
    }

    ErrorRecorder Site;
};

}  // namespace hexmire::fakes
