#include "equipment/JsonPlace.h"

#include "Failure.h"
#include "equipment/CheckedLatin1.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace hexmire::program {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

/// Range of an integer format but U8.
struct Range {
    std::int64_t Least;
    std::int64_t Largest;
};
Range RangeOf(std::int32_t format) {
    constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
    switch (format) {
        case FormatI1:
            return {-128, 127};
        case FormatI2:
            return {-32768, 32767};
        case FormatI4:
            return {-2147483648LL, 2147483647};
        case FormatI8:
            return {kLeast, kLargest};
        case FormatBinary:
        case FormatU1:
            return {0, 255};
        case FormatU2:
            return {0, 65535};
        default:
            return {0, 4294967295LL};
    }
}

}  // namespace

void JsonPlace::Refuse(const std::string& reason) const {
    // A place deep in lists is told by its ends.
    constexpr std::size_t kLongest = 400;
    std::string place = place_;
    if (place.size() > kLongest) place.replace(kLongest / 2, place.size() - kLongest, " ... ");
    throw UsageError(place + (place.ends_with(": ") ? "" : ": ") + reason);
}

void JsonPlace::Members(std::initializer_list<const char*> names) const {
    if (!value_.is_object()) Refuse("expected an object");
    for (const auto& member : value_.items()) {
        if (std::ranges::none_of(names, [&](const char* name) { return member.key() == name; }))
            Refuse("unknown member \"" + member.key() + '"');
    }
}

JsonPlace JsonPlace::At(const std::string& member) const {
    const auto found = Find(member);
    if (!found) Refuse("\"" + member + "\" is missing");
    return *found;
}

std::optional<JsonPlace> JsonPlace::Find(const std::string& member) const {
    const auto found = value_.find(member);
    if (found == value_.end()) return std::nullopt;
    const bool isTop = place_.ends_with(": ");
    return JsonPlace(*found, place_ + (isTop ? "" : ".") + member);
}

std::vector<JsonPlace> JsonPlace::ElementsOf(const std::string& member) const {
    const auto found = Find(member);
    return found ? found->Elements() : std::vector<JsonPlace>();
}

std::vector<JsonPlace> JsonPlace::Elements() const {
    if (!value_.is_array()) Refuse("expected an array");
    std::vector<JsonPlace> elements;
    elements.reserve(value_.size());
    for (std::size_t i = 0; i < value_.size(); ++i)
        elements.emplace_back(value_[i], place_ + '[' + std::to_string(i) + ']');
    return elements;
}

std::string JsonPlace::Text() const {
    if (!value_.is_string()) Refuse("expected a text");
    auto latin1 = CheckedLatin1(value_.get<std::string>());
    if (!latin1) Refuse("expected characters of ISO 8859-1");
    return *std::move(latin1);
}

bool JsonPlace::Truth() const {
    if (!value_.is_boolean()) Refuse("expected true or false");
    return value_.get<bool>();
}

std::int64_t JsonPlace::Whole(std::int64_t least, std::int64_t largest) const {
    const bool tooLarge = value_.is_number_unsigned() &&
                          value_.get<std::uint64_t>() >
                              static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const bool isWhole = value_.is_number_integer() && !tooLarge;
    const std::int64_t number = isWhole ? value_.get<std::int64_t>() : 0;
    if (!isWhole || number < least || number > largest)
        Refuse("expected a whole number from " + std::to_string(least) + " to " +
               std::to_string(largest));
    return number;
}

std::uint64_t JsonPlace::Whole() const {
    // The reader of JSON takes whole numbers without a sign for these.
    if (!value_.is_number_unsigned())
        Refuse("expected a whole number from 0 to 18446744073709551615");
    return value_.get<std::uint64_t>();
}

Datum JsonPlace::Identifier() const {
    if (value_.is_string()) {
        const std::string text = Text();
        if (text.empty()) Refuse("an identifier has no characters");
        return Ascii(text);
    }
    if (!value_.is_number_integer()) Refuse("expected a number or a text");
    return Unsigned4(static_cast<std::uint32_t>(Whole(0, 4294967295LL)));
}

std::int32_t JsonPlace::Format() const {
    const auto format = FormatNamed(Text());
    if (!format) Refuse("expected one of L B BOOLEAN A I1 I2 I4 I8 U1 U2 U4 U8 F4 F8");
    return *format;
}

// Not deeper than a link takes.
Datum JsonPlace::ListValue(std::size_t level) const {
    if (level > DeepestValue())
        Refuse("lists are nested more than " + std::to_string(DeepestValue()) + " deep");
    std::vector<Datum> items;
    for (const JsonPlace& element : Elements()) {
        element.Members({"format", "value"});
        items.push_back(element.At("value").Value(element.At("format").Format(), level + 1));
    }
    return List(std::move(items));
}

Datum JsonPlace::Value(std::int32_t format, std::size_t level) const {
    return format == FormatList ? ListValue(level) : SingleValue(format);
}

// Apart from the lists, for what it keeps on the stack would be there once a level.
Datum JsonPlace::SingleValue(std::int32_t format) const {
    if (format == FormatAscii) return Ascii(Text());
    const std::vector<JsonPlace> elements =
        value_.is_array() ? Elements() : std::vector<JsonPlace>{*this};
    if (elements.empty()) return {.Format = format};
    // What decoding makes of several values; a single one stands for itself.
    const auto make = [&]<class T>(T, auto read) {
        std::vector<T> values;
        values.reserve(elements.size());
        for (const JsonPlace& element : elements)
            values.push_back(read(element));
        if (values.size() == 1) return Datum{.Format = format, .Value = Variant(T(values[0]))};
        return Datum{.Format = format, .Value = Variant(std::move(values))};
    };
    const auto number = [](const JsonPlace& place) {
        if (!place.value_.is_number()) place.Refuse("expected a number");
        return place.value_.get<double>();
    };
    const Range range = RangeOf(format);
    const auto whole = [range](const JsonPlace& place) {
        return place.Whole(range.Least, range.Largest);
    };
    switch (format) {
        case FormatBoolean:
            return make(bool{}, [](const JsonPlace& place) { return place.Truth(); });
        case FormatBinary:
            return make(std::uint8_t{}, [&](const JsonPlace& place) {
                return static_cast<std::uint8_t>(whole(place));
            });
        case FormatF4:
            return make(float{}, [&](const JsonPlace& place) {
                const double wide = number(place);
                if (std::abs(wide) > std::numeric_limits<float>::max())
                    place.Refuse("the number is too large for F4");
                return static_cast<float>(wide);
            });
        case FormatF8:
            return make(double{}, number);
        case FormatU8:
            return make(Decimal(),
                        [](const JsonPlace& place) { return Decimal::FromUInt64(place.Whole()); });
        case FormatI8:
        case FormatU4:
            return make(Decimal(),
                        [&](const JsonPlace& place) { return Decimal::FromInt64(whole(place)); });
        default:
            return make(std::int32_t{}, [&](const JsonPlace& place) {
                return static_cast<std::int32_t>(whole(place));
            });
    }
}

std::string JsonPlace::TextOf(const std::string& member) const {
    const auto found = Find(member);
    return found ? found->Text() : "";
}

bool JsonPlace::TruthOf(const std::string& member, bool otherwise) const {
    const auto found = Find(member);
    return found ? found->Truth() : otherwise;
}

}  // namespace hexmire::program
