#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/core/detail/SmlWriter.h>
#include <hexmire/support/Conversion.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/HexBytes.h>
#include <hexmire/support/Reporting.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

namespace hexmire::detail {

namespace {

using Access = SECSItemAccess;

constexpr RoutineName kName{"SECSMessage", "ItemToSML"};
// A body nested very deep is mostly indentation, and its text grows with the square of the depth.
constexpr std::size_t kMostIndentation = std::size_t{64} << 20U;
constexpr const char* kLineEnd = "\r\n";

/// The scalar's hexadecimal digits, as wide as its kind when it is negative; two at least.
std::string HexNumber(const Variant& value) {
    const std::int32_t number = ToLong(value);
    auto bits = static_cast<std::uint32_t>(number);
    const bool isShort =
        value.Kind() == VariantKind::Integer || value.Kind() == VariantKind::Boolean;
    if (number < 0 && isShort) bits &= std::numeric_limits<std::uint16_t>::max();
    std::string digits;
    do {
        digits.insert(digits.begin(), HexDigit(bits & 0x0FU));
        bits >>= 4U;
    } while (bits != 0);
    return (digits.size() == 1 ? "0x0" : "0x") + digits;
}

/// Calls `put` with each element of an array, in index order.
template <class Put>
void ForEachElement(const Variant& array, Put put) {
    const std::int32_t first = array.LowerBound();
    const auto count = static_cast<std::int32_t>(array.ElementCount());
    for (std::int32_t index = 0; index < count; ++index)
        put(array.Element(first + index));
}

const char* BooleanWord(const Variant& value) { return ToBoolean(value) ? " TRUE" : " FALSE"; }

/// Calls `put` with the value, or with each element of an array.
template <class Put>
void ForEachValue(const Variant& value, Put put) {
    if (value.IsArray()) {
        ForEachElement(value, put);
    } else {
        put(value);
    }
}

/// What stands between the format's name and " >".
void AppendValue(std::string& text, std::int32_t format, const Variant& value) {
    switch (format) {
        case FormatAscii:
            text.append(" '");
            if (value.IsString()) {
                text.append(value.Text());
            } else {
                text.append(ToText(value));
            }
            text.append("'");
            return;
        case FormatVar:
            text.append(" ").append(AnyFormatText(value));
            return;
        case FormatBinary:
            text.append(" ").append(value.IsArray() ? ModGeneral::HexDumpArray2(value)
                                                    : HexNumber(value));
            return;
        case FormatBoolean:
            ForEachValue(value, [&](const Variant& one) { text.append(BooleanWord(one)); });
            return;
        default:
            ForEachValue(value, [&](const Variant& one) { text.append(" ").append(ToText(one)); });
    }
}

bool HasNoText(std::int32_t format, const Variant& value) {
    return value.IsEmpty() || value.IsNull() ||
           (format == FormatAscii && value.IsString() && value.Text().empty());
}

/// A list whose children are still to be rendered.
struct Step {
    std::shared_ptr<const Access::ChildList> Children;
    std::size_t Next = 0;
    std::int32_t Level = 0;
};

/// Renders a tree with a stack of its own in place of the machine's.
class Writer {
public:
    explicit Writer(std::string& text) : text_(text) {}

    void Run(const SECSItemPtr& item, std::int32_t level) {
        RunFreeRoutine(kName, [&] {
            Enter(item, level);
            while (!steps_.empty()) {
                Step& step = steps_.back();
                if (step.Next == step.Children->size()) {
                    Indent(step.Level);
                    text_.append(" >").append(kLineEnd);
                    steps_.pop_back();
                } else {
                    const SECSItemPtr& child = (*step.Children)[step.Next++];
                    Enter(child, step.Level + 1);
                }
            }
        });
    }

private:
    /// An item that faults adds nothing; only running out of room for indentation ends the whole
    /// text.
    void Enter(const SECSItemPtr& item, std::int32_t level) {
        const std::size_t start = text_.size();
        Indent(level);
        bool added = false;
        RunFreeRoutine(kName, [&] {
            if (item == nullptr) throw Fault(FaultNumber::ObjectNotSet);
            if (item->Format() == FormatList) {
                OpenList(*item, level);
            } else {
                AddItem(*item);
            }
            added = true;
        });
        if (!added) text_.resize(start);
    }

    void OpenList(const SECSItem& item, std::int32_t level) {
        std::shared_ptr<const Access::ChildList> children = Access::AllItems(item);
        if (children == nullptr || children->empty()) {
            text_.append("< L ").append(ModGeneral::GetSMLIndent(level));
            text_.append(" >").append(kLineEnd);
            return;
        }
        text_.append("< L ").append(kLineEnd);
        steps_.push_back({std::move(children), 0, level});
    }

    void AddItem(const SECSItem& item) {
        const Variant value = Access::Value(item);  // A handler may change the item meanwhile.
        const std::int32_t format = item.Format();
        text_.append("< ").append(ModGeneral::ItemFormatToText(format));
        if (!HasNoText(format, value)) {
            AppendValue(text_, format, value);
        } else if (format == FormatBinary) {
            text_.append(" ");  // The blank that would precede the value.
        }
        text_.append(" >").append(kLineEnd);
    }

    void Indent(std::int32_t level) {
        const std::string indent = ModGeneral::GetSMLIndent(level);
        indentation_ += indent.size();
        if (indentation_ > kMostIndentation) throw Fault(FaultNumber::OutOfMemory);
        text_ += indent;
    }

    std::string& text_;
    std::vector<Step> steps_;
    std::size_t indentation_ = 0;
};

}  // namespace

std::string AnyFormatText(const Variant& value) {
    if (!value.IsArray()) return ToText(value);
    if (ModGeneral::IsByteArray(value)) return "[ " + ModGeneral::HexDumpArray(value) + " ]";
    std::string text = "[ ";
    bool isFirst = true;
    ForEachElement(value, [&](const Variant& element) {
        if (!isFirst) text += ", ";
        text += ToText(element);
        isFirst = false;
    });
    return text + " ]";
}

void ItemToSML(const SECSItemPtr& item, std::int32_t level, std::string& text) {
    Writer(text).Run(item, level);
}

}  // namespace hexmire::detail
