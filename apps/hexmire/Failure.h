#pragma once

#include <exception>
#include <stdexcept>

namespace hexmire::program {

/// What was asked did not happen: one line on the standard error, exit status 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What was asked did not happen, and everything about it has been told: exit status 1.
class Told : public std::exception {};

/// What was asked cannot be understood: one line on the standard error, exit status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace hexmire::program
