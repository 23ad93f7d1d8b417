#include <hexmire/platform/SECSIService.h>
#include <hexmire/support/Fault.h>

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <variant>

namespace hexmire {
namespace {

/// What the library makes of an exception.
Fault Translate(const std::function<void()>& thrower) {
    try {
        thrower();
    } catch (...) {
        return CurrentFault();
    }
    return {0, "nothing was thrown"};
}

TEST(Fault, EveryNumberHasItsDescription) {
    const std::pair<FaultNumber, const char*> rows[] = {
        {FaultNumber::InvalidCall, "Invalid procedure call or argument"},
        {FaultNumber::Overflow, "Overflow"},
        {FaultNumber::OutOfMemory, "Out of memory"},
        {FaultNumber::SubscriptOutOfRange, "Subscript out of range"},
        {FaultNumber::DivisionByZero, "Division by zero"},
        {FaultNumber::TypeMismatch, "Type mismatch"},
        {FaultNumber::ObjectNotSet, "Object variable or With block variable not set"},
        {FaultNumber::InvalidUseOfNull, "Invalid use of Null"},
        {FaultNumber::MemberNotSupported, "Object doesn't support this property or method"},
        {FaultNumber::AutomationError, "Automation error"},
    };
    for (const auto& [number, text] : rows) {
        EXPECT_STREQ(FaultDescription(number), text);
        EXPECT_EQ(Fault(number).Description(), text);
        EXPECT_EQ(Fault(number).Number(), static_cast<std::int32_t>(number));
        EXPECT_STREQ(Fault(number).what(), text);
    }
}

TEST(Fault, OfAnotherNumberIsDescribedAsAnAutomationError) {
    constexpr std::int32_t kFileNotFound = 53;
    EXPECT_STREQ(FaultDescription(static_cast<FaultNumber>(kFileNotFound)), "Automation error");
}

TEST(Fault, NumbersAreThoseThatHostsKnow) {
    EXPECT_EQ(static_cast<int>(FaultNumber::InvalidCall), 5);
    EXPECT_EQ(static_cast<int>(FaultNumber::Overflow), 6);
    EXPECT_EQ(static_cast<int>(FaultNumber::OutOfMemory), 7);
    EXPECT_EQ(static_cast<int>(FaultNumber::SubscriptOutOfRange), 9);
    EXPECT_EQ(static_cast<int>(FaultNumber::DivisionByZero), 11);
    EXPECT_EQ(static_cast<int>(FaultNumber::TypeMismatch), 13);
    EXPECT_EQ(static_cast<int>(FaultNumber::ObjectNotSet), 91);
    EXPECT_EQ(static_cast<int>(FaultNumber::InvalidUseOfNull), 94);
    EXPECT_EQ(static_cast<int>(FaultNumber::MemberNotSupported), 438);
    EXPECT_EQ(static_cast<int>(FaultNumber::AutomationError), 440);
}

TEST(Fault, KeepsItsOwnNumberAndWords) {
    const Fault fault = Translate([] { throw Fault(-2147467259, "Unspecified error"); });
    EXPECT_EQ(fault.Number(), -2147467259);
    EXPECT_EQ(fault.Description(), "Unspecified error");
}

TEST(Fault, OfADriverKeepsItsOwnNumberAndWords) {
    const Fault fault = Translate([] { throw DriverError(10061, "connection refused"); });
    EXPECT_EQ(fault.Number(), 10061);
    EXPECT_EQ(fault.Description(), "connection refused");
}

TEST(Fault, WithoutWordsStaysWithoutWords) {
    const Fault fault = Translate([] { throw Fault(5000, ""); });
    EXPECT_EQ(fault.Number(), 5000);
    EXPECT_EQ(fault.Description(), "");
}

TEST(Fault, ExceptionsOfTheLanguageTakeTheirNumbers) {
    const std::tuple<std::function<void()>, std::int32_t, const char*> rows[] = {
        {[] { throw std::bad_alloc(); }, 7, "Out of memory"},
        {[] { throw std::bad_array_new_length(); }, 7, "Out of memory"},
        {[] { throw std::out_of_range("vector"); }, 9, "Subscript out of range"},
        {[] { throw std::overflow_error("sum"); }, 6, "Overflow"},
        {[] { throw std::runtime_error("disk is full"); }, 440, "disk is full"},
        {[] { throw std::logic_error("never"); }, 440, "never"},
        {[] { throw std::underflow_error("tiny"); }, 440, "tiny"},
        {[] { throw std::range_error("wide"); }, 440, "wide"},
        {[] { throw 42; }, 440, "Automation error"},
        {[] { throw "text"; }, 440, "Automation error"},
    };
    for (const auto& [thrower, number, text] : rows) {
        const Fault fault = Translate(thrower);
        EXPECT_EQ(fault.Number(), number) << text;
        EXPECT_EQ(fault.Description(), text);
    }
}

TEST(Fault, OfAWrongVariantIsAnAutomationErrorInItsOwnWords) {
    const std::variant<int, float> number = 1.0F;
    const Fault fault = Translate([&] { static_cast<void>(std::get<int>(number)); });
    EXPECT_EQ(fault.Number(), 440);
    EXPECT_FALSE(fault.Description().empty());
}

TEST(Fault, IsCaughtAsAnException) {
    EXPECT_THROW(throw Fault(FaultNumber::Overflow), std::exception);
    EXPECT_THROW(throw DriverError(1, "x"), Fault);
}

}  // namespace
}  // namespace hexmire
