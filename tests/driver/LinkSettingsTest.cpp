// Settings of a link: ranges, what is looked at when, and the words of the refusals.
#include <hexmire/driver/Address.h>
#include <hexmire/driver/LinkSettings.h>

#include <gtest/gtest.h>

#include <functional>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using link::AddressKind;

LinkSettings Usable() {
    LinkSettings settings;
    settings.PortType = 4;
    settings.RemoteIPAddress = "10.0.0.2";
    return settings;
}

std::string FaultOf(const std::function<void(LinkSettings&)>& change) {
    LinkSettings settings = Usable();
    change(settings);
    const auto fault = CheckLinkSettings(settings);
    return fault ? std::to_string(fault->Code) + " " + fault->Text : "";
}

TEST(LinkSettings, TheDefaultsOfTheControlArePartOfTheRanges) {
    EXPECT_FALSE(CheckLinkSettings(Usable()));
}

TEST(LinkSettings, NumbersOutsideTheirRangeAreNamed) {
    const std::string start = "3070 Setting out of range: ";
    EXPECT_EQ(FaultOf([](auto& s) { s.BaudRate = 600; }), start + "BaudRate = 600");
    EXPECT_EQ(FaultOf([](auto& s) { s.PortType = 5; }), start + "PortType = 5");
    EXPECT_EQ(FaultOf([](auto& s) { s.ConnectionRetryLimit = 32; }),
              start + "ConnectionRetryLimit = 32");
    EXPECT_EQ(FaultOf([](auto& s) { s.DeviceID = 32'768; }), start + "DeviceID = 32768");
    EXPECT_EQ(FaultOf([](auto& s) { s.DeviceID = -1; }), start + "DeviceID = -1");
    EXPECT_EQ(FaultOf([](auto& s) { s.HSMSConnectionMode = 0; }), start + "HSMSConnectionMode = 0");
    EXPECT_EQ(FaultOf([](auto& s) { s.MaxListDepth = 0; }), start + "MaxListDepth = 0");
    EXPECT_EQ(FaultOf([](auto& s) { s.MaxWaitingMessages = 0; }), start + "MaxWaitingMessages = 0");
}

TEST(LinkSettings, TimersOutsideTheirRangeAreNamedInMilliseconds) {
    const std::string start = "3070 Setting out of range: ";
    EXPECT_EQ(FaultOf([](auto& s) { s.T1 = 99ms; }), start + "T1 = 99");
    EXPECT_EQ(FaultOf([](auto& s) { s.T2 = 25'001ms; }), start + "T2 = 25001");
    EXPECT_EQ(FaultOf([](auto& s) { s.T3 = 121s; }), start + "T3 = 121000");
    EXPECT_EQ(FaultOf([](auto& s) { s.T5 = 0s; }), start + "T5 = 0");
    EXPECT_EQ(FaultOf([](auto& s) { s.T6 = 241s; }), start + "T6 = 241000");
    EXPECT_EQ(FaultOf([](auto& s) { s.T8 = 999ms; }), start + "T8 = 999");
    EXPECT_EQ(FaultOf([](auto& s) { s.LinktestInterval = -1ms; }), start + "LinktestInterval = -1");
    EXPECT_EQ(FaultOf([](auto& s) { s.T1 = 100ms, s.T2 = 200ms, s.T7 = 240s; }), "");
}

TEST(LinkSettings, ShortTimersAreAllowedOnRequestButNotZero) {
    EXPECT_EQ(FaultOf([](auto& s) { s.AllowShortTimers = true, s.T5 = 1ms; }), "");
    EXPECT_NE(FaultOf([](auto& s) { s.AllowShortTimers = true, s.T5 = 0ms; }), "");
}

TEST(LinkSettings, EveryPortTypeGoesWithEveryMode) {
    for (const int type : {1, 2, 3, 4}) {
        for (const int mode : {1, 2, 3}) {
            EXPECT_EQ(FaultOf([&](auto& s) { s.PortType = type, s.HSMSConnectionMode = mode; }), "")
                << type << ' ' << mode;
        }
    }
}

TEST(LinkSettings, ASerialLinkNeedsTheNameOfAPortAndNoAddress) {
    EXPECT_EQ(FaultOf([](auto& s) {
                  s.PortType = 1, s.LocalIPAddress = s.RemoteIPAddress = "?";
                  s.LocalIPPort = s.RemoteIPPort = 0;
              }),
              "");
    EXPECT_EQ(FaultOf([](auto& s) { s.PortType = 1, s.SerialPort = ""; }),
              "3070 Setting out of range: SerialPort \"\"");
    EXPECT_EQ(FaultOf([](auto& s) { s.SerialPort = ""; }), "") << "not used over TCP";
}

TEST(LinkSettings, AnAlternatingLinkUsesBothSides) {
    const auto fault = [](const auto& change) {
        return FaultOf([&](auto& s) { s.HSMSConnectionMode = 3, change(s); });
    };
    EXPECT_EQ(fault([](auto& s) { s.LocalIPAddress = "?"; }),
              "3056 Bad address: LocalIPAddress \"?\"");
    EXPECT_EQ(fault([](auto& s) { s.LocalIPPort = 0; }), "3056 Bad address: LocalIPPort \"0\"");
    EXPECT_EQ(fault([](auto& s) { s.RemoteIPAddress = "?"; }),
              "3056 Bad address: RemoteIPAddress \"?\"");
    EXPECT_EQ(fault([](auto& s) { s.RemoteIPPort = 65'536; }),
              "3056 Bad address: RemoteIPPort \"65536\"");
}

TEST(LinkSettings, AT1ForASerialLineLeavesRoomForThreeCharactersAndAnAdapter) {
    EXPECT_EQ(LeastSensibleT1(150), 220ms);
    EXPECT_EQ(LeastSensibleT1(9600), 24ms) << "30 bits are 3.125 ms, counted as 4";
    EXPECT_EQ(LeastSensibleT1(19200), 22ms);
}

TEST(LinkSettings, AddressesAndPortsAreLookedAtWhereTheyAreUsed) {
    EXPECT_EQ(FaultOf([](auto& s) { s.RemoteIPAddress = "10.0.0.256"; }),
              "3056 Bad address: RemoteIPAddress \"10.0.0.256\"");
    EXPECT_EQ(FaultOf([](auto& s) { s.RemoteIPPort = 65'536; }),
              "3056 Bad address: RemoteIPPort \"65536\"");
    EXPECT_EQ(FaultOf([](auto& s) { s.LocalIPPort = 65'536; }), "")
        << "not used by the active side";
    EXPECT_EQ(FaultOf([](auto& s) { s.LocalIPAddress = ""; }),
              "3056 Bad address: LocalIPAddress \"\"");
    EXPECT_EQ(FaultOf([](auto& s) { s.HSMSConnectionMode = 2, s.LocalIPPort = 65'536; }),
              "3056 Bad address: LocalIPPort \"65536\"");
    EXPECT_EQ(FaultOf([](auto& s) { s.HSMSConnectionMode = 2, s.RemoteIPAddress = "?"; }), "")
        << "not used by the passive side";
}

TEST(Address, NumbersNamesAndNonsenseAreToldApart) {
    for (const char* text : {"0.0.0.0", "127.0.0.1", "255.255.255.100"}) {
        EXPECT_EQ(link::ClassifyAddress(text), AddressKind::IPv4) << text;
    }
    for (const char* text : {"::", "::1", "fe80::1%eth0", "1:2:3:4:5:6:7:8", "::ffff:1.2.3.4"}) {
        EXPECT_EQ(link::ClassifyAddress(text), AddressKind::IPv6) << text;
    }
    for (const char* text : {"localhost", "tool-7.fab.example", "7tool"}) {
        EXPECT_EQ(link::ClassifyAddress(text), AddressKind::Name) << text;
    }
    for (const char* text : {"",
                             "1.2.3",
                             "1.2.3.4.5",
                             "256.1.1.1",
                             "12345",
                             "1..2.3",
                             "a b",
                             "a..b",
                             ".a",
                             "-a",
                             "1:2:3",
                             ":::",
                             "1::2::3",
                             "fe80::1%",
                             "12345::",
                             "é"}) {
        EXPECT_EQ(link::ClassifyAddress(text), AddressKind::Bad) << text;
    }
}

}  // namespace
}  // namespace hexmire::test
