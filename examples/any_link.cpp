// A host on each kind of link: asks "are you there" and prints the answer. Its settings are those
// of docs/links.md.
//
//   any_link KIND DICTIONARY     KIND is hsms-ss, hsms, tcpip or rs232
//
// Try it with: hexmire equipment --local 127.0.0.1:5000 & any_link hsms-ss dictionaries/Default.xml
#include <hexmire/hexmire.h>

#include <chrono>
#include <functional>
#include <iostream>
#include <map>
#include <string>

namespace {

void UseHsmsSs(hexmire::Hexmire& control) {
    control.ConnectionPortType(hexmire::PortTypeHSMS_SS);
    control.HSMSConnectionType(hexmire::ConnectionModeActive);
    control.RemoteIPAddress("127.0.0.1");
    control.RemoteIPPort(5000);
    control.DeviceID(0);
    control.T6Timeout(10);
}

void UseHsms(hexmire::Hexmire& control) {
    control.ConnectionPortType(hexmire::PortTypeHSMS);
    control.HSMSConnectionType(hexmire::ConnectionModePassive);
    control.LocalIPAddress("127.0.0.1");
    control.LocalIPPort(5001);
    control.DeviceID(7);
}

void UseTcp(hexmire::Hexmire& control) {
    control.ConnectionPortType(hexmire::PortTypeTCPIP);
    control.HSMSConnectionType(hexmire::ConnectionModeActive);
    control.RemoteIPAddress("127.0.0.1");
    control.RemoteIPPort(5002);
    control.T1Timeout(1.0F);
    control.T2Timeout(2.0F);
}

void UseSerial(hexmire::Hexmire& control) {
    control.ConnectionPortType(hexmire::PortTypeRS232);
    control.SerialPort("/dev/ttyUSB0");
    control.BaudRate(hexmire::BaudRate9600);
    control.T2Timeout(2.0F);
    control.ConnectionRetryLimit(3);
}

const std::map<std::string, std::function<void(hexmire::Hexmire&)>> kKinds{
    {"hsms-ss", UseHsmsSs}, {"hsms", UseHsms}, {"tcpip", UseTcp}, {"rs232", UseSerial}};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 || !kKinds.contains(argv[1])) {
        std::cerr << "usage: any_link hsms-ss|hsms|tcpip|rs232 DICTIONARY\n";
        return 2;
    }
    hexmire::LinkSettings link;
    link.AutoReconnect = true;
    hexmire::EventLoop loop;
    hexmire::Hexmire control(loop.Platform(link));
    kKinds.at(argv[1])(control);
    control.SECSDictionaryFile(argv[2]);
    control.LoadXMLDictionary();
    control.Events().Connect = [&] { control.NewSECSTransaction("S1F1")->Send(); };
    bool answered = false;
    control.Events().ReceivedSecondary = [&](const hexmire::SECSTransPtr& trans, auto&&...) {
        std::cout << hexmire::RenderSml(*trans->Secondary(), false) << '\n';
        answered = true;
    };
    control.Events().Error = [](std::int32_t code, const std::string& text, std::int32_t) {
        std::cerr << code << ' ' << text << '\n';
    };
    control.OpenPort();
    loop.RunUntil([&] { return answered; }, std::chrono::seconds(30));
    control.ClosePort();
    return answered ? 0 : 1;
}
