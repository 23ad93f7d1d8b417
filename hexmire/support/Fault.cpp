#include <hexmire/support/Fault.h>

#include <new>
#include <stdexcept>
#include <utility>

namespace hexmire {

Fault::Fault(FaultNumber number)
    : number_(static_cast<std::int32_t>(number)), description_(FaultDescription(number)) {}

Fault::Fault(std::int32_t number, std::string description)
    : number_(number), description_(std::move(description)) {}

const char* FaultDescription(FaultNumber number) noexcept {
    switch (number) {
        case FaultNumber::InvalidCall:
            return "Invalid procedure call or argument";
        case FaultNumber::Overflow:
            return "Overflow";
        case FaultNumber::OutOfMemory:
            return "Out of memory";
        case FaultNumber::SubscriptOutOfRange:
            return "Subscript out of range";
        case FaultNumber::DivisionByZero:
            return "Division by zero";
        case FaultNumber::TypeMismatch:
            return "Type mismatch";
        case FaultNumber::ObjectNotSet:
            return "Object variable or With block variable not set";
        case FaultNumber::InvalidUseOfNull:
            return "Invalid use of Null";
        case FaultNumber::MemberNotSupported:
            return "Object doesn't support this property or method";
        case FaultNumber::AutomationError:
            return "Automation error";
    }
    return "Automation error";
}

Fault CurrentFault() {
    try {
        throw;
    } catch (const Fault& fault) {
        return fault;
    } catch (const std::bad_alloc&) {
        return Fault(FaultNumber::OutOfMemory);
    } catch (const std::out_of_range&) {
        return Fault(FaultNumber::SubscriptOutOfRange);
    } catch (const std::overflow_error&) {
        return Fault(FaultNumber::Overflow);
    } catch (const std::exception& other) {
        return {static_cast<std::int32_t>(FaultNumber::AutomationError), other.what()};
    } catch (...) {
        return Fault(FaultNumber::AutomationError);
    }
}

}  // namespace hexmire
