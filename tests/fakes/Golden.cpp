#include "Golden.h"

#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Conversion.h>
#include <hexmire/support/HexBytes.h>

#include <bit>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace hexmire::fakes {

namespace {

/// Walks a notation; every read skips the blanks in front.
class NotationReader {
public:
    explicit NotationReader(std::string_view text) : text_(text) {}

    [[nodiscard]] bool AtEnd() {
        SkipBlanks();
        return at_ == text_.size();
    }
    [[nodiscard]] char Peek() {
        SkipBlanks();
        return at_ < text_.size() ? text_[at_] : '\0';
    }
    void Expect(char wanted) {
        if (Peek() != wanted) Fail(std::string("no ") + wanted);
        ++at_;
    }
    std::string Word() {
        SkipBlanks();
        const std::size_t start = at_;
        while (at_ < text_.size() && text_[at_] != ' ' && text_[at_] != '>' && text_[at_] != '*') {
            ++at_;
        }
        if (at_ == start) Fail("no word");
        return std::string(text_.substr(start, at_ - start));
    }
    std::string Quoted() {
        Expect('"');
        std::string text;
        while (at_ < text_.size() && text_[at_] != '"') {
            text.push_back(text_[at_] == '\\' ? Escape() : text_[at_++]);
        }
        Expect('"');
        return text;
    }
    /// The N of "*N" right behind an element; 1 without.
    std::size_t Repeat() {
        if (at_ >= text_.size() || text_[at_] != '*') return 1;
        ++at_;
        return std::stoul(Word());
    }
    [[noreturn]] void Fail(const std::string& why) const {
        throw std::runtime_error(why + " at column " + std::to_string(at_ + 1) + " of " +
                                 std::string(text_));
    }

private:
    char Escape() {
        ++at_;
        if (at_ < text_.size() && text_[at_] != 'x') return text_[at_++];
        if (text_.size() < at_ + 3) Fail("short escape");
        const std::string digits(text_.substr(at_ + 1, 2));
        at_ += 3;
        return static_cast<char>(std::stoi(digits, nullptr, 16));
    }
    void SkipBlanks() {
        while (at_ < text_.size() && text_[at_] == ' ') {
            ++at_;
        }
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

/// The elements of an item that is neither list nor text, repeated as written.
std::vector<std::string> ReadElements(NotationReader& reader) {
    std::vector<std::string> elements;
    while (reader.Peek() != '>') {
        const std::string word = reader.Word();
        elements.insert(elements.end(), reader.Repeat(), word);
    }
    return elements;
}

/// No element: Empty; one: a scalar; more: an array of the same kind.
template <class T, class Read>
Variant ValueOf(const std::vector<std::string>& elements, Read read) {
    if (elements.empty()) return {};
    std::vector<T> values;
    values.reserve(elements.size());
    for (const std::string& element : elements) {
        values.push_back(read(element));
    }
    if (values.size() == 1) return Variant(T(values[0]));
    return Variant(std::move(values));
}

Variant ReadNumbers(std::int32_t format, const std::vector<std::string>& elements) {
    switch (format) {
        case FormatBinary:
            return ValueOf<std::uint8_t>(elements, [](const std::string& text) {
                return static_cast<std::uint8_t>(std::stoul(text, nullptr, 16));
            });
        case FormatBoolean:
            return ValueOf<bool>(elements, [](const std::string& text) { return text == "T"; });
        case FormatF4:
            return ValueOf<float>(elements, [](const std::string& text) {
                return std::strtof(text.c_str(), nullptr);
            });
        case FormatF8:
            return ValueOf<double>(elements, [](const std::string& text) {
                return std::strtod(text.c_str(), nullptr);
            });
        case FormatI8:
            return ValueOf<Decimal>(elements, [](const std::string& text) {
                return Decimal::FromInt64(std::stoll(text));
            });
        case FormatU4:
        case FormatU8:
            return ValueOf<Decimal>(elements, [](const std::string& text) {
                return Decimal::FromUInt64(std::stoull(text));
            });
        default:
            return ValueOf<std::int32_t>(elements, [](const std::string& text) {
                return static_cast<std::int32_t>(std::stol(text));
            });
    }
}

std::string ReadText(NotationReader& reader) {
    std::string text;
    while (reader.Peek() != '>') {
        const std::string piece = reader.Quoted();
        for (std::size_t left = reader.Repeat(); left > 0; --left) {
            text += piece;
        }
    }
    return text;
}

void ReadItems(NotationReader& reader, const SECSItemPtr& list);

void ReadItem(NotationReader& reader, const SECSItemPtr& list) {
    reader.Expect('<');
    const std::string name = reader.Word();
    const std::int32_t format = ModGeneral::TextToItemFormat(name);
    if (format == FormatVar && name != "V") reader.Fail("unknown format " + name);
    const SECSItemPtr item = list->AddNew(list->ItemCount() + 1);
    item->Format(format);
    if (format == FormatList) {
        ReadItems(reader, item);
    } else if (format == FormatAscii || format == FormatVar) {
        const std::string text = ReadText(reader);
        if (!text.empty()) item->Value(text);
    } else {
        item->Value(ReadNumbers(format, ReadElements(reader)));
    }
    reader.Expect('>');
}

void ReadItems(NotationReader& reader, const SECSItemPtr& list) {
    while (reader.Peek() == '<') {
        const NotationReader start = reader;
        ReadItem(reader, list);
        for (std::size_t copies = reader.Repeat(); copies > 1; --copies) {
            NotationReader again = start;
            ReadItem(again, list);
        }
    }
}

/// "41 02 (78)*300" as bytes.
std::vector<std::uint8_t> ReadHex(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    std::size_t group = 0;
    for (std::size_t at = 0; at < text.size();) {
        const char next = text[at];
        if (next == ' ' || next == '(') {
            if (next == '(') group = bytes.size();
            ++at;
        } else if (next == ')') {
            const std::vector<std::uint8_t> repeated(
                bytes.begin() + static_cast<std::ptrdiff_t>(group), bytes.end());
            if (text.substr(at, 2) != ")*") throw std::runtime_error("no count behind a group");
            std::size_t digits = 0;
            const std::size_t count = std::stoul(std::string(text.substr(at + 2)), &digits);
            for (std::size_t copy = 1; copy < count; ++copy) {
                bytes.insert(bytes.end(), repeated.begin(), repeated.end());
            }
            at += 2 + digits;
        } else {
            const int high = HexDigitValue(next);
            const int low = at + 1 < text.size() ? HexDigitValue(text[at + 1]) : -1;
            if (high < 0 || low < 0) throw std::runtime_error("no byte: " + std::string(text));
            bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
            at += 2;
        }
    }
    return bytes;
}

std::string Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

template <class Float, class Bits>
bool SameBits(std::span<const Float> left, std::span<const Float> right) {
    if (left.size() != right.size()) return false;
    for (std::size_t index = 0; index < left.size(); ++index) {
        if (std::bit_cast<Bits>(left[index]) != std::bit_cast<Bits>(right[index])) return false;
    }
    return true;
}

std::string DescribeValue(const Variant& value) {
    constexpr std::size_t kShown = 8;
    if (value.IsNull()) return " Null";
    if (value.IsObject()) return " Object";
    if (value.IsString()) {
        const std::string_view text = value.Text();
        return " \"" + std::string(text.substr(0, 40)) + "\"(" + std::to_string(text.size()) + ")";
    }
    if (!value.IsArray()) return " " + ToText(value);
    std::string text = "[" + std::to_string(value.ElementCount()) + "]";
    for (std::size_t index = 0; index < value.ElementCount() && index < kShown; ++index) {
        text += DescribeValue(value.Element(value.LowerBound() + static_cast<std::int32_t>(index)));
    }
    return text;
}

}  // namespace

std::vector<GoldenVector> LoadGolden(const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot read " + path.string());
    std::vector<GoldenVector> vectors;
    for (std::string line; std::getline(file, line);) {
        const std::string text = Trim(line);
        if (text.empty() || text[0] == '#') continue;
        const std::size_t first = text.find(" | ");
        const std::size_t second = text.find(" | ", first + 3);
        if (first == std::string::npos || second == std::string::npos) {
            throw std::runtime_error("not three columns: " + line);
        }
        vectors.push_back({Trim(text.substr(0, first)),
                           Trim(text.substr(first + 3, second - first - 3)),
                           ReadHex(text.substr(second + 3))});
    }
    return vectors;
}

void AppendItems(const SECSItemPtr& list, std::string_view notation) {
    NotationReader reader(notation);
    ReadItems(reader, list);
    if (!reader.AtEnd()) reader.Fail("no item");
}

SECSMessagePtr MessageFromNotation(std::string_view notation) {
    SECSMessagePtr message = New<SECSMessage>();
    AppendItems(message->Root(), notation);
    return message;
}

bool SameValue(const Variant& left, const Variant& right) {
    if (left.Kind() != right.Kind()) return false;
    switch (left.Kind()) {
        case VariantKind::Single:
            return std::bit_cast<std::uint32_t>(left.AsSingle()) ==
                   std::bit_cast<std::uint32_t>(right.AsSingle());
        case VariantKind::Double:
            return std::bit_cast<std::uint64_t>(left.AsDouble()) ==
                   std::bit_cast<std::uint64_t>(right.AsDouble());
        case VariantKind::SingleArray:
            return SameBits<float, std::uint32_t>(left.View<float>(), right.View<float>());
        case VariantKind::DoubleArray:
            return SameBits<double, std::uint64_t>(left.View<double>(), right.View<double>());
        default:
            return left == right;
    }
}

bool SameTree(const SECSItemPtr& left, const SECSItemPtr& right) {
    if (left == nullptr || right == nullptr) return left == right;
    std::vector<std::pair<SECSItemPtr, SECSItemPtr>> open{{left, right}};
    while (!open.empty()) {
        const auto [one, other] = open.back();
        open.pop_back();
        if (one->Format() != other->Format() || one->ItemCount() != other->ItemCount() ||
            !SameValue(one->Value(), other->Value())) {
            return false;
        }
        auto match = other->begin();
        for (const SECSItemPtr& child : *one) {
            open.emplace_back(child, *match);
            ++match;
        }
    }
    return true;
}

std::string Describe(const SECSItemPtr& item) {
    if (item == nullptr) return "nothing";
    std::string text = "<" + ModGeneral::ItemFormatToText(item->Format());
    if (item->Format() == FormatList) {
        std::int32_t shown = 0;
        for (const SECSItemPtr& child : *item) {
            text += " " + (++shown > 20 ? std::string("...") : Describe(child));
            if (shown > 20) break;
        }
    } else if (!item->Value().IsEmpty()) {
        text += DescribeValue(item->Value());
    }
    return text + ">";
}

}  // namespace hexmire::fakes
