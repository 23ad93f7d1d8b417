#include <hexmire/support/ModErrorMsg.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>

namespace hexmire {
namespace {

using ModErrorMsg::FormatErrorMsg;

struct Row {
    std::int32_t Code;
    const char* Text;
};

// The texts that hosts compare with, letter by letter.
constexpr std::array kRows{
    Row{1001,
        "You cannot change the Format of the Root item. The Root item Format is always 0 (list)."},
    Row{1002, "Illegal format code. Use one of the format codes defined in enmItemFormat."},
    Row{1003, "Illegal NLB value. NLB must be 0,1,2,or 3."},
    Row{1004, "There are no items contained in the list."},
    Row{1005, "Unable to convert the item index to long integer."},
    Row{1006,
        "The item index value you have provided is too small.Item indexes must be 1 or greater."},
    Row{1007, "There is no item with this index.The index must be between 1 and ItemCount."},
    Row{1008, "The first parameter to the Item property must be either a number or a string."},
    Row{1009, "The item name is not defined within the parent item."},
    Row{1010,
        "The first parameter you have provided,index is too large.The value must be no greater "
        "than ItemCount+1."},
    Row{1013, "The Stream property must be between 0 and 127 inclusive."},
    Row{1014, "The Func property must be between 0 and 255 inclusive."},
    Row{1019,
        "This SECSTrans is not contained in the SECSDictionary. This method is available only for "
        "SECSTrans in the SECSDictionary."},
    Row{1020,
        "There are no SECSTrans defined in the SECSDictionary. You must either add SECSTrans you "
        "define yourself or use default SECSDictionary."},
    Row{1022, "The SECSTrans index value is too small. The index must be 1 or greater."},
    Row{1023, "There is no SECSTrans with this Index."},
    Row{1024, "The parameter to the SECSTrans property must be either a number or a string."},
    Row{1025, "SECSTrans name is not found in the SECSDictionary."},
    Row{1026,
        "The SECSTrans index value is too large. The index must be not greater than TransCount + "
        "1."},
    Row{1027,
        "The parameter to the AddNewTrans/NewSECSTransaction method must be a string or an "
        "integer."},
    Row{1046, "The BaudRate value is invalid."},
    Row{1047, "The DeviceID must be between 0 and 32767."},
    Row{1048, "The ConnectionRetryLimit must be between 0 and 31."},
    Row{1049, "The T1 value must be between 0.1 and 10.0 inclusive."},
    Row{1050, "The T2 value must be between 0.2 and 25.0 inclusive."},
    Row{1051, "The T3 value must be between 1 and 120 inclusive."},
    Row{1052, "The T4 value must be between 1 and 120 inclusive."},
    Row{1053,
        "The ConnectionPortType value is invalid. This property must be 1(RS-232), 2(HSMS), "
        "3(TCPIP), 4(HSMS-SS)"},
    Row{1066, "The T5 value must be between 1 and 240 inclusive."},
    Row{1067, "The T6 value must be between 1 and 240 inclusive."},
    Row{1068, "The T7 value must be between 1 and 240 inclusive."},
    Row{1069, "The T8 value must be between 1 and 120 inclusive."},
    Row{1079, "The Root item cannot be deleted."},
    Row{1089, "An attempt was made to close a port that is not open."},
    Row{1090, "An attempt was made to open a port that is already open."},
    Row{1133, "The Duplicate method cannot be used on the Root item."},
    Row{2001, "Read and parsing xml input file failed."},
    Row{2002, "You cannot add new item into non-list item."},
    Row{2003, "You cannot add new item out of limit between 1 to ItemCount+1."},
    Row{2004, "You cannot add new SECSTrans out of limit between 1 to TransCount+1."},
    Row{2005,
        "The HSMSConnectionType value is invalid. This property must be 1(Active), 2(Passive), "
        "3(Alternating)."},
    Row{2006, "The IP Port must be between 0 and 2147483647."},
    Row{2007, "The TimeOutRetry must be between 1 and 86400 inclusive."},
    Row{2008, "SECSMessage not found in SECSTrans."},
    Row{2009, "You must call NewSECSTrans to use send method."},
    Row{2010, "SECS II Data not found."},
    Row{2011, "This SECSMessage received is not contained in the SECSDictionary."},
    Row{2012, "T3 Timeout encountered."},
    Row{2013, "This SECSMessage received is not belong to any primary SECSMessage."},
    Row{2014, "Log file name must have extension .log."},
    Row{2015, "SECSTrans in use cleared."},
    Row{2016, "Invalid SECS II Header received."},
    Row{2017, "SECS II Data length mismatched."},
};

TEST(ErrorTable, EveryCodeHasItsText) {
    for (const Row& row : kRows)
        EXPECT_EQ(FormatErrorMsg(row.Code), row.Text) << row.Code;
}

TEST(ErrorTable, EveryOtherNumberHasNone) {
    std::set<std::int32_t> known;
    for (const Row& row : kRows)
        known.insert(row.Code);
    ASSERT_EQ(known.size(), 53U);
    for (std::int32_t code = -3000; code <= 5000; ++code) {
        if (!known.contains(code)) {
            EXPECT_EQ(FormatErrorMsg(code), "") << code;
        }
    }
}

TEST(ErrorTable, GapsInTheNumberingHaveNone) {
    constexpr std::array<std::pair<std::int32_t, std::int32_t>, 9> kGaps{{{1011, 1012},
                                                                          {1015, 1018},
                                                                          {1021, 1021},
                                                                          {1028, 1045},
                                                                          {1054, 1065},
                                                                          {1070, 1078},
                                                                          {1080, 1088},
                                                                          {1091, 1132},
                                                                          {1134, 2000}}};
    for (const auto& [first, last] : kGaps) {
        for (std::int32_t code = first; code <= last; ++code)
            EXPECT_EQ(FormatErrorMsg(code), "");
    }
}

TEST(ErrorTable, FarNumbersHaveNone) {
    using Limits = std::numeric_limits<std::int32_t>;
    // Neighbours through 16 bits too: no code is found again after a wrap.
    for (const std::int32_t code : {Limits::min(),
                                    Limits::max(),
                                    0,
                                    -1,
                                    -1001,
                                    -1079,
                                    1001 + 65536,
                                    2001 - 65536,
                                    1001 * 256,
                                    6,
                                    13,
                                    91,
                                    440}) {
        EXPECT_EQ(FormatErrorMsg(code), "") << code;
    }
}

TEST(ErrorTable, TextsKeepTheirMissingBlanks) {
    EXPECT_NE(FormatErrorMsg(1006).find("small.Item"), std::string::npos);
    EXPECT_NE(FormatErrorMsg(1007).find("index.The"), std::string::npos);
    EXPECT_NE(FormatErrorMsg(1010).find("provided,index"), std::string::npos);
    EXPECT_EQ(FormatErrorMsg(1053).back(), ')');
}

}  // namespace
}  // namespace hexmire
