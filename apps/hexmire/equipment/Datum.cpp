#include "equipment/Datum.h"

#include <hexmire/support/Conversion.h>

#include <algorithm>
#include <array>
#include <utility>

namespace hexmire::program {

namespace {

struct NamedFormat {
    std::string_view Name;
    std::int32_t Format;
};

constexpr std::array<NamedFormat, 14> kFormats{{{"L", FormatList},
                                                {"B", FormatBinary},
                                                {"BOOLEAN", FormatBoolean},
                                                {"A", FormatAscii},
                                                {"I1", FormatI1},
                                                {"I2", FormatI2},
                                                {"I4", FormatI4},
                                                {"I8", FormatI8},
                                                {"U1", FormatU1},
                                                {"U2", FormatU2},
                                                {"U4", FormatU4},
                                                {"U8", FormatU8},
                                                {"F4", FormatF4},
                                                {"F8", FormatF8}}};

Datum FromItem(const SECSItem& item) {
    Datum datum{.Format = item.Format()};
    if (datum.Format != FormatList) {
        datum.Value = item.Value();
        return datum;
    }
    datum.Items.reserve(static_cast<std::size_t>(item.ItemCount()));
    for (const SECSItemPtr& child : item)
        datum.Items.push_back(FromItem(*child));
    return datum;
}

void PutInto(const SECSItemPtr& parent, std::int32_t position, const Datum& datum) {
    const SECSItemPtr item = parent->AddNew(position);
    item->Format(datum.Format);
    if (datum.Format != FormatList) {
        item->Value(datum.Value);
        return;
    }
    std::int32_t next = 1;
    for (const Datum& child : datum.Items)
        PutInto(item, next++, child);
}

bool IsSingle(const Datum& datum) {
    return datum.Format != FormatList && !datum.Value.IsEmpty() && !datum.Value.IsArray();
}

}  // namespace

Datum List(std::vector<Datum> items) { return {.Format = FormatList, .Items = std::move(items)}; }

// A received text without characters has no value.
Datum Ascii(std::string_view text) {
    return {.Format = FormatAscii, .Value = text.empty() ? Variant() : Variant(text)};
}

Datum Binary(std::uint8_t value) { return {.Format = FormatBinary, .Value = value}; }

Datum Boolean(bool value) { return {.Format = FormatBoolean, .Value = value}; }

Datum Unsigned1(std::uint8_t value) {
    return {.Format = FormatU1, .Value = static_cast<std::int32_t>(value)};
}

Datum Unsigned4(std::uint32_t value) { return {.Format = FormatU4, .Value = value}; }

std::size_t DeepestValue() {
    constexpr std::size_t kAround = 4;  // <L DATAID CEID <L <L RPTID <L V ...>>>>
    return LinkSettings().MaxListDepth - kAround;
}

std::size_t DepthOf(const SECSMessage& message) {
    std::size_t deepest = 0;
    std::vector<std::pair<SECSItemPtr, std::size_t>> open{{message.Root(), 0}};
    while (!open.empty()) {
        const auto [list, level] = open.back();
        open.pop_back();
        deepest = std::max(deepest, level);
        for (const SECSItemPtr& item : *list) {
            if (item->Format() == FormatList) open.emplace_back(item, level + 1);
        }
    }
    return deepest;
}

std::optional<Datum> BodyOf(const SECSMessage& message) {
    if (message.Root()->ItemCount() == 0) return std::nullopt;
    return FromItem(*message.Item(1));
}

void SetBody(const SECSMessage& message, const std::optional<Datum>& body) {
    for (const SECSItemPtr& item : *message.Root())
        item->Delete();
    if (body) PutInto(message.Root(), 1, *body);
}

const std::vector<Datum>& ItemsOf(const Datum& datum) {
    if (datum.Format != FormatList) throw IllegalData("a list is missing");
    return datum.Items;
}

const std::vector<Datum>& ItemsOf(const Datum& datum, std::size_t count) {
    const std::vector<Datum>& items = ItemsOf(datum);
    if (items.size() != count) throw IllegalData("a list has another number of elements");
    return items;
}

std::string KeyOf(const Datum& datum) {
    if (datum.Format == FormatAscii || datum.Format == FormatBinary) return TextOf(datum);
    if (!IsInteger(datum.Format) || datum.Value.IsArray())
        throw IllegalData("an identifier is missing");
    return ToText(datum.Value);
}

std::string TextOf(const Datum& datum) {
    if (datum.Format == FormatAscii) return ToText(datum.Value);
    if (datum.Format != FormatBinary) throw IllegalData("a text is missing");
    if (datum.Value.IsEmpty()) return "";
    if (!datum.Value.IsArray()) return {static_cast<char>(datum.Value.AsByte())};
    const auto bytes = datum.Value.View<std::uint8_t>();
    return {bytes.begin(), bytes.end()};
}

std::uint8_t ByteOf(const Datum& datum) {
    const bool fits = datum.Format == FormatBinary || IsInteger(datum.Format);
    const auto number = fits ? NumberOf(datum) : std::nullopt;
    if (!number || *number < 0 || *number > 255) throw IllegalData("a byte is missing");
    return static_cast<std::uint8_t>(*number);
}

std::optional<double> NumberOf(const Datum& datum) {
    const bool fits =
        datum.Format == FormatBinary || IsInteger(datum.Format) || IsFloating(datum.Format);
    if (!fits || !IsSingle(datum)) return std::nullopt;
    return ToDouble(datum.Value);
}

bool IsInteger(std::int32_t format) {
    switch (format) {
        case FormatI1:
        case FormatI2:
        case FormatI4:
        case FormatI8:
        case FormatU1:
        case FormatU2:
        case FormatU4:
        case FormatU8:
            return true;
        default:
            return false;
    }
}

bool IsFloating(std::int32_t format) { return format == FormatF4 || format == FormatF8; }

std::optional<std::int32_t> FormatNamed(std::string_view name) {
    const auto* found = std::ranges::find(kFormats, name, &NamedFormat::Name);
    if (found == kFormats.end()) return std::nullopt;
    return found->Format;
}

std::string NameOf(std::int32_t format) {
    const auto* found = std::ranges::find(kFormats, format, &NamedFormat::Format);
    return found == kFormats.end() ? "" : std::string(found->Name);
}

}  // namespace hexmire::program
