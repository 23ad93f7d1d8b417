#include "BodyCheck.h"

#include <hexmire/core/ItemFormat.h>
#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/ItemHeader.h>

#include <numeric>
#include <utility>

namespace hexmire::program {

namespace {

/// Bytes of an element; 0 for a format that is not known. Lists have none.
std::uint32_t WidthOf(std::uint8_t format) {
    switch (format) {
        case FormatI8:
        case FormatU8:
        case FormatF8:
            return 8;
        case FormatI4:
        case FormatU4:
        case FormatF4:
            return 4;
        case FormatI2:
        case FormatU2:
            return 2;
        case FormatI1:
        case FormatU1:
        case FormatBinary:
        case FormatBoolean:
        case FormatAscii:
            return 1;
        default:
            return 0;
    }
}

/// Length / width to the nearest whole number, halves to even: so many the control reads.
std::uint32_t ReadElements(std::uint32_t length, std::uint32_t width) {
    const std::uint32_t whole = length / width;
    const std::uint32_t twice = 2 * (length % width);
    return twice > width || (twice == width && whole % 2 == 1) ? whole + 1 : whole;
}

std::string Counted(std::size_t count, const char* one, const char* several) {
    return std::to_string(count) + ' ' + (count == 1 ? one : several);
}

std::string UnknownFormat(std::uint8_t code) {
    const std::string octal{static_cast<char>('0' + code / 8), static_cast<char>('0' + code % 8)};
    const char* name = code == 17 ? " (JIS-8)" : code == 18 ? " (two-byte characters)" : "";
    return "format code " + octal + " octal" + name + " is not known; the rest cannot be read";
}

class Walk {
public:
    explicit Walk(std::span<const std::uint8_t> body) : body_(body) {}

    std::vector<BodyFinding> Run() {
        if (body_.empty()) return {};
        bool goesOn = Item();
        while (goesOn && !lists_.empty()) {
            if (lists_.back().Left == 0) {
                lists_.pop_back();
            } else {
                --lists_.back().Left;
                goesOn = Item();
            }
        }
        if (goesOn && offset_ < body_.size())
            Find(offset_,
                 Counted(body_.size() - offset_, "byte", "bytes") +
                     " behind the body's item: a body is one item");
        return std::move(findings_);
    }

private:
    struct List {
        std::size_t Offset = 0;
        std::uint32_t Count = 0;
        std::uint32_t Left = 0;
    };

    void Find(std::size_t offset, std::string text) {
        findings_.push_back({offset, std::move(text)});
    }

    /// False when nothing behind can be read.
    bool Item() {
        const std::size_t start = offset_;
        if (start == body_.size()) return MissingChild();
        ItemHeader header;
        const std::size_t value = ReadItemHeader(body_, start, header);
        if (value == 0) {
            Find(start, "the head of an item is cut short");
            return false;
        }
        if (header.LengthBytes == 0) Find(start, "the item has no length bytes");
        offset_ = value;
        if (header.FormatCode == FormatList) {
            lists_.push_back({start, header.Length, header.Length});
            return true;
        }
        return Value(start, header);
    }

    bool Value(std::size_t start, const ItemHeader& header) {
        const std::uint32_t width = WidthOf(header.FormatCode);
        if (width == 0) {
            Find(start, UnknownFormat(header.FormatCode));
            return false;
        }
        const std::string name = ModGeneral::ItemFormatToText(header.FormatCode);
        if (header.Length % width != 0) {
            Find(start,
                 Counted(header.Length, "byte is", "bytes are") + " no multiple of the " +
                     std::to_string(width) + " bytes of " + name);
            return false;
        }
        const std::size_t there = body_.size() - offset_;
        if (there < header.Length) {
            Find(start,
                 "item " + name + " of " + Counted(header.Length, "byte", "bytes") + ", but only " +
                     std::to_string(there) + (there == 1 ? " is there" : " are there"));
            return false;
        }
        offset_ += header.Length;
        return true;
    }

    bool MissingChild() {
        const List& list = lists_.back();
        const std::uint32_t there = list.Count - list.Left - 1;
        Find(list.Offset,
             "list of " + Counted(list.Count, "item", "items") + ", but only " +
                 std::to_string(there) + (there == 1 ? " is there" : " are there"));
        return false;
    }

    std::span<const std::uint8_t> body_;
    std::size_t offset_ = 0;
    std::vector<List> lists_;
    std::vector<BodyFinding> findings_;
};

}  // namespace

std::uint64_t MissingItems(std::span<const std::uint8_t> body) {
    std::vector<std::uint32_t> lists{1};  // Items that each still waits for.
    for (std::size_t offset = 0; !lists.empty() && offset < body.size();) {
        if (lists.back() == 0) {
            lists.pop_back();
            continue;
        }
        --lists.back();
        ItemHeader header;
        offset = ReadItemHeader(body, offset, header);
        if (offset == 0) break;  // Its head is cut short: nothing is left.
        const std::uint32_t width = WidthOf(header.FormatCode);
        if (header.FormatCode == FormatList) {
            lists.push_back(header.Length);
        } else if (width != 0) {  // Nothing of an unknown one is passed over.
            offset += std::uint64_t{ReadElements(header.Length, width)} * width;
        }
    }
    return std::accumulate(lists.begin(), lists.end(), std::uint64_t{0});
}

std::vector<BodyFinding> CheckBody(std::span<const std::uint8_t> body) { return Walk(body).Run(); }

}  // namespace hexmire::program
