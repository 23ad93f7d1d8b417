#include <hexmire/support/Variant.h>
#include <hexmire/support/detail/VariantBoxes.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace hexmire {

namespace {

using Access = detail::VariantAccess;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kWhole = 100;

class VariantSharing : public testing::Test {
protected:
    VariantSharing() { std::iota(bytes_.begin(), bytes_.end(), std::uint8_t{1}); }
    [[nodiscard]] std::span<const std::uint8_t> Part(std::size_t start, std::size_t count) const {
        return whole_.View<std::uint8_t>().subspan(start, count);
    }
    [[nodiscard]] Bytes Expected(std::size_t start, std::size_t count) const {
        const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(start);
        return {first, first + static_cast<std::ptrdiff_t>(count)};
    }
    [[nodiscard]] bool Shares(const std::uint8_t* data) const {
        const auto all = whole_.View<std::uint8_t>();
        return data >= all.data() && data < all.data() + all.size();
    }

    Bytes bytes_ = Bytes(kWhole);
    Variant whole_ = [this] {
        std::iota(bytes_.begin(), bytes_.end(), std::uint8_t{1});
        return Variant(bytes_);
    }();
};

TEST_F(VariantSharing, HalfOfTheBytesAreSharedLessAreCopied) {
    struct Row {
        std::size_t Start;
        std::size_t Count;
        bool IsShared;
    };
    const std::vector<Row> rows = {{0, 100, true},
                                   {50, 50, true},
                                   {3, 51, true},
                                   {10, 49, false},
                                   {0, 22, false},
                                   {5, 0, false}};
    for (const Row& row : rows) {
        const Variant bytes = Access::BytesWithin(whole_, Part(row.Start, row.Count));
        EXPECT_EQ(bytes, Variant(Expected(row.Start, row.Count))) << row.Count;
        EXPECT_EQ(Shares(bytes.View<std::uint8_t>().data()), row.IsShared) << row.Count;
        const Variant text = Access::TextWithin(whole_, Part(row.Start, row.Count));
        const Bytes expected = Expected(row.Start, row.Count);
        EXPECT_EQ(text, Variant(std::string(expected.begin(), expected.end()))) << row.Count;
        EXPECT_EQ(Shares(reinterpret_cast<const std::uint8_t*>(text.Text().data())), row.IsShared);
    }
}

TEST_F(VariantSharing, ASmallWholeIsNeverShared) {
    const Variant small = Bytes{1, 2, 3, 4};
    EXPECT_EQ(Access::BytesWithin(small, small.View<std::uint8_t>()), small);
    EXPECT_EQ(Access::TextWithin(small, small.View<std::uint8_t>()), Variant("\x01\x02\x03\x04"));
    EXPECT_EQ(Access::NumbersWithin(small, small.View<std::uint8_t>(), Access::kUInt32),
              Variant(std::vector<std::uint32_t>{0x01020304U}));
}

TEST_F(VariantSharing, APartOutlivesTheWhole) {
    const Variant bytes = Access::BytesWithin(whole_, Part(2, 60));
    const Variant text = Access::TextWithin(whole_, Part(2, 60));
    const Variant numbers = Access::NumbersWithin(whole_, Part(2, 60), Access::kUInt32);
    const Variant partOfPart = Access::BytesOf(numbers);
    whole_ = Variant();
    EXPECT_EQ(bytes, Variant(Expected(2, 60)));
    EXPECT_EQ(text.Text().size(), 60U);
    EXPECT_EQ(numbers.Numbers<std::uint32_t>().front(), 0x03040506U);
    EXPECT_EQ(partOfPart, bytes);
}

TEST_F(VariantSharing, BytesOfAValueAreItsOwn) {
    const std::string text(60, 'x');
    for (const Variant& value : {Variant(text), Variant(std::string_view(text))}) {
        const Variant bytes = Access::BytesOf(value);
        EXPECT_EQ(bytes, Variant(Bytes(60, 'x')));
        EXPECT_EQ(static_cast<const void*>(bytes.View<std::uint8_t>().data()),
                  static_cast<const void*>(value.Text().data()));
    }
    EXPECT_EQ(Access::BytesOf(Variant("short")), Variant(Bytes{'s', 'h', 'o', 'r', 't'}));
    EXPECT_EQ(Access::BytesOf(Variant(std::vector<std::uint32_t>{0x01020304U})),
              Variant(Bytes{1, 2, 3, 4}));
    EXPECT_EQ(Access::BytesOf(whole_), whole_);
}

TEST_F(VariantSharing, AValueMovedOrGivenToItselfStays) {
    Variant value = whole_;
    Variant& same = value;
    value = same;
    EXPECT_EQ(value, whole_);
    const Variant taken = std::move(value);
    EXPECT_EQ(taken, whole_);
    value = taken;
    EXPECT_EQ(value, whole_);
}

TEST_F(VariantSharing, TheEndOfWhatWasHeldMayComeBackToTheValue) {
    struct Watcher {
        Variant* Value = nullptr;
        VariantKind* Seen = nullptr;
        Watcher(Variant* value, VariantKind* seen) : Value(value), Seen(seen) {}
        Watcher(const Watcher&) = delete;
        Watcher& operator=(const Watcher&) = delete;
        ~Watcher() { *Seen = Value->Kind(); }
    };
    Variant value;
    VariantKind seen = VariantKind::Empty;
    value = std::make_shared<Watcher>(&value, &seen);
    value = Variant(7);
    EXPECT_EQ(seen, VariantKind::Long);
}

}  // namespace

}  // namespace hexmire
