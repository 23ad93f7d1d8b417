#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/Text.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

/// Format names, numbers and bytes, shifts.
namespace hexmire::ModGeneral {

namespace {

struct FormatName {
    std::int32_t Code;
    std::string_view Text;
};

constexpr std::array<FormatName, 14> kFormatNames{{
    {FormatList, "L"},
    {FormatBinary, "B"},
    {FormatBoolean, "BOOL"},
    {FormatAscii, "A"},
    {FormatI8, "I8"},
    {FormatI4, "I4"},
    {FormatI2, "I2"},
    {FormatI1, "I1"},
    {FormatF8, "F8"},
    {FormatF4, "F4"},
    {FormatU8, "U8"},
    {FormatU4, "U4"},
    {FormatU2, "U2"},
    {FormatU1, "U1"},
}};

/// The bits that the wire-order bytes put over the low end of `start`; bytes beyond its width are
/// passed over. An empty array has no bounds to work with.
template <class Bits>
Bits Overlay(const std::vector<std::uint8_t>& bytes, Bits start) {
    if (bytes.empty()) throw Fault(FaultNumber::SubscriptOutOfRange);
    Bits result = start;
    const std::size_t count = std::min(bytes.size(), sizeof(Bits));
    for (std::size_t index = 0; index < count; ++index) {
        const auto shift = static_cast<unsigned>(index * 8);
        const Bits byte = bytes[bytes.size() - 1 - index];
        result = (result & ~(Bits{0xFF} << shift)) | byte << shift;
    }
    return result;
}

/// Writes the low bytes of `bits`, most significant first, over the whole array.
template <class Bits>
void Spread(std::vector<std::uint8_t>& bytes, Bits bits) {
    if (bytes.empty() || bytes.size() > sizeof(Bits)) throw Fault(FaultNumber::SubscriptOutOfRange);
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        bytes[bytes.size() - 1 - index] = static_cast<std::uint8_t>(bits >> (index * 8) & 0xFFU);
    }
}

}  // namespace

std::int32_t TextToItemFormat(std::string_view text) {
    const auto* row =
        std::find_if(kFormatNames.begin(), kFormatNames.end(), [&](const auto& entry) {
            return EqualsIgnoringCase(entry.Text, text);
        });
    return row == kFormatNames.end() ? static_cast<std::int32_t>(FormatVar) : row->Code;
}

std::string ItemFormatToText(std::int32_t format) {
    const auto* row = std::find_if(kFormatNames.begin(),
                                   kFormatNames.end(),
                                   [&](const auto& entry) { return entry.Code == format; });
    return std::string(row == kFormatNames.end() ? std::string_view("V") : row->Text);
}

std::int32_t BytesToLong(const std::vector<std::uint8_t>& bytes) {
    std::int32_t result = 0;
    RunFreeRoutine({"ModGeneral", "BytesToLong"},
                   [&] { result = static_cast<std::int32_t>(Overlay<std::uint32_t>(bytes, 0)); });
    return result;
}

std::int32_t BytesToLongNegatif(const std::vector<std::uint8_t>& bytes) {
    std::int32_t result = 0;
    RunFreeRoutine({"ModGeneral", "BytesToLongNegatif"}, [&] {
        constexpr auto kAllBits = std::numeric_limits<std::uint32_t>::max();
        result = static_cast<std::int32_t>(Overlay<std::uint32_t>(bytes, kAllBits));
    });
    return result;
}

float BytesToSingle(const std::vector<std::uint8_t>& bytes) {
    float result = 0;
    RunFreeRoutine({"ModGeneral", "BytesToSingle"},
                   [&] { result = std::bit_cast<float>(Overlay<std::uint32_t>(bytes, 0)); });
    return result;
}

double BytesToDouble(const std::vector<std::uint8_t>& bytes) {
    double result = 0;
    RunFreeRoutine({"ModGeneral", "BytesToDouble"},
                   [&] { result = std::bit_cast<double>(Overlay<std::uint64_t>(bytes, 0)); });
    return result;
}

Variant LongToBytes(std::vector<std::uint8_t>& bytes, std::int32_t value) {
    RunFreeRoutine({"ModGeneral", "LongToBytes"},
                   [&] { Spread(bytes, static_cast<std::uint32_t>(value)); });
    return {};
}

Variant SingleToBytes(std::vector<std::uint8_t>& bytes, float value) {
    RunFreeRoutine({"ModGeneral", "SingleToBytes"},
                   [&] { Spread(bytes, std::bit_cast<std::uint32_t>(value)); });
    return {};
}

Variant DoubleToBytes(std::vector<std::uint8_t>& bytes, double value) {
    RunFreeRoutine({"ModGeneral", "DoubleToBytes"},
                   [&] { Spread(bytes, std::bit_cast<std::uint64_t>(value)); });
    return {};
}

// The shifts are computed through double precision, not with shift instructions: 1 shifted left by
// 31 is an overflow, not the sign bit, and negative numbers go toward zero on the way right.
std::int32_t lLBitShift(std::int32_t value, std::int16_t shift) {
    std::int32_t result = 0;
    RunFreeRoutine({"ModGeneral", "lLBitShift"}, [&] {
        const double factor = std::ldexp(1.0, shift);
        if (std::isinf(factor)) throw Fault(FaultNumber::Overflow);
        const std::int64_t whole = RoundToWhole(static_cast<double>(value) * factor);
        if (!std::in_range<std::int32_t>(whole)) throw Fault(FaultNumber::Overflow);
        result = static_cast<std::int32_t>(whole);
    });
    return result;
}

std::int32_t lRBitShift(std::int32_t value, std::int16_t shift) {
    std::int32_t result = 0;
    RunFreeRoutine({"ModGeneral", "lRBitShift"}, [&] {
        const std::int64_t divisor = RoundToWhole(std::ldexp(1.0, shift));
        if (!std::in_range<std::int32_t>(divisor)) throw Fault(FaultNumber::Overflow);
        if (divisor == 0) throw Fault(FaultNumber::DivisionByZero);
        result = static_cast<std::int32_t>(value / divisor);
    });
    return result;
}

bool IsEven(std::int32_t value) noexcept { return value % 2 == 0; }

bool IsByteArray(const Variant& values) {
    bool result = false;
    RunFreeRoutine({"ModGeneral", "IsByteArray"}, [&] {
        result = values.Element(values.LowerBound()).Kind() == VariantKind::Byte;
    });
    return result;
}

std::string GetSMLIndent(std::int32_t level) {
    std::string result;
    RunFreeRoutine({"ModGeneral", "GetSMLIndent"}, [&] {
        const std::int64_t size = std::int64_t{level} * 2;
        if (!std::in_range<std::int32_t>(size)) throw Fault(FaultNumber::Overflow);
        if (size < 0) throw Fault(FaultNumber::InvalidCall);
        result.assign(static_cast<std::size_t>(size), ' ');
    });
    return result;
}

}  // namespace hexmire::ModGeneral
