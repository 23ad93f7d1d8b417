#include <hexmire/core/detail/SECSMessageAccess.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/Messages.h"
#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <vector>

// Two controls: whatever is met while a message is decoded or rendered goes to its maker, also the
// faults of the free routines on the way.

namespace hexmire {
namespace {

using namespace fakes;
using detail::SECSMessageAccess;
using Reports = ErrorRecorder::Reports;

struct CodecOwner : testing::Test {
    ErrorRecorder Maker;
    ErrorRecorder Last;  ///< created later, so that free routines would report to it
    SECSMessagePtr Subject = Maker.Make<SECSMessage>();
};

TEST_F(CodecOwner, HearsOfABodyThatIsCut) {
    EXPECT_TRUE(SECSMessageAccess::Parse(*Subject, Bytes("01 03 41 05 41")));
    EXPECT_EQ(Maker.Errors,
              Reports(3, {9, "(SECSMessage-lParseSECSMessage) Subscript out of range", 0}));
    EXPECT_TRUE(Last.Errors.empty());
}

TEST_F(CodecOwner, HearsOfAnUnknownCode) {
    EXPECT_FALSE(SECSMessageAccess::Parse(*Subject, Bytes("01 01 0D 00")));
    EXPECT_EQ(Maker.Errors,
              (Reports{{1001,
                        "(SECSItem-Let Format) You cannot change the Format of the Root item. The "
                        "Root item Format is always 0 (list).",
                        0}}));
    EXPECT_TRUE(Last.Errors.empty());
}

TEST_F(CodecOwner, HearsOfABodyWithoutBytes) {
    EXPECT_TRUE(SECSMessageAccess::Parse(*Subject, {}));
    EXPECT_EQ(Maker.Errors,
              (Reports{{5, "(ModGeneral-HexDumpArray) Invalid procedure call or argument", 0},
                       {9, "(SECSMessage-lParseSECSMessage) Subscript out of range", 0}}));
    EXPECT_TRUE(Last.Errors.empty());
}

TEST_F(CodecOwner, HearsOfItemsThatCannotBeShown) {
    const SECSItemPtr list = AddItem(Subject->Root(), FormatList);
    AddItem(list, FormatBoolean, "abc");
    AddItem(list, FormatBinary, std::vector<std::uint8_t>{});
    AddItem(list, FormatVar, std::vector<std::int32_t>{});
    EXPECT_EQ(RenderSml(*Subject, false), "S0F1\r\n< L \r\n  < B  >\r\n  < V [  ] >\r\n >\r\n.");
    EXPECT_EQ(Maker.Errors,
              (Reports{{13, "(SECSMessage-ItemToSML) Type mismatch", 0},
                       {5, "(ModGeneral-HexDumpArray2) Invalid procedure call or argument", 0},
                       {9, "(ModGeneral-IsByteArray) Subscript out of range", 0}}));
    EXPECT_TRUE(Last.Errors.empty());
}

TEST_F(CodecOwner, ThatIsGoneHearsNothingAndNobodyElseDoes) {
    Maker.End();
    EXPECT_FALSE(SECSMessageAccess::Parse(*Subject, Bytes("01 03 41 00 0D 00")));
    AddItem(Body(Subject), FormatBoolean, "abc");
    EXPECT_EQ(RenderSml(*Subject, false), "S0F1\r\n< L \r\n  < A >\r\n  < V >\r\n >\r\n.");
    EXPECT_TRUE(Maker.Errors.empty());
    EXPECT_TRUE(Last.Errors.empty());
}

}  // namespace
}  // namespace hexmire
