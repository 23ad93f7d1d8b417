#include <hexmire/support/ModErrorMsg.h>
#include <hexmire/support/Reporting.h>

#include <algorithm>
#include <array>

namespace hexmire::ModErrorMsg {

namespace {

struct ErrorText {
    std::int32_t Code;
    const char* Text;
};

// Sorted by code. The wording, spacing included, is what hosts and log readers match on.
constexpr std::array<ErrorText, 53> kErrorTexts{{
    {1001,
     "You cannot change the Format of the Root item. The Root item Format is always "
     "0 (list)."},
    {1002, "Illegal format code. Use one of the format codes defined in enmItemFormat."},
    {1003, "Illegal NLB value. NLB must be 0,1,2,or 3."},
    {1004, "There are no items contained in the list."},
    {1005, "Unable to convert the item index to long integer."},
    {1006,
     "The item index value you have provided is too small.Item indexes must be 1 or "
     "greater."},
    {1007, "There is no item with this index.The index must be between 1 and ItemCount."},
    {1008, "The first parameter to the Item property must be either a number or a string."},
    {1009, "The item name is not defined within the parent item."},
    {1010,
     "The first parameter you have provided,index is too large.The value must be no "
     "greater than ItemCount+1."},
    {1013, "The Stream property must be between 0 and 127 inclusive."},
    {1014, "The Func property must be between 0 and 255 inclusive."},
    {1019,
     "This SECSTrans is not contained in the SECSDictionary. This method is "
     "available only for SECSTrans in the SECSDictionary."},
    {1020,
     "There are no SECSTrans defined in the SECSDictionary. You must either add "
     "SECSTrans you define yourself or use default SECSDictionary."},
    {1022, "The SECSTrans index value is too small. The index must be 1 or greater."},
    {1023, "There is no SECSTrans with this Index."},
    {1024, "The parameter to the SECSTrans property must be either a number or a string."},
    {1025, "SECSTrans name is not found in the SECSDictionary."},
    {1026,
     "The SECSTrans index value is too large. The index must be not greater than "
     "TransCount + 1."},
    {1027,
     "The parameter to the AddNewTrans/NewSECSTransaction method must be a string "
     "or an integer."},
    {1046, "The BaudRate value is invalid."},
    {1047, "The DeviceID must be between 0 and 32767."},
    {1048, "The ConnectionRetryLimit must be between 0 and 31."},
    {1049, "The T1 value must be between 0.1 and 10.0 inclusive."},
    {1050, "The T2 value must be between 0.2 and 25.0 inclusive."},
    {1051, "The T3 value must be between 1 and 120 inclusive."},
    {1052, "The T4 value must be between 1 and 120 inclusive."},
    {1053,
     "The ConnectionPortType value is invalid. This property must be 1(RS-232), "
     "2(HSMS), 3(TCPIP), 4(HSMS-SS)"},
    {1066, "The T5 value must be between 1 and 240 inclusive."},
    {1067, "The T6 value must be between 1 and 240 inclusive."},
    {1068, "The T7 value must be between 1 and 240 inclusive."},
    {1069, "The T8 value must be between 1 and 120 inclusive."},
    {1079, "The Root item cannot be deleted."},
    {1089, "An attempt was made to close a port that is not open."},
    {1090, "An attempt was made to open a port that is already open."},
    {1133, "The Duplicate method cannot be used on the Root item."},
    {2001, "Read and parsing xml input file failed."},
    {2002, "You cannot add new item into non-list item."},
    {2003, "You cannot add new item out of limit between 1 to ItemCount+1."},
    {2004, "You cannot add new SECSTrans out of limit between 1 to TransCount+1."},
    {2005,
     "The HSMSConnectionType value is invalid. This property must be 1(Active), "
     "2(Passive), 3(Alternating)."},
    {2006, "The IP Port must be between 0 and 2147483647."},
    {2007, "The TimeOutRetry must be between 1 and 86400 inclusive."},
    {2008, "SECSMessage not found in SECSTrans."},
    {2009, "You must call NewSECSTrans to use send method."},
    {2010, "SECS II Data not found."},
    {2011, "This SECSMessage received is not contained in the SECSDictionary."},
    {2012, "T3 Timeout encountered."},
    {2013, "This SECSMessage received is not belong to any primary SECSMessage."},
    {2014, "Log file name must have extension .log."},
    {2015, "SECSTrans in use cleared."},
    {2016, "Invalid SECS II Header received."},
    {2017, "SECS II Data length mismatched."},
}};

static_assert(std::is_sorted(kErrorTexts.begin(),
                             kErrorTexts.end(),
                             [](const ErrorText& left, const ErrorText& right) {
                                 return left.Code <= right.Code;
                             }),
              "each code once, in ascending order");

}  // namespace

std::string FormatErrorMsg(std::int32_t code) {
    std::string result;
    RunFreeRoutine({"ModErrorMsg", "FormatErrorMsg"}, [&] {
        const auto* row = std::lower_bound(
            kErrorTexts.begin(),
            kErrorTexts.end(),
            code,
            [](const ErrorText& entry, std::int32_t wanted) { return entry.Code < wanted; });
        if (row != kErrorTexts.end() && row->Code == code) result = row->Text;
    });
    return result;
}

}  // namespace hexmire::ModErrorMsg
