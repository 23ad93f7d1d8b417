#include "SmlParsing.h"

// One row a form in which people and other programs write SML, and its neighbours that are none.

namespace hexmire {
namespace {

using namespace fakes;

struct Row {
    const char* Item;
    const char* Outcome;  ///< the body's bytes, or the place and reason of the error
};

template <std::size_t Count>
void ExpectOutcomes(const Row (&rows)[Count]) {
    for (const Row& row : rows)
        EXPECT_EQ(SmlHex(row.Item), row.Outcome) << row.Item;
}

TEST(SmlDialects, CountsBehindAComma) {
    constexpr const char* kNoCount = "expected a count such as 2 or 1..3, found ";
    ExpectOutcomes({
        {"<L,2 <U1 1> <U1 2>>", "01 02 A5 01 01 A5 01 02"},
        {"<L, 2 <U1 1> <U1 2>>", "01 02 A5 01 01 A5 01 02"},
        {"<L ,2 <U1 1> <U1 2>>", "01 02 A5 01 01 A5 01 02"},
        {"<l,0>", "01 00"},
        {"<L,1<L,0>>", "01 01 01 00"},
        {"<A,3 'abc'>", "41 03 61 62 63"},
        {"<A,3'abc'>", "41 03 61 62 63"},
        {"<A,0>", "41 00"},
        {"<A,1..3 \"ab\">", "41 02 61 62"},
        {"<U4,2 1 2>", "B1 08 00 00 00 01 00 00 00 02"},
        {"<BOOLEAN,2 T F>", "25 02 FF 00"},
        {"<B,1 0x0A>", "21 01 0A"},
        {"<L,2 <U1 1>>", "1:8 expected 2 items, found 1"},
        {"<A,2 'abc'>", "1:8 expected 2 characters, found 3"},
        {"<U1,1 1 2>", "1:9 expected 1 elements, found 2"},
        {"<L,>", "1:9 expected a count such as 2 or 1..3, found \">\""},
        {"<L,x>", "1:9 expected a count such as 2 or 1..3, found \"x\""},
        {"<L,-1>", "1:9 expected a count such as 2 or 1..3, found \"-1\""},
        {"<L,2,3>", "1:9 expected a count such as 2 or 1..3, found \"2,3\""},
        {"<A,3,'abc'>", "1:9 expected a count such as 2 or 1..3, found \"3,\""},
        {"<L,2]>", "1:10 expected \"<\" or \">\", found \"]\""},
        {"<X,2>", "1:7 expected a format name, found \"X,2\""},
        {"<V,2 ab>", "1:8 expected a blank or \">\", found \",2\""},
        {"<U1 1,2>", "1:10 expected a whole number from 0 to 255, found \"1,2\""},
    });
    EXPECT_TRUE(SmlErrorOf("S1F1 <L,").ends_with(std::string(kNoCount) + "the end of the text"));
    EXPECT_TRUE(ParseSml("S1F1 <L,").IsIncomplete);
}

TEST(SmlDialects, BinaryDigits) {
    ExpectOutcomes({
        {"<B 0b1010>", "21 01 0A"},
        {"<B 0B11111111 0b0>", "21 02 FF 00"},
        {"<B 0b000000001>", "21 01 01"},
        {"<U2 0b1000000000>", "A9 02 02 00"},
        {"<I1 -0b10000000>", "65 01 80"},
        {"<B 0b100000000>", "1:9 expected a byte from 0x00 to 0xFF, found \"0b100000000\""},
        {"<B 0b>", "1:9 expected a byte from 0x00 to 0xFF, found \"0b\""},
        {"<B 0b12>", "1:9 expected a byte from 0x00 to 0xFF, found \"0b12\""},
        {"<B 0b+1>", "1:9 expected a byte from 0x00 to 0xFF, found \"0b+1\""},
        {"<B b1>", "1:9 expected a byte from 0x00 to 0xFF, found \"b1\""},
        {"<I1 0b11111111>", "1:10 expected a whole number from -128 to 127, found \"0b11111111\""},
        {"<F4 0b1>", "1:10 expected a number within the range of F4, found \"0b1\""},
        {"<A 0b1000001>",
         "1:9 expected a quoted text or a byte from 0x00 to 0xFF, found \"0b1000001\""},
    });
}

TEST(SmlDialects, NumbersThatAreNone) {
    ExpectOutcomes({
        {"<F4 NaN(0x7FC00000)>", "91 04 7F C0 00 00"},
        {"<F4 NaN(0x7F800001)>", "91 04 7F 80 00 01"},
        {"<F4 nan(0Xffc00000)>", "91 04 FF C0 00 00"},
        {"<F8 NaN(0x7FF0000000000001)>", "81 08 7F F0 00 00 00 00 00 01"},
        {"<F8 NaN(0xFFF8000000000000) 1>", "81 10 FF F8 00 00 00 00 00 00 3F F0 00 00 00 00 00 00"},
        {"<F4 -0>", "91 04 80 00 00 00"},
        {"<F8 -0.0>", "81 08 80 00 00 00 00 00 00 00"},
        {"<F4 NaN(0x7F800000)>",
         "1:10 expected a number within the range of F4, found \"NaN(0x7F800000)\""},
        {"<F4 NaN(0x3F800000)>",
         "1:10 expected a number within the range of F4, found \"NaN(0x3F800000)\""},
        {"<F4 NaN(0x7FF8000000000000)>",
         "1:10 expected a number within the range of F4, found \"NaN(0x7FF8000000000000)\""},
        {"<F8 NaN(0x)>", "1:10 expected a number within the range of F8, found \"NaN(0x)\""},
        {"<F8 NaN()>", "1:10 expected a number within the range of F8, found \"NaN()\""},
        {"<F8 NaN(0x7FF8000000000000>",
         "1:10 expected a number within the range of F8, found \"NaN(0x7FF8000000000000\""},
        {"<I4 NaN(0x7FC00000)>",
         "1:10 expected a whole number from -2147483648 to 2147483647, found "
         "\"NaN(0x7FC00000)\""},
    });
}

TEST(SmlDialects, OneMessageInTheMannerOfEach) {
    constexpr const char* kExpected =
        "01 03 41 04 69 74 27 73 25 02 FF 00 01 02 21 02 0A FF A9 02 01 00";
    for (const char* item : {
             "<L [3] <A [4] \"it's\"> <BOOLEAN T F> <L [2] <B 0x0A 0xFF> <U2 256>>>",
             "<L,3 <A,4 \"it's\"> <BOOL,2 t f> <L,2 <B,2 10 255> <U2,1 0x100>>>",
             "\n< L\n  < A 'it's' > // a name\n  <Boolean TRUE FALSE> /* flags */\n"
             "* the rest\n  <L<B 0b1010 0b11111111><U2 2.56E2>>\n>\n",
             "<l <a 'it' 0x27 's'><bool true false><l<b 0xa 0Xff><u2 +256>>>",
         }) {
        EXPECT_EQ(SmlHex(item), kExpected) << item;
    }
}

}  // namespace
}  // namespace hexmire
