#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Conversion.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/Text.h>

#include <cmath>
#include <utility>
#include <vector>

/// Texts of a dictionary to item values.
namespace hexmire::ModGeneral {

namespace {

Variant AssignedValue(const SECSItem& item, std::string_view text) {
    switch (item.Format()) {
        case FormatList:
            return {};
        case FormatBinary:
            return ToByte(Variant(LeadingHexNumber(text)));
        case FormatBoolean:
            return lVarBoolean(text);
        case FormatI8:
        case FormatF8:
        case FormatF4:
        case FormatU8:
            return ToDouble(text);
        case FormatI1:
        case FormatU1:
            return ToInteger(text);
        case FormatI2:
        case FormatI4:
            return ToLong(text);
        case FormatU2:
        case FormatU4:
            return std::trunc(ToDouble(text));
        default:
            return TrimBlanks(text);
    }
}

/// Runs `store` on every element of the text. Elements stand one blank apart; a blank where an
/// element should begin ends the text.
template <class Store>
void ForEachElement(std::string_view text, Store store) {
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t blank = text.find(' ', start);
        if (blank == start) return;
        store(text.substr(start, blank == std::string_view::npos ? blank : blank - start));
        if (blank == std::string_view::npos) return;
        start = blank + 1;
    }
}

/// The splitters: what was built before a fault is put into `array` and returned; when nothing was,
/// `array` stays as it is.
template <VariantElement T, class Convert>
Variant Split(const RoutineName& name, std::string_view text, Variant& array, Convert convert) {
    std::vector<T> elements;
    RunFreeRoutine(name, [&] {
        ForEachElement(text, [&](std::string_view token) { elements.push_back(convert(token)); });
    });
    Variant result;
    RunFreeRoutine(name, [&] {
        if (elements.empty()) return;
        array = std::move(elements);
        result = array;
    });
    return result;
}

/// The token's leading number as a text that the decimal reader takes.
std::string NumberToken(std::string_view token) {
    std::string text = NumberText(LeadingNumber(token));
    if (const std::size_t point = text.find('.'); point != std::string::npos) {
        text.replace(point, 1, DecimalSeparator());
    }
    return text;
}

}  // namespace

Variant lAssignValue(const SECSItem& item, std::string_view text) {
    Variant result;
    RunFreeRoutine({"ModGeneral", "lAssignValue"}, [&] {
        if (!text.empty()) result = AssignedValue(item, text);
    });
    return result;
}

Variant lVarBoolean(std::string_view text) {
    Variant result;
    RunFreeRoutine({"ModGeneral", "lVarBoolean"}, [&] {
        const std::string upper = UpperCase(text);
        if (upper == "T") {
            result = true;
        } else if (upper == "F") {
            result = false;
        } else {
            result = ToBoolean(text);
        }
    });
    return result;
}

Variant lVariantArrayValue(const SECSItem& item, std::string_view text, Variant& array) {
    static constexpr RoutineName kName{"ModGeneral", "lVariantArrayValue"};
    const auto convert = [&](std::string_view token) {
        return lAssignValue(item, NumberToken(token));
    };
    switch (array.Kind()) {
        case VariantKind::IntegerArray:
            return Split<std::int16_t>(
                kName, text, array, [&](auto token) { return ToInteger(convert(token)); });
        case VariantKind::LongArray:
            return Split<std::int32_t>(
                kName, text, array, [&](auto token) { return ToLong(convert(token)); });
        case VariantKind::DoubleArray:
            return Split<double>(
                kName, text, array, [&](auto token) { return ToDouble(convert(token)); });
        default:
            return Split<Variant>(kName, text, array, convert);
    }
}

Variant lByteArrayValue(const SECSItem& /*item*/, std::string_view text, Variant& array) {
    return Split<std::uint8_t>({"ModGeneral", "lByteArrayValue"}, text, array, [](auto token) {
        return ToByte(Variant(LeadingHexNumber(token)));
    });
}

Variant lBoolArrayValue(const SECSItem& item, std::string_view text, Variant& array) {
    return Split<bool>({"ModGeneral", "lBoolArrayValue"}, text, array, [&](auto token) {
        return ToBoolean(lAssignValue(item, token));
    });
}

Variant lAssignArrayValue(const SECSItem& item, std::string_view text) {
    Variant result;
    RunFreeRoutine({"ModGeneral", "lAssignArrayValue"}, [&] {
        if (text.empty()) return;
        Variant array;
        switch (item.Format()) {
            case FormatBinary:
                array = std::vector<std::uint8_t>();
                result = lByteArrayValue(item, text, array);
                break;
            case FormatBoolean:
                array = std::vector<bool>();
                result = lBoolArrayValue(item, text, array);
                break;
            case FormatAscii:
                result = TrimBlanks(text);
                break;
            case FormatI8:
            case FormatF8:
            case FormatF4:
            case FormatU8:
            case FormatU2:
            case FormatU4:
                array = std::vector<double>();
                result = lVariantArrayValue(item, text, array);
                break;
            case FormatI1:
            case FormatU1:
                array = std::vector<std::int16_t>();
                result = lVariantArrayValue(item, text, array);
                break;
            case FormatI2:
            case FormatI4:
                array = std::vector<std::int32_t>();
                result = lVariantArrayValue(item, text, array);
                break;
            default:
                break;
        }
    });
    return result;
}

}  // namespace hexmire::ModGeneral
