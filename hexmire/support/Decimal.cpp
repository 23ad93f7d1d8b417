#include <hexmire/support/Decimal.h>
#include <hexmire/support/Fault.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <tuple>

namespace hexmire {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr Wide kMantissaLimit = Wide{1} << 96U;

constexpr Wide Join(std::uint32_t high, std::uint64_t low) { return Wide{high} << 64U | low; }

/// Value of the first `count` digits, zeros behind the last one; kMantissaLimit when it is beyond
/// 96 bits.
Wide LeadingDigits(const std::string& digits, std::size_t count) {
    Wide value = 0;
    for (std::size_t index = 0; index < count; ++index) {
        const char digit = index < digits.size() ? digits[index] : '0';
        value = value * 10 + static_cast<unsigned>(digit - '0');
        if (value >= kMantissaLimit) return kMantissaLimit;
    }
    return value;
}

/// True when the digits from `start` on, read as a fraction, round the odd or even digit before
/// them up.
bool RoundsUp(const std::string& digits, std::size_t start, bool odd) {
    if (start >= digits.size() || digits[start] < '5') return false;
    if (digits[start] > '5') return true;
    const bool isTie = std::all_of(digits.begin() + static_cast<std::ptrdiff_t>(start) + 1,
                                   digits.end(),
                                   [](char digit) { return digit == '0'; });
    return !isTie || odd;
}

}  // namespace

Decimal::Decimal(std::uint32_t high, std::uint64_t low, bool negative, unsigned scale) noexcept
    : low_(low), high_(high), scale_(static_cast<std::uint8_t>(scale)) {
    Wide mantissa = Join(high, low);
    while (scale_ > 0 && mantissa % 10 == 0) {
        mantissa /= 10;
        --scale_;
    }
    low_ = static_cast<std::uint64_t>(mantissa);
    high_ = static_cast<std::uint32_t>(mantissa >> 64U);
    negative_ = negative && mantissa != 0;
}

Decimal Decimal::FromDouble(double value) {
    constexpr double kWholeLimit = 9007199254740992.0;  // 2^53: every whole double below is exact.
    if (std::abs(value) <= kWholeLimit && std::trunc(value) == value) {
        return FromInt64(static_cast<std::int64_t>(value));
    }
    if (!(std::abs(value) < 0x1p96)) throw Fault(FaultNumber::Overflow);
    // The exact expansion as far as it can matter: 29 digits before the point, 100 behind it.
    constexpr int kPlaces = 100;
    std::array<char, 160> text{};
    const auto end = std::to_chars(text.data(),
                                   text.data() + text.size(),
                                   std::abs(value),
                                   std::chars_format::fixed,
                                   kPlaces)
                         .ptr;
    std::string digits(text.data(), end);
    digits.erase(digits.size() - kPlaces - 1, 1);
    return FromDigits(value < 0, digits, -kPlaces);
}

Decimal Decimal::FromDigits(bool negative, const std::string& digits, std::int64_t exponent) {
    const std::size_t first = std::min(digits.find_first_not_of('0'), digits.size());
    const std::string significant = digits.substr(first);
    const auto size = static_cast<std::int64_t>(significant.size());
    if (size == 0) return {};
    constexpr std::int64_t kMostWholeDigits = 29;
    if (exponent > kMostWholeDigits || size + exponent > kMostWholeDigits) {
        throw Fault(FaultNumber::Overflow);
    }
    // Drop digits until at most 28 are behind the point and the rest fits 96 bits; each try starts
    // from all digits, for rounding twice is wrong.
    constexpr std::int64_t kMaxPlaces = kMaxScale;
    const std::int64_t stated = -std::max(exponent, -kMaxPlaces);
    for (std::int64_t places = std::max<std::int64_t>(stated, 0); places >= 0; --places) {
        const std::int64_t kept = size + exponent + places;
        if (kept < 0) return {};
        const auto count = static_cast<std::size_t>(kept);
        Wide mantissa = LeadingDigits(significant, count);
        if (mantissa < kMantissaLimit && RoundsUp(significant, count, (mantissa & 1U) != 0)) {
            ++mantissa;
        }
        if (mantissa < kMantissaLimit) {
            return {static_cast<std::uint32_t>(mantissa >> 64U),
                    static_cast<std::uint64_t>(mantissa),
                    negative,
                    static_cast<unsigned>(places)};
        }
    }
    throw Fault(FaultNumber::Overflow);
}

Decimal Decimal::Negated() const noexcept { return {high_, low_, !negative_, scale_}; }

std::int64_t Decimal::ToInt64() const {
    Wide whole = Join(high_, low_);
    if (scale_ > 0) {
        Wide divisor = 1;
        for (unsigned place = 0; place < scale_; ++place)
            divisor *= 10;
        const Wide rest = whole % divisor;
        whole /= divisor;
        if (rest * 2 > divisor || (rest * 2 == divisor && (whole & 1U) != 0)) ++whole;
    }
    constexpr auto kLargest = static_cast<Wide>(std::numeric_limits<std::int64_t>::max());
    if (whole > kLargest + (negative_ ? 1 : 0)) throw Fault(FaultNumber::Overflow);
    const auto bits = static_cast<std::uint64_t>(whole);
    return static_cast<std::int64_t>(negative_ ? 0 - bits : bits);
}

double Decimal::ToDouble() const {
    if (scale_ == 0 && high_ == 0) {
        const auto whole = static_cast<double>(low_);
        return negative_ ? -whole : whole;
    }
    const std::string text = ToText();
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

std::string Decimal::ToText() const {
    if (high_ == 0 && scale_ == 0) return (negative_ ? "-" : "") + std::to_string(low_);
    std::string digits;
    for (Wide rest = Join(high_, low_); rest != 0; rest /= 10) {
        digits.push_back(static_cast<char>('0' + static_cast<int>(rest % 10)));
    }
    while (digits.size() <= scale_)
        digits.push_back('0');
    if (scale_ > 0) digits.insert(scale_, 1, '.');
    if (negative_) digits.push_back('-');
    std::reverse(digits.begin(), digits.end());
    return digits;
}

bool operator==(const Decimal& left, const Decimal& right) noexcept {
    return std::tie(left.low_, left.high_, left.scale_, left.negative_) ==
           std::tie(right.low_, right.high_, right.scale_, right.negative_);
}

}  // namespace hexmire
