#pragma once

#include <stdlib.h>
#include <time.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace hexmire::fakes {

/// The zone of the process for the time of one test.
class Zone {
public:
    explicit Zone(const char* name) {
        if (const char* before = std::getenv("TZ")) before_ = before;
        Set(name);
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;
    ~Zone() {
        before_ ? ::setenv("TZ", before_->c_str(), 1) : ::unsetenv("TZ");
        ::tzset();
    }
    static void Set(const char* name) { ::setenv("TZ", name, 1); }

private:
    std::optional<std::string> before_;
};

}  // namespace hexmire::fakes
