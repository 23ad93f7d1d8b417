// The smallest host: opens a link, loads a dictionary, sends a template by name, prints the reply.
//
//   first_host PORT DICTIONARY     an equipment listens on 127.0.0.1:PORT
//
// Try it with: hexmire equipment --local 127.0.0.1:5000 & first_host 5000 dictionaries/Default.xml
#include <hexmire/hexmire.h>

#include <chrono>
#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: first_host PORT DICTIONARY\n";
        return 2;
    }

    hexmire::EventLoop loop;
    hexmire::Hexmire control(loop.Platform());
    control.ConnectionPortType(hexmire::PortTypeHSMS_SS);
    control.RemoteIPAddress("127.0.0.1");
    control.RemoteIPPort(std::atoi(argv[1]));
    control.SECSDictionaryFile(argv[2]);
    control.LoadXMLDictionary();
    control.Events().Connect = [&] {
        if (const auto areYouThere = control.NewSECSTransaction("S1F1")) areYouThere->Send();
    };
    bool answered = false;
    control.Events().ReceivedSecondary = [&](const hexmire::SECSTransPtr& trans, auto&&...) {
        std::cout << hexmire::RenderSml(*trans->Secondary(), false) << '\n';
        answered = true;
    };
    control.Events().Error = [](int code, const std::string& text, int) {
        std::cerr << "error " << code << ": " << text << '\n';
    };
    control.OpenPort();
    loop.RunUntil([&] { return answered; }, std::chrono::seconds(10));
    control.ClosePort();
    return answered ? 0 : 1;
}
