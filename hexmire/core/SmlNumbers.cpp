#include <hexmire/core/detail/SmlNumbers.h>
#include <hexmire/support/Text.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>
#include <type_traits>

namespace hexmire::detail {

namespace {

constexpr unsigned kByteBits = 8;

/// A number with a sign apart; zero may carry one.
struct WholeNumber {
    bool IsNegative = false;
    std::uint64_t Magnitude = 0;
};

/// [+-] digits [. digits] [e [+-] digits] taken apart: the value is Digits x 10^Exponent.
struct DecimalWord {
    bool IsNegative = false;
    std::string Digits;  // Without zeros at either end; "" is zero.
    std::int64_t Exponent = 0;
};

std::string_view TakeDigits(std::string_view& rest) {
    const std::size_t count = std::min(rest.find_first_not_of("0123456789"), rest.size());
    const std::string_view digits = rest.substr(0, count);
    rest.remove_prefix(count);
    return digits;
}

bool TakeSign(std::string_view& rest) {
    const bool isNegative = rest.starts_with('-');
    if (isNegative || rest.starts_with('+')) rest.remove_prefix(1);
    return isNegative;
}

/// The exponent's value, held within what any number here can use.
std::int64_t ExponentOf(bool isNegative, std::string_view digits) {
    constexpr std::int64_t kLargest = 1'000'000'000;
    std::int64_t value = 0;
    for (const char digit : digits)
        value = std::min(kLargest, value * 10 + (digit - '0'));
    return isNegative ? -value : value;
}

/// Zeros at either end only move the exponent.
void TrimZeros(DecimalWord& number) {
    const std::size_t last = number.Digits.find_last_not_of('0');
    const std::size_t kept = last == std::string::npos ? 0 : last + 1;
    number.Exponent += static_cast<std::int64_t>(number.Digits.size() - kept);
    number.Digits.resize(kept);
    number.Digits.erase(0, std::min(number.Digits.find_first_not_of('0'), kept));
}

std::optional<DecimalWord> ReadDecimalWord(std::string_view word) {
    DecimalWord number;
    number.IsNegative = TakeSign(word);
    number.Digits = TakeDigits(word);
    if (word.starts_with('.')) {
        word.remove_prefix(1);
        const std::string_view fraction = TakeDigits(word);
        number.Digits += fraction;
        number.Exponent = -static_cast<std::int64_t>(fraction.size());
    }
    if (number.Digits.empty()) return std::nullopt;
    if (word.starts_with('e') || word.starts_with('E')) {
        word.remove_prefix(1);
        const bool isNegative = TakeSign(word);
        const std::string_view digits = TakeDigits(word);
        if (digits.empty()) return std::nullopt;
        number.Exponent += ExponentOf(isNegative, digits);
    }
    if (!word.empty()) return std::nullopt;
    TrimZeros(number);
    return number;
}

std::optional<std::uint64_t> ReadMagnitude(std::string_view digits, int base) {
    std::uint64_t value = 0;
    const char* end = digits.data() + digits.size();
    const auto [next, error] = std::from_chars(digits.data(), end, value, base);
    if (error != std::errc() || next != end) return std::nullopt;
    return value;
}

std::optional<WholeNumber> ReadWhole(std::string_view word) {
    std::string_view rest = word;
    const bool isNegative = TakeSign(rest);
    if (rest.starts_with("0x") || rest.starts_with("0X")) {
        const auto magnitude = ReadMagnitude(rest.substr(2), 16);
        if (!magnitude) return std::nullopt;
        return WholeNumber{isNegative, *magnitude};
    }
    if (rest.starts_with("0b") || rest.starts_with("0B")) {
        const auto magnitude = ReadMagnitude(rest.substr(2), 2);
        if (!magnitude) return std::nullopt;
        return WholeNumber{isNegative, *magnitude};
    }
    std::optional<DecimalWord> number = ReadDecimalWord(word);
    if (!number) return std::nullopt;
    if (number->Digits.empty()) return WholeNumber{number->IsNegative, 0};
    constexpr std::int64_t kMostDigits = 20;
    if (number->Exponent < 0 || number->Exponent > kMostDigits) return std::nullopt;
    number->Digits.append(static_cast<std::size_t>(number->Exponent), '0');
    const auto magnitude = ReadMagnitude(number->Digits, 10);
    if (!magnitude) return std::nullopt;
    return WholeNumber{number->IsNegative, *magnitude};
}

/// The largest magnitude of a number of this sign.
std::uint64_t Limit(unsigned width, bool isSigned, bool isNegative) {
    const unsigned unused = 64 - kByteBits * width;
    const std::uint64_t all = std::numeric_limits<std::uint64_t>::max() >> unused;
    if (!isSigned) return isNegative ? 0 : all;
    return isNegative ? all / 2 + 1 : all / 2;
}

std::optional<WholeNumber> ReadInRange(std::string_view word, unsigned width, bool isSigned) {
    std::optional<WholeNumber> number = ReadWhole(word);
    if (number && number->Magnitude > Limit(width, isSigned, number->IsNegative)) number.reset();
    return number;
}

/// "NaN(0x7FC00001)": the NaN that has these bits.
template <class T>
std::optional<T> ReadNaN(std::string_view word) {
    constexpr std::string_view kOpening = "NaN(0x";
    using Bits =
        std::conditional_t<sizeof(T) == sizeof(std::uint32_t), std::uint32_t, std::uint64_t>;
    if (word.size() < kOpening.size() || !word.ends_with(')')) return std::nullopt;
    if (!EqualsIgnoringCase(word.substr(0, kOpening.size()), kOpening)) return std::nullopt;
    word.remove_prefix(kOpening.size());
    word.remove_suffix(1);
    const auto bits = ReadMagnitude(word, 16);
    if (!bits || *bits > std::numeric_limits<Bits>::max()) return std::nullopt;
    const T value = std::bit_cast<T>(static_cast<Bits>(*bits));
    return std::isnan(value) ? std::optional<T>(value) : std::nullopt;
}

template <class T>
std::optional<T> ReadFloat(std::string_view word) {
    std::string_view rest = word;
    const bool isNegative = TakeSign(rest);
    if (EqualsIgnoringCase(word, "NaN")) return std::numeric_limits<T>::quiet_NaN();
    if (EqualsIgnoringCase(rest, "INF")) {
        constexpr T kInfinity = std::numeric_limits<T>::infinity();
        return isNegative ? -kInfinity : kInfinity;
    }
    if (const std::optional<T> exact = ReadNaN<T>(word)) return exact;
    const std::optional<DecimalWord> number = ReadDecimalWord(word);
    if (!number) return std::nullopt;
    if (number->Digits.empty()) return isNegative ? -T{0} : T{0};
    T value = 0;
    // Beyond the range some libraries tell an error, others give infinity or zero.
    const auto error = std::from_chars(rest.data(), rest.data() + rest.size(), value).ec;
    if (error != std::errc() || !std::isfinite(value) || value == 0) return std::nullopt;
    return isNegative ? -value : value;
}

}  // namespace

std::optional<std::uint8_t> ReadSmlByte(std::string_view word) {
    const auto number = ReadInRange(word, 1, false);
    if (!number) return std::nullopt;
    return static_cast<std::uint8_t>(number->Magnitude);
}

std::optional<std::int32_t> ReadSmlLong(std::string_view word, unsigned width, bool isSigned) {
    const auto number = ReadInRange(word, width, isSigned);
    if (!number) return std::nullopt;
    const auto magnitude = static_cast<std::int64_t>(number->Magnitude);
    return static_cast<std::int32_t>(number->IsNegative ? -magnitude : magnitude);
}

std::optional<Decimal> ReadSmlDecimal(std::string_view word, unsigned width, bool isSigned) {
    const auto number = ReadInRange(word, width, isSigned);
    if (!number) return std::nullopt;
    return Decimal(0, number->Magnitude, number->IsNegative);
}

std::optional<float> ReadSmlSingle(std::string_view word) { return ReadFloat<float>(word); }

std::optional<double> ReadSmlDouble(std::string_view word) { return ReadFloat<double>(word); }

}  // namespace hexmire::detail
