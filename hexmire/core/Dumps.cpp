#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Conversion.h>
#include <hexmire/support/HexBytes.h>
#include <hexmire/support/Reporting.h>

#include <algorithm>
#include <string_view>

/// Texts of byte arrays, as logs and SML print them.
namespace hexmire::ModGeneral {

namespace {

/// A field of fixed width: what stands before the two digits.
std::string Field(std::string_view head, std::uint8_t value) {
    std::string text(head);
    text.push_back(HexDigit(value >> 4U));
    text.push_back(HexDigit(value & 0x0FU));
    return text;
}

/// Calls `put(position, byte)` for every element in index order, the first at position 0 whatever
/// its index. The bytes of an array of Byte need no conversion.
template <class Put>
void ForEachByte(const Variant& values, Put put) {
    const auto bytes = values.View<std::uint8_t>();
    if (!bytes.empty()) {
        for (std::size_t index = 0; index < bytes.size(); ++index)
            put(index, bytes[index]);
        return;
    }
    const std::int32_t first = values.LowerBound();
    const auto count = static_cast<std::int32_t>(values.ElementCount());
    for (std::int32_t index = 0; index < count; ++index) {
        put(static_cast<std::size_t>(index), ToByte(values.Element(first + index)));
    }
}

/// A text of blanks sized for an array from index 0 to the upper bound.
std::string BlankText(const Variant& values, std::size_t width) {
    const std::int64_t count = std::int64_t{values.UpperBound()} + 1;
    std::string text;
    text.resize(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)) * width, ' ');
    return text;
}

void PutField(std::string& text, std::size_t position, std::string_view field) {
    if (position + field.size() > text.size()) throw Fault(FaultNumber::InvalidCall);
    std::copy(field.begin(), field.end(), text.begin() + static_cast<std::ptrdiff_t>(position));
}

/// The three hexadecimal dumps: one field a byte, the first character of the whole cut off.
std::string HexDump(const char* routine, const Variant& values, std::string_view head) {
    std::string result;
    RunFreeRoutine({"ModGeneral", routine}, [&] {
        const std::size_t width = head.size() + 2;
        std::string text = BlankText(values, width);
        ForEachByte(values, [&](std::size_t index, std::uint8_t byte) {
            const std::size_t at = index * width;
            PutField(text, at, head);
            text[at + head.size()] = HexDigit(byte >> 4U);
            text[at + head.size() + 1] = HexDigit(byte & 0x0FU);
        });
        if (text.empty()) throw Fault(FaultNumber::InvalidCall);
        text.erase(0, 1);
        result = std::move(text);
    });
    return result;
}

}  // namespace

std::string ChrDumpArray(const Variant& values) {
    std::string result;
    RunFreeRoutine({"ModGeneral", "ChrDumpArray"}, [&] {
        std::string text = BlankText(values, 1);
        const auto bytes = values.View<std::uint8_t>();
        if (!bytes.empty() && values.LowerBound() == 0) {
            text.assign(bytes.begin(), bytes.end());
        } else {
            const std::int32_t first = values.LowerBound();
            const auto count = static_cast<std::int32_t>(values.ElementCount());
            for (std::int32_t index = 0; index < count; ++index) {
                const std::int32_t code = ToLong(values.Element(first + index));
                if (code < 0 || code > 255) throw Fault(FaultNumber::InvalidCall);
                const char character = static_cast<char>(code);
                PutField(text, static_cast<std::size_t>(index), {&character, 1});
            }
        }
        result = std::move(text);
    });
    return result;
}

std::string HexDumpArray(const Variant& values) { return HexDump("HexDumpArray", values, " "); }

std::string HexDumpArray2(const Variant& values) { return HexDump("HexDumpArray2", values, " 0x"); }

std::string HexDumpArray3(const Variant& values) { return HexDump("HexDumpArray3", values, ","); }

std::string Hex2(std::uint8_t value) { return Field(" ", value); }

std::string Hex3(std::uint8_t value) { return Field(" 0x", value); }

std::string Hex4(std::uint8_t value) { return Field(",", value); }

}  // namespace hexmire::ModGeneral
