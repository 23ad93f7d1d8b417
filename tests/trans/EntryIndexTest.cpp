#include <hexmire/support/Text.h>
#include <hexmire/trans/SECSDictionary.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

// What is looked up in a long collection is what a walk from its front would find, whatever was
// inserted, deleted and changed before.

namespace hexmire {
namespace {

using Access = detail::SECSDictionaryAccess;

class EntryIndexModel {
public:
    explicit EntryIndexModel(std::uint32_t seed) : random_(seed) {
        for (std::int32_t count = 0; count < 40; ++count)
            Fill(table_->AddNewTrans(count + 1));
    }

    void Change() {
        const std::int32_t count = table_->TransCount();
        switch (Below(8)) {
            case 0:
                Fill(table_->AddNewTrans(1 + Below(count + 1)));
                break;
            case 1:
                if (count > 0) Any()->Delete();
                break;
            case 2:
                if (count > 0) Any()->Name(AnyName());
                break;
            case 3:
                if (count > 0) detail::SECSTransAccess::SystemBytes(*Any(), Below(90));
                break;
            case 4:
                if (count > 0) LoseParent(Any());
                break;
            default:
                Fill(table_->AddNewTrans(count + 1));
                break;
        }
        while (table_->TransCount() > 100)
            ShrinkByOne();
    }

    void Compare() {
        const std::int32_t systemBytes = Below(90);
        const auto one = Access::OneWithSystemBytes(*table_, systemBytes);
        const std::vector<SECSTransPtr> with =
            Walk([&](const SECSTrans& entry) { return entry.SystemBytes() == systemBytes; });
        if (one) {
            ++Known;
            ASSERT_EQ(*one, with.empty() ? nullptr : with.front());
            ASSERT_LE(with.size(), 1U);
        }
        const std::string name = AnyName();
        const auto first = Access::FirstWithName(*table_, name);
        const std::vector<SECSTransPtr> named =
            Walk([&](const SECSTrans& entry) { return EqualsIgnoringCase(entry.Name(), name); });
        if (first) {
            ++Known;
            ASSERT_EQ(*first, named.empty() ? nullptr : named.front());
        }
        const std::vector<SECSTransPtr> exact =
            Walk([&](const SECSTrans& entry) { return entry.Name() == name; });
        ASSERT_EQ(table_->SECSTrans(name), exact.empty() ? nullptr : exact.front());
        std::int32_t position = 0;
        for (const SECSTransPtr& entry : *table_)
            ASSERT_EQ(detail::SECSTransAccess::StoredIndex(*entry), ++position);
    }

    int Known = 0;  ///< how often no walk was needed

private:
    std::int32_t Below(std::int32_t limit) {
        return static_cast<std::int32_t>(random_() % static_cast<std::uint32_t>(limit));
    }
    SECSTransPtr Any() { return table_->SECSTrans(1 + Below(table_->TransCount())); }
    std::string AnyName() {
        const char letter = static_cast<char>((Below(2) == 0 ? 'a' : 'A') + Below(20));
        return std::string(1, letter) + "\xE4";
    }
    void Fill(const SECSTransPtr& entry) {
        entry->Name(AnyName());
        detail::SECSTransAccess::SystemBytes(*entry, Below(90));
    }
    /// An entry that does not know its collection tells it nothing any more.
    void LoseParent(const SECSTransPtr& entry) {
        if (Below(20) != 0) return;
        if (Below(2) == 0) {
            detail::SECSTransAccess::Parent(*entry, nullptr);
        } else {
            // Another one goes in its place, and it stays without a parent.
            const std::int32_t index = detail::SECSTransAccess::StoredIndex(*entry);
            detail::SECSTransAccess::Index(*entry, index == 1 ? table_->TransCount() : index - 1);
            if (detail::SECSTransAccess::Parent(*entry) == nullptr)
                return RestoreIndex(*entry, index);
            entry->Delete();
        }
        Fill(entry);
    }
    static void RestoreIndex(SECSTrans& entry, std::int32_t index) {
        detail::SECSTransAccess::Index(entry, index);
    }
    void ShrinkByOne() {
        const SECSTransPtr entry = Any();
        detail::SECSTransAccess::Parent(*entry, table_);
        entry->Delete();
    }
    std::vector<SECSTransPtr> Walk(const auto& fits) {
        std::vector<SECSTransPtr> found;
        for (const SECSTransPtr& entry : *table_) {
            if (fits(*entry)) found.push_back(entry);
        }
        return found;
    }

    std::mt19937 random_;
    SECSDictionaryPtr table_ = New<SECSDictionary>();
};

TEST(EntryIndex, FindsWhatAWalkFinds) {
    int known = 0;
    for (std::uint32_t seed = 1; seed <= 30; ++seed) {
        EntryIndexModel model(seed);
        for (int step = 0; step < 1'500; ++step) {
            if (step % 40 < 8) model.Change();
            model.Compare();
            if (HasFatalFailure()) FAIL() << "seed " << seed << ", step " << step;
        }
        known += model.Known;
    }
    EXPECT_GT(known, 10'000) << "the index was hardly ever used";
}

TEST(EntryIndex, AShortCollectionIsWalked) {
    const SECSDictionaryPtr table = New<SECSDictionary>();
    for (std::int32_t count = 1; count < 64; ++count) {
        table->AddNewTrans(count)->Name("x");
        for (int lookup = 0; lookup < 20; ++lookup) {
            EXPECT_FALSE(count < 32 && Access::FirstWithName(*table, "x").has_value());
            EXPECT_FALSE(Access::OneWithSystemBytes(*table, 0).has_value());
        }
    }
}

TEST(EntryIndex, IsEmptiedWithItsCollection) {
    const SECSDictionaryPtr table = New<SECSDictionary>();
    for (std::int32_t count = 1; count <= 40; ++count)
        table->AddNewTrans(count)->Name("x" + std::to_string(count));
    for (int lookup = 0; lookup < 20; ++lookup)
        static_cast<void>(Access::FirstWithName(*table, "X7"));
    ASSERT_TRUE(Access::FirstWithName(*table, "X7").has_value());
    EXPECT_EQ(*Access::FirstWithName(*table, "X7"), table->SECSTrans(7));
    Access::TearDown(*table);
    EXPECT_FALSE(Access::FirstWithName(*table, "X7").has_value());
}

}  // namespace
}  // namespace hexmire
