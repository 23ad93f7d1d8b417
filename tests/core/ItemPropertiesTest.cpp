#include <hexmire/core/SECSItem.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include "ItemsOfFormat.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using detail::SECSItemAccess;
using fakes::ErrorRecorder;
using fakes::Show;
using testing_items::kFormats;
using Limits = std::numeric_limits<std::int32_t>;
using Reports = ErrorRecorder::Reports;

const Reports kFormatRefused{
    {1001,
     "(SECSItem-Let Format) You cannot change the Format of the Root item. The Root item Format is "
     "always 0 (list).",
     0}};
const Reports kNLBRefused{
    {1003, "(SECSItem-Let NLB) Illegal NLB value. NLB must be 0,1,2,or 3.", 0}};

bool IsLegal(std::int32_t format) {
    return std::find(std::begin(kFormats), std::end(kFormats), format) != std::end(kFormats);
}

class ItemProperties : public testing::Test {
protected:
    ItemProperties() {
        List->Format(FormatList);
        Child = List->AddNew(1);
    }
    ErrorRecorder Site;
    SECSItemPtr List = New<SECSItem>();
    SECSItemPtr Child;
};

TEST_F(ItemProperties, NewItemStartsFromItsDefaults) {
    const SECSItemPtr item = New<SECSItem>();
    EXPECT_EQ(item->Format(), 63);
    EXPECT_EQ(item->ItemCount(), 0);
    EXPECT_EQ(item->ItemIndex(), 1);
    EXPECT_EQ(item->Length(), 0);
    EXPECT_EQ(item->NLB(), 0);
    EXPECT_EQ(item->Name(), "");
    EXPECT_EQ(item->Description(), "");
    EXPECT_EQ(item->Parent(), nullptr);
    EXPECT_TRUE(item->Raw().IsEmpty());
    EXPECT_TRUE(item->Value().IsEmpty());
    EXPECT_TRUE(item->begin() == item->end());
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemProperties, ChildTakesEveryLegalFormat) {
    for (const enmItemFormat format : kFormats) {
        Child->Format(format);
        EXPECT_EQ(Child->Format(), format);
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemProperties, ChildRefusesEveryIllegalFormatAndKeepsItsOwn) {
    Child->Format(FormatAscii);
    for (std::int32_t format = -300; format <= 600; ++format) {
        if (IsLegal(format)) continue;
        Child->Format(format);
        ASSERT_EQ(Child->Format(), FormatAscii) << format;
        ASSERT_EQ(Site.Take(), kFormatRefused) << format;
    }
}

TEST_F(ItemProperties, FormatIsNotCutToFewerBits) {
    Child->Format(FormatAscii);
    for (const std::int32_t format : {256,
                                      256 + 8,
                                      65536,
                                      65536 + 16,
                                      64,
                                      64 + 63,
                                      -1,
                                      -256,
                                      Limits::min(),
                                      Limits::max(),
                                      0x01000000}) {
        Child->Format(format);
        EXPECT_EQ(Child->Format(), FormatAscii) << format;
        EXPECT_EQ(Site.Take(), kFormatRefused) << format;
    }
}

TEST_F(ItemProperties, RootTakesFormatListOnly) {
    List->Format(FormatList);
    EXPECT_TRUE(Site.Errors.empty());
    for (std::int32_t format = -70; format <= 70; ++format) {
        if (format == 0) continue;
        List->Format(format);
        ASSERT_EQ(List->Format(), FormatList) << format;
        ASSERT_EQ(Site.Take(), kFormatRefused) << format;
    }
}

TEST_F(ItemProperties, FreshItemWithoutParentCanOnlyBecomeAList) {
    const SECSItemPtr item = New<SECSItem>();
    item->Format(FormatVar);
    EXPECT_EQ(Site.Take(), kFormatRefused);
    EXPECT_EQ(item->Format(), FormatVar);
    item->Format(FormatAscii);
    EXPECT_EQ(Site.Take(), kFormatRefused);
    item->Format(FormatList);
    EXPECT_EQ(item->Format(), FormatList);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemProperties, ChangeOfFormatTouchesNeitherValueNorChildren) {
    Child->Format(FormatList);
    const SECSItemPtr grandchild = Child->AddNew(1);
    Child->Value("kept");
    Child->Format(FormatU4);
    EXPECT_EQ(Show(Child->Value()), "String 'kept'");
    EXPECT_EQ(Child->ItemCount(), 0);
    EXPECT_EQ(*Child->begin(), grandchild);
    Child->Format(FormatList);
    EXPECT_EQ(Child->ItemCount(), 1);
    EXPECT_EQ(Child->Item(1), grandchild);
}

TEST_F(ItemProperties, NLBTakesZeroToThree) {
    for (const std::int32_t value : {0, 1, 2, 3}) {
        Child->NLB(value);
        EXPECT_EQ(Child->NLB(), value);
        List->NLB(value);
        EXPECT_EQ(List->NLB(), value);
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemProperties, NLBRefusesAnythingElseAndKeepsItsOwn) {
    Child->NLB(2);
    for (const std::int32_t value :
         {-1, 4, 5, 255, 256, 257, 258, 65536, Limits::min(), Limits::max()}) {
        Child->NLB(value);
        EXPECT_EQ(Child->NLB(), 2) << value;
        EXPECT_EQ(Site.Take(), kNLBRefused) << value;
    }
}

TEST_F(ItemProperties, TextsAreStoredAsGiven) {
    for (const std::string& text : {std::string(" temp "),
                                    std::string(),
                                    std::string("a\0b", 3),
                                    std::string("\xE9\xFF"),
                                    std::string(5000, 'x')}) {
        Child->Name(text);
        Child->Description(text + "d");
        EXPECT_EQ(Child->Name(), text);
        EXPECT_EQ(Child->Description(), text + "d");
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemProperties, NameAndDescriptionAreApart) {
    Child->Name("n");
    EXPECT_EQ(Child->Description(), "");
    Child->Description("d");
    EXPECT_EQ(Child->Name(), "n");
    Child->Name(Child->Name() + Child->Description());
    EXPECT_EQ(Child->Name(), "nd");
    Child->Description("");
    EXPECT_EQ(Child->Description(), "");
    EXPECT_EQ(Child->Name(), "nd");
}

TEST_F(ItemProperties, ValueIsStoredWhateverTheFormat) {
    const auto object = std::make_shared<int>(5);
    for (const Variant& value : {Variant(1),
                                 Variant("text"),
                                 Variant(2.5),
                                 Variant(true),
                                 Variant::Null(),
                                 Variant(),
                                 Variant(std::uint8_t{3}),
                                 Variant(std::vector<double>{1, 2}),
                                 Variant(object),
                                 Variant(std::vector<Variant>{1, "a"}),
                                 Variant::Array(std::vector<std::int32_t>{1}, 1)}) {
        for (const enmItemFormat format : {FormatList, FormatAscii, FormatU1, FormatVar}) {
            Child->Format(format);
            Child->Value(value);
            EXPECT_EQ(Child->Value(), value);
        }
        List->Value(value);
        EXPECT_EQ(List->Value(), value);
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemProperties, ValueIsACopyBothWays) {
    Variant value(std::vector<std::int32_t>{1, 2});
    Child->Value(value);
    value = 5;
    EXPECT_EQ(Show(Child->Value()), "Long[1, 2]");
    Variant read = Child->Value();
    read = "changed";
    EXPECT_EQ(Show(Child->Value()), "Long[1, 2]");
}

TEST_F(ItemProperties, ValueReleasesTheObjectThatItHeld) {
    auto object = std::make_shared<int>(5);
    const std::weak_ptr<int> watch = object;
    Child->Value(std::move(object));
    EXPECT_FALSE(watch.expired());
    Child->Value(1);
    EXPECT_TRUE(watch.expired());
}

TEST_F(ItemProperties, ValueMayBeSetToItself) {
    Child->Value(std::string(100, 'v'));
    Child->Value(Child->Value());
    EXPECT_EQ(Child->Value().Text(), std::string(100, 'v'));
}

TEST_F(ItemProperties, RawIsACopyOfWhatTheLibraryStored) {
    SECSItemAccess::KeepRaw(*Child, std::vector<std::uint8_t>{1, 2});
    Variant raw = Child->Raw();
    EXPECT_EQ(Show(raw), "Byte[1, 2]");
    raw = Variant();
    EXPECT_EQ(Show(Child->Raw()), "Byte[1, 2]");
    EXPECT_TRUE(Child->Value().IsEmpty());
}

TEST_F(ItemProperties, LengthOfAListIsItsCountOtherwiseTheStoredOne) {
    SECSItemAccess::Length(*Child, 300);
    EXPECT_EQ(Child->Length(), 300);
    Child->Format(FormatAscii);
    EXPECT_EQ(Child->Length(), 300);
    Child->Format(FormatList);
    EXPECT_EQ(Child->Length(), 0);
    static_cast<void>(Child->AddNew(1));
    static_cast<void>(Child->AddNew(1));
    EXPECT_EQ(Child->Length(), 2);
    Child->Format(FormatBinary);
    EXPECT_EQ(Child->Length(), 300);
}

TEST_F(ItemProperties, ItemIndexIsTheStoredOneOnlyBelowAParent) {
    SECSItemAccess::ItemIndex(*Child, 77);
    EXPECT_EQ(Child->ItemIndex(), 77);
    SECSItemAccess::ItemIndex(*List, 77);
    EXPECT_EQ(List->ItemIndex(), 1);
}

TEST_F(ItemProperties, ParentIsTheListItself) {
    EXPECT_EQ(Child->Parent(), List);
    EXPECT_EQ(List->Parent(), nullptr);
}

TEST_F(ItemProperties, ChildThatOutlivesItsParentHasNone) {
    List.reset();
    EXPECT_EQ(Child->Parent(), nullptr);
    EXPECT_EQ(Child->ItemIndex(), 1);
    Child->Format(FormatAscii);
    EXPECT_EQ(Site.Take(), kFormatRefused);
}

}  // namespace
}  // namespace hexmire
