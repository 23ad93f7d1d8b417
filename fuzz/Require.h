#pragma once

#include <cstdio>
#include <cstdlib>

namespace hexmire::fuzz {

/// Stops the process when a promise does not hold, in every build: that is a finding.
inline void Require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

}  // namespace hexmire::fuzz
