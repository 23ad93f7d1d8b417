#include <hexmire/core/ItemFormat.h>

#include "../hosting/TempFolder.h"
#include "DictionaryCheck.h"
#include "DictionaryValue.h"
#include "Failure.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire::program {
namespace {

using fakes::TempFolder;

using Lines = std::vector<std::string>;

/// "line: text" of each finding.
Lines Findings(const std::string& xml) {
    const TempFolder folder;
    Lines lines;
    for (const auto& [line, text] : CheckDictionary(folder.Write("d.xml", xml)).Findings)
        lines.push_back(std::to_string(line) + ": " + text);
    return lines;
}

std::string Message(const std::string& element,
                    const std::string& stream,
                    const std::string& function,
                    const std::string& body = "") {
    return '<' + element + " Stream=\"" + stream + "\" Func=\"" + function +
           "\" Name=\"\" Desc=\"\"><Root>" + body + "</Root></" + element + ">\n";
}

/// The primary in line 2 of the transaction, the secondary in line 3.
std::string Trans(const std::string& name,
                  const std::string& primary,
                  const std::string& secondary) {
    return "<Trans Name=\"" + name + "\" Desc=\"\">\n" + primary + secondary + "</Trans>\n";
}

std::string Pair(const std::string& name, int stream, int function) {
    return Trans(name,
                 Message("Primary", std::to_string(stream), std::to_string(function)),
                 Message("Secondary", std::to_string(stream), std::to_string(function + 1)));
}

std::string Document(const std::string& transactions) { return "<D>\n" + transactions + "</D>\n"; }

/// Findings of a document with this item.
Lines ItemFindings(const std::string& item) {
    return Findings(
        Document(Trans("T", Message("Primary", "1", "3", item), Message("Secondary", "1", "4"))));
}

std::string Item(const std::string& format,
                 const std::string& isArray,
                 const std::string& value,
                 const std::string& children = "") {
    return "<Item Name=\"\" Desc=\"\" Format=\"" + format + "\" IsArray=\"" + isArray +
           "\" Value=\"" + value + "\">" + children + "</Item>";
}

TEST(DictionaryCheck, AGoodFileHasNoFindings) {
    EXPECT_EQ(Findings(Document(Pair("A", 1, 1) + Pair("B", 1, 3) + Pair("C", 127, 253))), Lines());
    EXPECT_EQ(ItemFindings(Item("L", "NO", "", Item("U4", "yes", "1 2 3") + Item("A", "No", "x"))),
              Lines());
}

TEST(DictionaryCheck, TheShippedDictionaryHasNoFindings) {
    const auto checked = CheckDictionary(HEXMIRE_SOURCE_DIR "/dictionaries/Default.xml");
    EXPECT_EQ(checked.Findings.size(), 0U);
    EXPECT_EQ(checked.Transactions, 268U);
}

TEST(DictionaryCheck, AFileThatIsNotWellFormedHasOneFinding) {
    EXPECT_EQ(Findings(""), (Lines{"1: the file is empty"}));
    EXPECT_EQ(Findings("<D>\n<Trans>\n</D>").size(), 1U);
    EXPECT_EQ(Findings("<D>\n<Trans>\n</D>")[0].substr(0, 3), "3: ");
    EXPECT_EQ(Findings("no xml"), (Lines{"1: Start tag expected, '<' not found"}));
    EXPECT_EQ(Findings("<D>\n\n<T a=\"1\" a=\"2\"/></D>"), (Lines{"3: Attribute a redefined"}));
}

TEST(DictionaryCheck, AFileThatCannotBeReadIsAFailure) {
    EXPECT_THROW(static_cast<void>(CheckDictionary("/nowhere.xml")), Failure);
    EXPECT_THROW(static_cast<void>(CheckDictionary("/")), Failure);
}

TEST(DictionaryCheck, ADocumentThatIsNotValidAfterItsOwnDtdIsFound) {
    const Lines lines = Findings("<!DOCTYPE D [<!ELEMENT D (X)>]>\n" + Document(Pair("A", 1, 1)));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].substr(0, 24), "2: loading reports 2001 ");
}

TEST(DictionaryCheck, AFileWithoutTransactionsIsFound) {
    EXPECT_EQ(Findings("<D/>"), (Lines{"1: no transactions in the file"}));
    EXPECT_EQ(
        Findings("<D>\n<E>\n" + Pair("A", 1, 1) + "</E></D>"),
        (Lines{"2: element \"E\" is not loaded; \"Trans\" is", "1: no transactions in the file"}));
}

TEST(DictionaryCheck, MissingElementsAndAttributesAreFound) {
    EXPECT_EQ(Findings("<D>\n<Trans/>\n</D>"),
              (Lines{"2: Trans has no attribute \"Name\"",
                     "2: Trans has no attribute \"Desc\"",
                     "2: Trans has no Primary",
                     "2: Trans has no Secondary"}));
    EXPECT_EQ(Findings("<D><Trans Name=\"A\" Desc=\"\">\n<Primary/>\n<Secondary Stream=\"1\" "
                       "Func=\"2\" Name=\"\" Desc=\"\"><root/></Secondary></Trans></D>"),
              (Lines{"2: Primary has no attribute \"Stream\"",
                     "2: Primary has no attribute \"Func\"",
                     "2: Primary has no attribute \"Name\"",
                     "2: Primary has no attribute \"Desc\"",
                     "2: Primary has no Root",
                     "3: element \"root\" in Secondary is not loaded",
                     "3: Secondary has no Root"}));
    EXPECT_EQ(ItemFindings("\n<Item/>"),
              (Lines{"4: Item has no attribute \"Name\"",
                     "4: Item has no attribute \"Desc\"",
                     "4: Item has no attribute \"Format\"",
                     "4: Item has no attribute \"IsArray\"",
                     "4: Item has no attribute \"Value\""}));
}

TEST(DictionaryCheck, WhatIsThereTwiceIsFound) {
    const std::string primary =
        Message("Primary", "1", "3", Item("L", "NO", "") + '\n' + Item("L", "NO", ""));
    EXPECT_EQ(Findings(Document(Trans(
                  "A", primary, Message("Secondary", "1", "4") + Message("Secondary", "1", "4")))),
              (Lines{"4: only the first item of a Root is sent",
                     "6: a further Secondary is not loaded"}));
}

TEST(DictionaryCheck, TheFirstOfTwoIsTheOneThatCounts) {
    EXPECT_EQ(Findings(Document(Trans("A",
                                      Message("Primary", "1", "3") + Message("Primary", "1", "2"),
                                      Message("Secondary", "1", "4")))),
              (Lines{"4: a further Primary is not loaded"}));
}

TEST(DictionaryCheck, FunctionsThatDoNotPairAreFound) {
    const auto with = [](const char* primary, const char* stream, const char* secondary) {
        return Findings(Document(
            Trans("A", Message("Primary", "1", primary), Message("Secondary", stream, secondary))));
    };
    EXPECT_EQ(with("2", "1", "4"), (Lines{"3: primary S1F2: functions of primaries are odd"}));
    EXPECT_EQ(with("3", "1", "3"), (Lines{"4: secondary S1F3: functions of secondaries are even"}));
    EXPECT_EQ(with("3", "1", "6"), (Lines{"4: secondary S1F6 is no reply to S1F3, S1F4 is"}));
    EXPECT_EQ(with("3", "1", "0"), (Lines{"4: secondary S1F0 is no reply to S1F3, S1F4 is"}));
    EXPECT_EQ(with("3", "2", "4"), (Lines{"4: secondary S2F4 is no reply to S1F3, S1F4 is"}));
    EXPECT_EQ(with("x", "128", "256"),
              (Lines{"3: Func \"x\" is no number from 0 to 255",
                     "4: Stream \"128\" is no number from 0 to 127",
                     "4: Func \"256\" is no number from 0 to 255"}));
    EXPECT_EQ(with(" 3", "1", "4"), (Lines{"3: Func \" 3\" is no number from 0 to 255"}));
    EXPECT_EQ(with("-1", "1", "1.0"),
              (Lines{"3: Func \"-1\" is no number from 0 to 255",
                     "4: Func \"1.0\" is no number from 0 to 255"}));
}

TEST(DictionaryCheck, WhatCannotBeReachedIsFound) {
    EXPECT_EQ(Findings(Document(Pair("A", 1, 1) + Pair("A", 1, 3) + Pair("", 1, 5))),
              (Lines{"6: the name \"A\" is taken in line 2, whose transaction is found by it",
                     "10: a transaction without a name cannot be asked for"}));
    EXPECT_EQ(Findings(Document(Pair("A", 1, 1) + Pair("a", 1, 1))),
              (Lines{"7: no received S1F1 comes here: the one in line 3 takes them all"}));
}

TEST(DictionaryCheck, ItemsThatLoadOtherwiseThanTheyLookAreFound) {
    EXPECT_EQ(ItemFindings(Item("U3", "TRUE", "x")),
              (Lines{"3: format \"U3\" is none of L B BOOL A I1 I2 I4 I8 U1 U2 U4 U8 F4 F8 V and "
                     "means V",
                     "3: IsArray \"TRUE\" means NO; YES or NO is expected"}));
    EXPECT_EQ(ItemFindings(Item("U1", "NO", "1", Item("U1", "NO", "256"))),
              (Lines{"3: items below one of format U1 are not loaded; L holds items",
                     "3: \"256\" is beyond the range of U1"}));
    EXPECT_EQ(ItemFindings("<item/>"), (Lines{"3: element \"item\" in Root is not loaded"}));
    EXPECT_EQ(ItemFindings(Item("v", "NO", "x")), Lines());
}

TEST(DictionaryValue, ValuesAreJudgedAsTheLoaderReadsThem) {
    const struct {
        std::int32_t Format;
        bool IsArray;
        const char* Value;
        const char* Problem;
    } kCases[] = {
        {FormatU1, false, "", ""},
        {FormatU1, true, "", ""},
        {FormatU1, false, "255", ""},
        {FormatU1, false, " 7 ", ""},
        {FormatU1, false, "+7", ""},
        {FormatU1, false, "2.0", ""},
        {FormatU1, false, "-1", "\"-1\" is beyond the range of U1"},
        {FormatU1, false, "1.5", "\"1.5\" is no whole number"},
        {FormatU1, false, "0x10", "\"0x10\" is no number"},
        {FormatU1, false, "inf", "\"inf\" is no number"},
        {FormatU1, false, "1 2", "\"1 2\" is no number"},
        {FormatU1, true, "1 2", ""},
        {FormatU1, true, "1 2 ", ""},
        {FormatU1, true, "1  2", "a blank where an element should begin ends the array"},
        {FormatU1, true, " 1", "a blank where an element should begin ends the array"},
        {FormatU1, true, "1 12x", "\"12x\" is no number"},
        {FormatI1, false, "-128", ""},
        {FormatI1, false, "-129", "\"-129\" is beyond the range of I1"},
        {FormatI2, false, "32768", "\"32768\" is beyond the range of I2"},
        {FormatI4, false, "-2147483648", ""},
        {FormatI4, false, "2147483648", "\"2147483648\" is beyond the range of I4"},
        {FormatU2, false, "65536", "\"65536\" is beyond the range of U2"},
        {FormatU4, false, "4294967295", ""},
        {FormatU4, false, "4294967296", "\"4294967296\" is beyond the range of U4"},
        {FormatU8, false, "9007199254740992", ""},
        {FormatU8,
         false,
         "9007199254740993",
         "\"9007199254740993\" has more digits than the loader keeps (53 bits)"},
        {FormatI8,
         false,
         "-9007199254740993",
         "\"-9007199254740993\" has more digits than the loader keeps (53 bits)"},
        {FormatI8, false, "-9223372036854775808", ""},
        {FormatI8,
         false,
         "9223372036854775808",
         "\"9223372036854775808\" is beyond the range of I8"},
        {FormatU8,
         false,
         "18446744073709551616",
         "\"18446744073709551616\" is beyond the range of U8"},
        {FormatF4, false, "1e38", ""},
        {FormatF4, false, "1e39", "\"1e39\" is beyond the range of F4"},
        {FormatF8, false, "1e309", "\"1e309\" is no number"},
        {FormatF8, false, "nan", "\"nan\" is no number"},
        {FormatBinary, false, "1F", ""},
        {FormatBinary, false, "f", ""},
        {FormatBinary, false, "0x1F", "\"0x1F\" is no byte of two hexadecimal digits"},
        {FormatBinary, false, "100", "\"100\" is no byte of two hexadecimal digits"},
        {FormatBinary, false, "00 7F", "\"00 7F\" is no byte of two hexadecimal digits"},
        {FormatBinary, true, "00 7F FF", ""},
        {FormatBinary, true, "00 7G", "\"7G\" is no byte of two hexadecimal digits"},
        {FormatBoolean, false, "t", ""},
        {FormatBoolean, true, "T F true 0 1", ""},
        {FormatBoolean, false, "yes", "\"yes\" is none of T, F, True, False and no number"},
        {FormatAscii, false, "it's", ""},
        {FormatAscii, false, "caf\xC3\xA9", ""},
        {FormatAscii, false, " x", "the blanks around \" x\" are dropped"},
        {FormatAscii,
         false,
         "\xC4\x80",
         "\"\xC4\x80\" has characters that become \"?\" (above U+00FF)"},
        {FormatAscii,
         false,
         "\xE2\x82\xAC",
         "\"\xE2\x82\xAC\" has characters that become \"?\" (above U+00FF)"},
        {FormatVar, false, "x", ""},
        {FormatVar, true, "1 2", "an array of any format has no value; \"1 2\" is not read"},
        {FormatList, false, "x", "a list has no value; \"x\" is not read"},
    };
    for (const auto& one : kCases)
        EXPECT_EQ(ValueProblem(one.Format, one.IsArray, one.Value), one.Problem) << one.Value;
}

}  // namespace
}  // namespace hexmire::program
