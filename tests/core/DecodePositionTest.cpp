#include <hexmire/core/detail/Decoder.h>

#include "../fakes/Golden.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

// One item at a time: where it goes in its parent, and where its last byte is.

namespace hexmire {
namespace {

using namespace fakes;
using detail::lParseSECSMessage;

using Texts = std::vector<std::string>;

SECSItemPtr NewList() {
    SECSItemPtr list = New<SECSItem>();
    list->Format(FormatList);
    return list;
}

struct Row {
    const char* Hex;
    std::int64_t Last;  ///< index of the item's last byte
};

TEST(DecodePosition, IsTheLastByteOfTheItem) {
    RecordingSite site;
    const std::vector<Row> rows = {
        {"40 FF", 0},
        {"00 FF", 0},
        {"41 00 FF", 1},
        {"43 00 00 00 FF", 3},
        {"41 01 58 FF", 2},
        {"25 03 00 01 02 FF", 4},
        {"21 02 00 01 FF", 3},
        {"61 08 00 00 00 00 00 00 00 00 FF", 9},
        {"71 05 00 00 00 01 FF FF", 5},
        {"71 06 00 00 00 01 00 00 00 02 FF", 9},
        {"71 02 FF FF", 1},
        {"01 00 FF", 1},
        {"01 02 A5 01 07 41 00 FF", 6},
        {"01 01 01 01 01 00 FF", 5},
        {"FD 02 41 42 FF", 3},
    };
    for (const Row& row : rows) {
        std::int64_t position = -1;
        EXPECT_TRUE(lParseSECSMessage(Bytes(row.Hex), position, NewList(), 1));
        EXPECT_EQ(position, row.Last) << row.Hex;
    }
    EXPECT_EQ(site.Errors, Texts{});
}

TEST(DecodePosition, IsTheLastLengthByteOfAnUnknownItem) {
    const std::vector<Row> rows = {{"0C 41 42", 0}, {"0D 02 41 42", 1}, {"0F 00 00 02 41 42", 3}};
    for (const Row& row : rows) {
        std::int64_t position = -1;
        EXPECT_FALSE(lParseSECSMessage(Bytes(row.Hex), position, NewList(), 1));
        EXPECT_EQ(position, row.Last) << row.Hex;
    }
}

TEST(DecodePosition, IsBehindTheEndAfterACut) {
    for (const char* hex : {"41", "43 00", "41 05 41 42", "71 08 00 00 00 01", "B3 FF FF FF 00"}) {
        const std::vector<std::uint8_t> bytes = Bytes(hex);
        std::int64_t position = -1;
        EXPECT_TRUE(lParseSECSMessage(bytes, position, NewList(), 1));
        EXPECT_GE(position, static_cast<std::int64_t>(bytes.size())) << hex;
    }
}

TEST(DecodePosition, ItemsAreReadOneBehindTheOther) {
    RecordingSite site;
    const std::vector<std::uint8_t> bytes = Bytes("A5 01 07 01 01 41 01 58 25 00");
    const SECSItemPtr list = NewList();
    std::int64_t position = -1;
    for (std::int32_t index = 1; index <= 3; ++index) {
        EXPECT_TRUE(lParseSECSMessage(bytes, position, list, index));
    }
    EXPECT_EQ(position, 9);
    EXPECT_EQ(Describe(list), "<L <U1 7> <L <A \"X\"(1)>> <BOOL>>");
    EXPECT_EQ(site.Errors, Texts{});
    EXPECT_TRUE(lParseSECSMessage(bytes, position, list, 4));
    EXPECT_EQ(list->ItemCount(), 3);
    EXPECT_EQ(site.Errors, Texts{"9 (SECSMessage-lParseSECSMessage) Subscript out of range"});
}

TEST(DecodePosition, TheItemTakesTheIndexAndMovesTheOthersBack) {
    RecordingSite site;
    const SECSItemPtr list = NewList();
    AddItem(list, FormatAscii, "a");
    AddItem(list, FormatAscii, "b");
    std::int64_t position = 2;
    EXPECT_TRUE(lParseSECSMessage(Bytes("FF FF FF A5 01 07"), position, list, 2));
    EXPECT_EQ(Describe(list), "<L <A \"a\"(1)> <U1 7> <A \"b\"(1)>>");
    EXPECT_EQ(list->Item(3)->ItemIndex(), 3);
    EXPECT_EQ(site.Errors, Texts{});
}

TEST(DecodePosition, AnIndexOutsideTheParentLeavesTheValueUnread) {
    RecordingSite site;
    const SECSItemPtr list = NewList();
    std::int64_t position = -1;
    EXPECT_TRUE(lParseSECSMessage(Bytes("0D 01 07"), position, list, 2));
    EXPECT_EQ(site.Errors,
              (Texts{"2003 (SECSItem-AddNew) You cannot add new item out of limit between 1 to "
                     "ItemCount+1.",
                     "91 (SECSMessage-lParseSECSMessage) Object variable or With block variable "
                     "not set"}));
    EXPECT_EQ(list->ItemCount(), 0);
    EXPECT_EQ(position, 1);
}

}  // namespace
}  // namespace hexmire
