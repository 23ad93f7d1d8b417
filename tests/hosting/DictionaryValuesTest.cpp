#include "DictionaryFile.h"
#include <gtest/gtest.h>

namespace hexmire {
namespace {

using namespace fakes;
using Texts = std::vector<std::string>;

const std::string kSecondary = MessageElement("Secondary");

TEST(DictionaryValues, FollowTheFormatOfTheItem) {
    struct Value {
        const char* Format;
        const char* IsArray;
        const char* Text;
        const char* Shown;
    };
    for (const Value& value :
         {Value{"B", "NO", "1F", "8 Byte 31"},
          Value{"B", "YES", "1F FF 0", "8 Byte[31, 255, 0]"},
          Value{"BOOL", "NO", "t", "9 Boolean True"},
          Value{"bool", "yes", "T F 0 1", "9 Boolean[True, False, False, True]"},
          Value{"A", "NO", "  a b  ", "16 String 'a b'"},
          Value{"A", "YES", " 1 2 ", "16 String '1 2'"},
          Value{"A", "NO", "a&#10;b&#x9;", "16 String 'a\nb\t'"},
          Value{"I1", "NO", "-3", "25 Integer -3"},
          Value{"I2", "NO", "12.5", "26 Long 12"},
          Value{"I4", "NO", "13.5", "28 Long 14"},
          Value{"I4", "YES", "1 2  3", "28 Long[1, 2]"},
          Value{"U1", "YES", " 1 2", "41 Empty"},
          Value{"U1", "TRUE", "7", "41 Integer 7"},
          Value{"U4", "NO", "4294967295.9", "44 Double 4294967295"},
          Value{"U8", "YES", "1 2", "40 Double[1, 2]"},
          Value{"F4", "NO", "0.5", "36 Double 0.5"},
          Value{"L", "NO", "7", "0 Empty"},
          Value{"L", "YES", "7 8", "0 Empty"},
          Value{"V", "NO", " 7 ", "63 String '7'"},
          Value{"V", "YES", "7 8", "63 Empty"},
          Value{" A", "NO", "7", "63 String '7'"},
          Value{"JIS8", "NO", "x", "63 String 'x'"},
          Value{"U2", "NO", "", "42 Empty"}}) {
        DictionaryFile host;
        host.Load(TransFile(
            MessageElement("Primary", ItemElement("i", value.Format, value.IsArray, value.Text)),
            kSecondary));
        EXPECT_EQ(host.Templates(),
                  (Texts{std::string("T|t P S1F3 n|d (i:") + value.Shown + ") S S1F4 n|d"}));
        EXPECT_EQ(host.Reported, Texts{}) << value.Format << " " << value.Text;
    }
}

TEST(DictionaryValues, StayEmptyWhenTheyDoNotConvert) {
    struct Value {
        const char* Format;
        const char* Text;
        const char* Reported;
    };
    for (const Value& value : {Value{"I4", "abc", "13 (ModGeneral-lAssignValue) Type mismatch"},
                               Value{"U1", "40000", "6 (ModGeneral-lAssignValue) Overflow"},
                               Value{"B", "1FF", "6 (ModGeneral-lAssignValue) Overflow"},
                               Value{"I2", "2147483648", "6 (ModGeneral-lAssignValue) Overflow"},
                               Value{"F8", "1e999", "6 (ModGeneral-lAssignValue) Overflow"}}) {
        DictionaryFile host;
        host.Load(TransFile(MessageElement("Primary",
                                           ItemElement("i", value.Format, "NO", value.Text) +
                                               ItemElement("j", "U1", "NO", "1")),
                            kSecondary));
        ASSERT_EQ(host.Templates().size(), 1U);
        EXPECT_TRUE(host.Templates()[0].find(" Empty, j:41 Integer 1) S S1F4 n|d") !=
                    std::string::npos)
            << host.Templates()[0];
        EXPECT_EQ(host.Reported, (Texts{value.Reported})) << value.Text;
    }
}

TEST(DictionaryValues, OfStreamAndFunctionAreDecimalNumbers) {
    struct Number {
        const char* Text;
        const char* Stream;
        Texts Reported;
    };
    const std::string mismatch = "13 (Hexmire-CreateTransObject) Type mismatch";
    const std::string refused =
        "1013 (SECSMessage-Let Stream) The Stream property must be between 0 and 127 inclusive.";
    const std::vector<Number> numbers{
        {"0", "S0F3 n|d S S1F4 n|d", {}},
        {"127", "S127F3 n|d S S1F4 n|d", {}},
        {" 6 ", "S6F3 n|d S S1F4 n|d", {}},
        {"+6", "S6F3 n|d S S1F4 n|d", {}},
        {"006", "S6F3 n|d S S1F4 n|d", {}},
        {"2.5", "S2F3 n|d S S1F4 n|d", {}},
        {"3.5", "S4F3 n|d S S1F4 n|d", {}},
        {"127.4", "S127F3 n|d S S1F4 n|d", {}},
        {"-0.5", "S0F3 n|d S S1F4 n|d", {}},
        {"1e1", "S10F3 n|d S S1F4 n|d", {}},
        {"128", "S0F3 n|d S S1F4 n|d", {refused}},
        {"127.5", "S0F3 n|d S S1F4 n|d", {refused}},
        {"-1", "S0F3 n|d S S1F4 n|d", {refused}},
        {"", "S0F1 | S S0F2 |", {mismatch}},
        {" ", "S0F1 | S S0F2 |", {mismatch}},
        {"S6", "S0F1 | S S0F2 |", {mismatch}},
        {"6;", "S0F1 | S S0F2 |", {mismatch}},
        {"0x6", "S0F1 | S S0F2 |", {mismatch}},
        {"2147483648", "S0F1 | S S0F2 |", {"6 (Hexmire-CreateTransObject) Overflow"}}};
    for (const Number& number : numbers) {
        DictionaryFile host;
        host.Load(TransFile(std::string("<Primary Stream='") + number.Text +
                                "' Func='3' Name='n' Desc='d'><Root/></Primary>",
                            kSecondary));
        EXPECT_EQ(host.Templates(), (Texts{std::string("T|t P ") + number.Stream})) << number.Text;
        EXPECT_EQ(host.Reported, number.Reported) << number.Text;
    }
}

TEST(DictionaryValues, AreReadInTheEncodingOfTheFile) {
    DictionaryFile host;
    host.Load("<?xml version='1.0' encoding='ISO-8859-1'?><D><Trans Name='\xB5m' Desc='&#8364;'>" +
              MessageElement("Primary") + kSecondary + "</Trans></D>");
    EXPECT_EQ(host.Templates(), (Texts{"\xB5m|? P S1F3 n|d S S1F4 n|d"}));
    EXPECT_NE(host.Loader().NewSECSTransaction("\xB5M"), nullptr);
}

}  // namespace
}  // namespace hexmire
