#include <hexmire/core/detail/SECSMessageAccess.h>

#include "../fakes/Golden.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace fakes;

const std::vector<GoldenVector>& Items() {
    static const std::vector<GoldenVector> kItems =
        LoadGolden(HEXMIRE_SOURCE_DIR "/tests/golden/items.txt");
    return kItems;
}

const std::vector<GoldenVector>& Accepted() {
    static const std::vector<GoldenVector> kAccepted =
        LoadGolden(HEXMIRE_SOURCE_DIR "/tests/golden/accepted.txt");
    return kAccepted;
}

/// How many errors a cut body gives: one for the item that misses bytes and one for each sibling
/// that was to follow it, on every level. Every item of the tables is known, so this short reader
/// of lengths is all it takes. Leaves the position behind the item, or at the end after a fault.
std::size_t MissingItems(const std::vector<std::uint8_t>& bytes, std::size_t& position) {
    if (position >= bytes.size()) return 1;
    const unsigned head = bytes[position++];
    std::size_t length = 0;
    for (unsigned left = head % 4U; left > 0; --left) {
        if (position >= bytes.size()) return 1;
        length = length * 256 + bytes[position++];
    }
    if (head / 4U == 0) {
        std::size_t missing = 0;
        for (std::size_t child = 0; child < length; ++child) {
            missing += MissingItems(bytes, position);
        }
        return missing;
    }
    if (bytes.size() - position < length) {
        position = bytes.size();
        return 1;
    }
    position += length;
    return 0;
}

/// True when the tree is what is left of the whole one: same formats, fewer children at the end of
/// lists, values either there or missing.
bool IsPartOf(const SECSItemPtr& part, const SECSItemPtr& whole) {
    if (part->Format() != whole->Format() || part->ItemCount() > whole->ItemCount()) return false;
    const Variant value = part->Value();
    if (!value.IsEmpty() && !SameValue(value, whole->Value())) return false;
    auto match = whole->begin();
    for (const SECSItemPtr& child : *part) {
        if (!IsPartOf(child, *match)) return false;
        ++match;
    }
    return true;
}

TEST(GoldenItems, TheTablesCoverEveryFormatAndHaveUniqueNames) {
    std::set<std::string> names;
    std::set<int> formats;
    for (const GoldenVector& vector : Items()) {
        EXPECT_TRUE(names.insert(vector.Name).second) << vector.Name;
        formats.insert(vector.Bytes[0] / 4);
    }
    EXPECT_EQ(formats, (std::set<int>{0, 8, 9, 16, 24, 25, 26, 28, 32, 36, 40, 41, 42, 44}));
    EXPECT_GE(Items().size(), 250U);
    EXPECT_GE(Accepted().size(), 25U);
}

TEST(GoldenItems, DecodingGivesTheTree) {
    RecordingSite site;
    for (const GoldenVector& vector : Items()) {
        SCOPED_TRACE(vector.Name);
        const DecodedItem decoded = DecodeItem(vector.Bytes);
        const SECSMessagePtr expected = MessageFromNotation(vector.Notation);
        EXPECT_TRUE(decoded.Ok);
        EXPECT_TRUE(SameTree(decoded.Item, Body(expected)))
            << Describe(decoded.Item) << " instead of " << vector.Notation.substr(0, 200);
        EXPECT_TRUE(decoded.Message->Raw() == Variant::Bytes(vector.Bytes));
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(GoldenItems, EncodingGivesTheBytes) {
    RecordingSite site;
    for (const GoldenVector& vector : Items()) {
        SCOPED_TRACE(vector.Name);
        const SECSMessagePtr message = MessageFromNotation(vector.Notation);
        const std::vector<std::uint8_t> bytes = EncodeBody(*message);
        EXPECT_TRUE(bytes == vector.Bytes)
            << HexOf(bytes).substr(0, 200) << " from " << vector.Notation.substr(0, 200);
        EXPECT_EQ(message->Length(), static_cast<std::int32_t>(vector.Bytes.size()));
        EXPECT_TRUE(message->Raw() == Variant::Bytes(vector.Bytes));
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(GoldenItems, OneByteMoreIsIgnored) {
    RecordingSite site;
    for (const GoldenVector& vector : Items()) {
        SCOPED_TRACE(vector.Name);
        std::vector<std::uint8_t> longer = vector.Bytes;
        longer.push_back(0x41);
        const DecodedItem decoded = DecodeItem(longer);
        EXPECT_TRUE(decoded.Ok);
        EXPECT_TRUE(SameTree(decoded.Item, Body(MessageFromNotation(vector.Notation))));
        EXPECT_EQ(decoded.Message->Root()->ItemCount(), 1);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

/// A long vector is cut inside its header and at its end; between, each cut of a list would only
/// repeat thousands of equal errors.
bool CutIsTried(std::size_t size, std::size_t cut) {
    constexpr std::size_t kLong = 140;
    constexpr std::size_t kHuge = 5000;
    const std::size_t end = size <= kHuge ? 12 : 3;
    return size <= kLong || cut < 3 || size - cut < end;
}

TEST(GoldenItems, EveryTruncationIsReportedAndKeepsWhatCameBefore) {
    RecordingSite site;
    for (const GoldenVector& vector : Items()) {
        const SECSMessagePtr whole = MessageFromNotation(vector.Notation);
        for (std::size_t cut = 1; cut < vector.Bytes.size(); ++cut) {
            if (!CutIsTried(vector.Bytes.size(), cut)) continue;
            SCOPED_TRACE(vector.Name + " cut to " + std::to_string(cut));
            const std::vector<std::uint8_t> bytes(
                vector.Bytes.begin(), vector.Bytes.begin() + static_cast<std::ptrdiff_t>(cut));
            site.Errors.clear();
            const DecodedItem decoded = DecodeItem(bytes);
            std::size_t position = 0;
            const std::vector<std::string> expected(
                MissingItems(bytes, position),
                "9 (SECSMessage-lParseSECSMessage) Subscript out of range");
            EXPECT_TRUE(site.Errors == expected) << site.Errors.size() << " errors";
            EXPECT_TRUE(decoded.Ok);
            EXPECT_TRUE(decoded.Item == nullptr || IsPartOf(decoded.Item, Body(whole)));
            EXPECT_TRUE(decoded.Message->Raw() == Variant::Bytes(bytes));
        }
    }
}

TEST(AcceptedItems, DecodingGivesTheTree) {
    RecordingSite site;
    for (const GoldenVector& vector : Accepted()) {
        SCOPED_TRACE(vector.Name);
        const DecodedItem decoded = DecodeItem(vector.Bytes);
        EXPECT_TRUE(decoded.Ok);
        EXPECT_TRUE(SameTree(decoded.Item, Body(MessageFromNotation(vector.Notation))))
            << Describe(decoded.Item) << " instead of " << vector.Notation;
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(AcceptedItems, EncodingThemAgainGivesTheUsualForm) {
    RecordingSite site;
    for (const GoldenVector& vector : Accepted()) {
        SCOPED_TRACE(vector.Name);
        const DecodedItem decoded = DecodeItem(vector.Bytes);
        const std::vector<std::uint8_t> usual = EncodeBody(*decoded.Message);
        EXPECT_NE(usual, vector.Bytes);
        const DecodedItem again = DecodeItem(usual);
        EXPECT_EQ(EncodeBody(*again.Message), usual);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

}  // namespace
}  // namespace hexmire
