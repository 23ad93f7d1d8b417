#pragma once

#include <cstdint>
#include <string>

namespace hexmire {

/// Exact decimal number: a whole mantissa of 96 bits with sign and a scale of 0..28 decimal places.
/// It carries the 8-byte and unsigned 4-byte integers of SECS-II without loss. A result beyond the
/// 96 bits is fault 6.
class Decimal {
public:
    static constexpr unsigned kMaxScale = 28;

    Decimal() = default;
    /// The whole number `negative ? -m : m` with m = high x 2^64 + low. Zero is never negative.
    Decimal(std::uint32_t high, std::uint64_t low, bool negative, unsigned scale = 0) noexcept;
    static Decimal FromInt64(std::int64_t value) noexcept {
        const auto bits = static_cast<std::uint64_t>(value);
        Decimal decimal = FromUInt64(value < 0 ? 0 - bits : bits);
        decimal.negative_ = value < 0;
        return decimal;
    }
    static Decimal FromUInt64(std::uint64_t value) noexcept {
        Decimal decimal;
        decimal.low_ = value;
        return decimal;
    }
    /// The exact value of the double as far as 28 digits carry it, rounded half to even beyond
    /// them. NaN and infinities are fault 6.
    static Decimal FromDouble(double value);
    /// digits[.digits] x 10^exponent, rounded half to even to 28 places and 96 bits.
    static Decimal FromDigits(bool negative, const std::string& digits, std::int64_t exponent);

    [[nodiscard]] bool IsNegative() const noexcept { return negative_; }
    [[nodiscard]] bool IsZero() const noexcept { return high_ == 0 && low_ == 0; }
    [[nodiscard]] bool IsWhole() const noexcept { return scale_ == 0; }
    [[nodiscard]] unsigned Scale() const noexcept { return scale_; }
    [[nodiscard]] std::uint32_t MantissaHigh() const noexcept { return high_; }
    [[nodiscard]] std::uint64_t MantissaLow() const noexcept { return low_; }

    [[nodiscard]] Decimal Negated() const noexcept;
    /// Nearest whole number, ties to even, as a 64-bit integer; beyond it fault 6.
    [[nodiscard]] std::int64_t ToInt64() const;
    [[nodiscard]] double ToDouble() const;
    /// Plain decimal without trailing zeros behind the point; "." always.
    [[nodiscard]] std::string ToText() const;

    /// Same number, whatever the scale.
    friend bool operator==(const Decimal& left, const Decimal& right) noexcept;

private:
    std::uint64_t low_ = 0;
    std::uint32_t high_ = 0;
    std::uint8_t scale_ = 0;  // Kept minimal: the last digit of a scaled mantissa is not 0.
    bool negative_ = false;
};

}  // namespace hexmire
