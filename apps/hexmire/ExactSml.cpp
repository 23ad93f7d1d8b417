#include "ExactSml.h"

#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Conversion.h>
#include <hexmire/support/HexBytes.h>

#include "MessageRecord.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::program {

namespace {

/// "0x0A", two digits at least.
std::string Hexadecimal(std::uint64_t bits, unsigned digits) {
    std::string text = "0x";
    while (digits-- > 0)
        text.push_back(HexDigit(static_cast<unsigned>(bits >> (4U * digits)) & 0x0FU));
    return text;
}

/// Quoted pieces and bytes, a blank in front of each.
std::string Pieces(std::string_view text) {
    std::string pieces;
    bool isOpen = false;
    for (const char character : text) {
        const auto code = static_cast<std::uint8_t>(character);
        const bool isPlain = code >= 0x20 && code < 0x7F && character != '"';
        if (isPlain != isOpen) pieces += isPlain ? " \"" : "\"";
        isOpen = isPlain;
        if (isPlain) {
            pieces.push_back(character);
        } else {
            pieces.append(" ").append(Hexadecimal(code, 2));
        }
    }
    return isOpen ? pieces + '"' : pieces;
}

template <class T, class Bits>
std::string FloatText(T value) {
    const auto bits = std::bit_cast<Bits>(value);
    constexpr auto kUsual = std::bit_cast<Bits>(std::numeric_limits<T>::quiet_NaN());
    if (std::isnan(value) && bits != kUsual)
        return "NaN(" + Hexadecimal(bits, 2 * sizeof(Bits)) + ')';
    if (value == 0 && std::signbit(value)) return "-0";
    return ToText(value);
}

std::string ElementText(std::int32_t format, const Variant& element) {
    switch (format) {
        case FormatBinary:
            return Hexadecimal(ToByte(element), 2);
        case FormatBoolean:
            return ToBoolean(element) ? "TRUE" : "FALSE";
        case FormatF4:
            return FloatText<float, std::uint32_t>(
                element.Kind() == VariantKind::Single ? element.AsSingle() : ToSingle(element));
        case FormatF8:
            return FloatText<double, std::uint64_t>(
                element.Kind() == VariantKind::Double ? element.AsDouble() : ToDouble(element));
        default:
            return ToText(element);
    }
}

/// Everything between a format's name and ">".
std::string ValueText(std::int32_t format, const Variant& value) {
    if (value.IsEmpty() || value.IsNull()) return {};
    if (format == FormatAscii || format == FormatVar) return Pieces(ToText(value));
    if (!value.IsArray()) return ' ' + ElementText(format, value);
    std::string text;
    const auto count = static_cast<std::int32_t>(value.ElementCount());
    for (std::int32_t index = 0; index < count; ++index)
        text.append(" ").append(ElementText(format, value.Element(value.LowerBound() + index)));
    return text;
}

class Writer {
public:
    explicit Writer(SmlNotes notes) : notes_(notes) {}

    std::string Write(const SECSItemPtr& item) {
        Enter(item);
        while (!lists_.empty()) {  // Lists nest to any depth.
            auto& [next, left] = lists_.back();
            if (left == 0) {
                lists_.pop_back();
                Indent();
                text_ += ">\n";
                continue;
            }
            --left;
            const SECSItemPtr child = *next++;
            Enter(child);
        }
        return std::move(text_);
    }

private:
    using Children = SnapshotIterator<SECSItem>;

    void Enter(const SECSItemPtr& item) {
        Indent();
        const std::int32_t count = item->ItemCount();
        if (item->Format() == FormatList) {
            // Whoever fills a template in changes how many there are.
            text_ += notes_ == SmlNotes::Names ? "<L" : "<L [" + std::to_string(count) + ']';
            if (count == 0) text_ += '>';
        } else {
            const std::string value = ValueText(item->Format(), item->Value());
            // Any format is sent as text, and a text can be said exactly.
            const std::int32_t format =
                item->Format() == FormatVar && !value.empty() ? FormatAscii : item->Format();
            text_.append("<").append(ModGeneral::ItemFormatToText(format));
            text_.append(value).append(">");
        }
        if (notes_ == SmlNotes::Names) Note(*item);
        text_ += '\n';
        if (count > 0) lists_.emplace_back(item->begin(), count);
    }

    void Note(const SECSItem& item) {
        std::string note = item.Name();
        if (const std::string description = item.Description(); !description.empty())
            note += (note.empty() ? "" : ": ") + description;
        std::replace_if(
            note.begin(), note.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        if (!note.empty()) text_.append("  // ").append(note);
    }

    void Indent() {
        constexpr std::size_t kDeepest = 40;  // Deeper lists would be mostly blanks.
        text_.append(2 * std::min(lists_.size(), kDeepest), ' ');
    }

    SmlNotes notes_;
    std::string text_;
    std::vector<std::pair<Children, std::int32_t>> lists_;
};

}  // namespace

std::string ExactItemSml(const SECSItemPtr& item, SmlNotes notes) {
    return Writer(notes).Write(item);
}

std::string ExactSml(const SECSMessage& message, bool replyExpected, SmlNotes notes) {
    std::string text = StreamFunction(message.Stream(), message.Func());
    text += replyExpected ? " W\n" : "\n";
    if (message.Root()->ItemCount() > 0) text += ExactItemSml(message.Item(1), notes);
    return text + ".\n";
}

}  // namespace hexmire::program
