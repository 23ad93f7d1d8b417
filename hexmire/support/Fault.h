#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace hexmire {

/// Numbers of run-time faults. They reach the host as the code of an `Error` event, unchanged.
enum class FaultNumber : std::int32_t {
    InvalidCall = 5,  ///< "Invalid procedure call or argument": a text that cannot be cut, a
                      ///< character code outside 0..255.
    Overflow = 6,     ///< "Overflow": a number beyond the range of its kind.
    OutOfMemory = 7,  ///< "Out of memory".
    SubscriptOutOfRange = 9,  ///< "Subscript out of range": an index beyond an array or collection.
    DivisionByZero = 11,      ///< "Division by zero".
    TypeMismatch = 13,        ///< "Type mismatch": a text or kind that does not convert.
    ObjectNotSet = 91,        ///< "Object variable or With block variable not set".
    InvalidUseOfNull = 94,    ///< "Invalid use of Null".
    MemberNotSupported = 438,  ///< "Object doesn't support this property or method".
    AutomationError = 440,     ///< "Automation error".
};

/// A run-time fault inside a routine of the library. It never leaves a public routine: each one
/// catches it, reports number and description to the control and returns what it had.
class Fault : public std::exception {
public:
    explicit Fault(FaultNumber number);
    Fault(std::int32_t number, std::string description);

    [[nodiscard]] std::int32_t Number() const noexcept { return number_; }
    [[nodiscard]] const std::string& Description() const noexcept { return description_; }
    [[nodiscard]] const char* what() const noexcept override { return description_.c_str(); }

private:
    std::int32_t number_;
    std::string description_;
};

/// Fixed description of a fault number.
[[nodiscard]] const char* FaultDescription(FaultNumber number) noexcept;

/// The exception that is being handled, seen as a fault: a Fault as it is, std::bad_alloc 7,
/// std::out_of_range 9, std::overflow_error 6, anything else 440 with its own words. To be called
/// inside a catch block only.
[[nodiscard]] Fault CurrentFault();

}  // namespace hexmire
