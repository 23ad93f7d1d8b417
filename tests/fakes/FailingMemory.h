#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <vector>

// Memory that runs out on request. This header defines the program's operator new and delete, so
// one file of a test program includes it.

namespace hexmire::fakes {

namespace memory {

inline long requestsLeft = 0;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

inline void* Request(std::size_t size) {
    if (requestsLeft > 0 && --requestsLeft == 0) throw std::bad_alloc();
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

}  // namespace memory

/// Runs an operation whose n-th request for memory finds none; all others do. False when it had
/// fewer requests.
template <class Operation>
bool FailsRequest(long request, Operation&& operation) {
    memory::requestsLeft = request;
    try {
        operation();
    } catch (...) {
        memory::requestsLeft = 0;
        throw;
    }
    const bool reached = memory::requestsLeft == 0;
    memory::requestsLeft = 0;
    return reached;
}

/// Runs an operation once for each of its requests for memory, that one failing, then `check`.
/// Every failure must be told once, under number 7, in one of these routines' names.
template <class Errors>
void FailEverywhere(Errors& errors,
                    const std::function<void()>& operation,
                    const std::function<void()>& check,
                    const std::vector<std::string>& prefixes) {
    int failures = 0;
    for (long request = 1; request < 1000; ++request) {
        errors.clear();
        const bool reached = FailsRequest(request, operation);
        check();
        if (!reached) break;
        ++failures;
        ASSERT_EQ(errors.size(), 1U) << request;
        EXPECT_EQ(errors[0].Code, 7);
        bool known = false;
        for (const std::string& prefix : prefixes) {
            known = known || errors[0].Text == prefix + "Out of memory";
        }
        EXPECT_TRUE(known) << errors[0].Text;
    }
    EXPECT_GT(failures, 0);
    EXPECT_TRUE(errors.empty());
}

}  // namespace hexmire::fakes

// The language wants these not to be inline. NOLINTBEGIN(misc-definitions-in-headers)
void* operator new(std::size_t size) { return hexmire::fakes::memory::Request(size); }
void* operator new[](std::size_t size) { return hexmire::fakes::memory::Request(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
// NOLINTEND(misc-definitions-in-headers)
