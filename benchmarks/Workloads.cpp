#include "Workloads.h"

#include "floor/Figures.h"

#include <array>
#include <bit>
#include <cstdio>
#include <string_view>
#include <utility>

namespace hexmire::bench {

namespace {

constexpr std::uint32_t kListItems = 10'000;
constexpr std::uint32_t kListStep = 429'496;
constexpr std::uint32_t kArrayValues = 1'000'000;
constexpr std::uint32_t kArrayStep = 4'294;
constexpr std::size_t kTextSize = std::size_t{1} << 20U;
constexpr int kDepth = 50;

const std::array<std::string, 2> kLots{"LOT-2026-0101-000001", "LOT-2026-0101-000002"};
const ByteVector kFlags{0x00, 0x7F, 0x80, 0xFF};

// --- bytes, by hand ---------------------------------------------------------------------------

void PutNumber(ByteVector& out, std::uint64_t value, unsigned width) {
    for (unsigned shift = width * 8; shift != 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> (shift - 8)));
    }
}

void PutHeader(ByteVector& out, std::int32_t format, std::size_t length) {
    const unsigned lengthBytes = length > 0xFFFF ? 3 : length > 0xFF ? 2 : 1;
    out.push_back(static_cast<std::uint8_t>(static_cast<unsigned>(format) * 4 + lengthBytes));
    PutNumber(out, length, lengthBytes);
}

void PutText(ByteVector& out, std::string_view text) {
    PutHeader(out, FormatAscii, text.size());
    out.insert(out.end(), text.begin(), text.end());
}

void PutScalar(ByteVector& out, std::int32_t format, std::uint64_t value, unsigned width) {
    PutHeader(out, format, width);
    PutNumber(out, value, width);
}

ByteVector EventReportBytes() {
    ByteVector out;
    PutHeader(out, FormatList, 3);
    PutScalar(out, FormatU4, 1001, 4);
    PutScalar(out, FormatU4, 2002, 4);
    PutHeader(out, FormatList, kLots.size());
    for (std::uint32_t report = 0; report < kLots.size(); ++report) {
        PutHeader(out, FormatList, 2);
        PutScalar(out, FormatU4, 3001 + report, 4);
        PutHeader(out, FormatList, 8);
        PutText(out, kLots[report]);
        PutScalar(out, FormatU4, 4'000'000'001, 4);
        PutScalar(out, FormatF8, std::bit_cast<std::uint64_t>(1234.5678), 8);
        PutScalar(out, FormatI2, static_cast<std::uint16_t>(-12'345), 2);
        PutScalar(out, FormatBoolean, 1, 1);
        PutHeader(out, FormatBinary, kFlags.size());
        out.insert(out.end(), kFlags.begin(), kFlags.end());
        PutText(out, "CHAMBER1");
        PutScalar(out, FormatU1, 200, 1);
    }
    return out;
}

ByteVector ListBytes() {
    ByteVector out;
    PutHeader(out, FormatList, kListItems);
    for (std::uint32_t i = 0; i < kListItems; ++i)
        PutScalar(out, FormatU4, std::uint64_t{i} * kListStep, 4);
    return out;
}

ByteVector ArrayBytes() {
    ByteVector out;
    PutHeader(out, FormatU4, std::size_t{kArrayValues} * 4);
    for (std::uint32_t i = 0; i < kArrayValues; ++i)
        PutNumber(out, std::uint64_t{i} * kArrayStep, 4);
    return out;
}

std::string LongText() {
    std::string text(kTextSize, ' ');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>('A' + i % 26);
    return text;
}

ByteVector TextBytes() {
    ByteVector out;
    PutText(out, LongText());
    return out;
}

std::string LeafText(int number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "LEAF%04d", number);
    return text.data();
}

ByteVector NestedBytes() {
    ByteVector out;
    int leaf = 0;
    for (int level = 1; level <= kDepth; ++level) {
        PutHeader(out, FormatList, 3);
        const int leaves = level == kDepth ? 3 : 2;
        for (int i = 0; i < leaves; ++i)
            PutText(out, LeafText(leaf++));
    }
    return out;
}

// --- trees, as a host builds them -------------------------------------------------------------

SECSItemPtr Add(const SECSItemPtr& parent, std::int32_t format, Variant value = {}) {
    SECSItemPtr item = parent->AddNew(parent->ItemCount() + 1);
    item->Format(format);
    item->Value(std::move(value));
    return item;
}

void BuildEventReport(const SECSItemPtr& root) {
    const SECSItemPtr body = Add(root, FormatList);
    Add(body, FormatU4, std::uint32_t{1001});
    Add(body, FormatU4, std::uint32_t{2002});
    const SECSItemPtr reports = Add(body, FormatList);
    for (std::uint32_t index = 0; index < kLots.size(); ++index) {
        const SECSItemPtr report = Add(reports, FormatList);
        Add(report, FormatU4, 3001 + index);
        const SECSItemPtr values = Add(report, FormatList);
        Add(values, FormatAscii, kLots[index]);
        Add(values, FormatU4, std::uint32_t{4'000'000'001});
        Add(values, FormatF8, 1234.5678);
        Add(values, FormatI2, std::int16_t{-12'345});
        Add(values, FormatBoolean, true);
        Add(values, FormatBinary, Variant::Bytes(kFlags));
        Add(values, FormatAscii, "CHAMBER1");
        Add(values, FormatU1, std::uint8_t{200});
    }
}

void BuildList(const SECSItemPtr& root) {
    const SECSItemPtr list = Add(root, FormatList);
    for (std::uint32_t i = 0; i < kListItems; ++i)
        Add(list, FormatU4, i * kListStep);
}

void BuildArray(const SECSItemPtr& root) {
    static const std::vector<std::uint32_t> kValues = [] {
        std::vector<std::uint32_t> values(kArrayValues);
        for (std::uint32_t i = 0; i < kArrayValues; ++i)
            values[i] = i * kArrayStep;
        return values;
    }();
    Add(root, FormatU4, kValues);
}

void BuildText(const SECSItemPtr& root) {
    static const std::string kText = LongText();
    Add(root, FormatAscii, kText);
}

void BuildNested(const SECSItemPtr& root) {
    SECSItemPtr list = root;
    int leaf = 0;
    for (int level = 1; level <= kDepth; ++level) {
        list = Add(list, FormatList);
        const int leaves = level == kDepth ? 3 : 2;
        for (int i = 0; i < leaves; ++i)
            Add(list, FormatAscii, LeafText(leaf++));
    }
}

void ReadValue(const Variant& value) {
    if (value.IsString()) {
        Keep(value.Text().data());
    } else if (value.Kind() == VariantKind::DecimalArray) {
        Keep(value.Numbers<std::uint32_t>().data());
    } else {
        Keep(&value);
    }
}

}  // namespace

const std::vector<Workload>& CodecWorkloads() {
    static const std::vector<Workload> kWorkloads{
        {"a", EventReportBytes(), BuildEventReport},
        {"b", ListBytes(), BuildList},
        {"c", ArrayBytes(), BuildArray},
        {"d", TextBytes(), BuildText},
        {"e", NestedBytes(), BuildNested},
    };
    return kWorkloads;
}

const Workload& EventReport() { return CodecWorkloads().front(); }

void ReadTree(const SECSItemPtr& item) {
    for (const SECSItemPtr& child : *item) {
        ReadValue(child->Value());
        if (child->Format() == FormatList) ReadTree(child);
    }
}

std::string Difference(std::span<const std::uint8_t> wanted,
                       std::span<const std::uint8_t> encoded) {
    if (wanted.size() != encoded.size()) {
        return std::to_string(encoded.size()) + " bytes instead of " +
               std::to_string(wanted.size());
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const bool isTrue = wanted[i] == 1 && encoded[i] == 0xFF;
        if (wanted[i] != encoded[i] && !isTrue) return "byte " + std::to_string(i) + " differs";
    }
    return {};
}

}  // namespace hexmire::bench
