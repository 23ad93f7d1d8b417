// One end of a link under test: a control that sends numbered messages and answers those that come.
//
//   network_peer DICTIONARY NAME=VALUE...
//
// Standard input, one command a line:
//   open            open the port
//   send EVERY SIZE send a numbered message of SIZE characters each EVERY milliseconds
//   stop            send no more, and tell so
//   once SIZE       send one
//   quit            close the port, wait for its end, leave
// Standard output, one event a line, each written out at once:
//   connect | disconnect CODE TEXT | error CODE TEXT | stopped
//   sent NUMBER SYSTEM-BYTES | got NUMBER | answered NUMBER | late NUMBER | damaged TEXT
#include <hexmire/hexmire.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

namespace {

using namespace std::chrono_literals;
using namespace hexmire;
using Clock = std::chrono::steady_clock;

std::int32_t NumberIn(std::string_view text) {
    std::int32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end)
        throw std::invalid_argument("no number: " + std::string(text));
    return number;
}

/// "17 " and then one letter, the number's own, up to the size.
std::string BodyOf(std::int32_t number, std::size_t size) {
    std::string body = std::to_string(number) + ' ';
    if (body.size() < size) body.resize(size, static_cast<char>('a' + number % 26));
    return body;
}

/// The number of a body; none when it is not as BodyOf makes it.
std::optional<std::int32_t> NumberOf(const SECSMessage& message) {
    if (message.Root()->ItemCount() == 0) return std::nullopt;
    const Variant value = message.Root()->Item(1)->Value();
    const std::string_view text = value.Text();
    const std::size_t digits = text.find(' ');
    if (digits == std::string_view::npos) return std::nullopt;
    const std::int32_t number = NumberIn(text.substr(0, digits));
    if (text != BodyOf(number, text.size())) return std::nullopt;
    return number;
}

struct Settings {
    PlatformOptions Platform{};
    std::function<void(Hexmire&)> Apply = [](Hexmire&) {};
    std::int32_t FirstNumber = 1;
    bool ReopensPort = false;  ///< the program connects again, not the driver
};

/// What NAME=VALUE may be.
using Setter = std::function<void(Settings&, const std::string& value)>;

Setter OfControl(void (Hexmire::*member)(std::int32_t)) {
    return [member](Settings& settings, const std::string& value) {
        settings.Apply = [before = settings.Apply, member, value](Hexmire& control) {
            before(control);
            (control.*member)(NumberIn(value));
        };
    };
}

Setter OfControl(void (Hexmire::*member)(float)) {
    return [member](Settings& settings, const std::string& value) {
        settings.Apply = [before = settings.Apply, member, value](Hexmire& control) {
            before(control);
            (control.*member)(std::stof(value));
        };
    };
}

Setter OfControl(void (Hexmire::*member)(const std::string&)) {
    return [member](Settings& settings, const std::string& value) {
        settings.Apply = [before = settings.Apply, member, value](Hexmire& control) {
            before(control);
            (control.*member)(value);
        };
    };
}

Setter OfDriver(std::chrono::milliseconds LinkSettings::*field) {
    return [field](Settings& settings, const std::string& value) {
        settings.Platform.Link.*field = std::chrono::milliseconds(NumberIn(value));
    };
}

const std::map<std::string, Setter, std::less<>>& Setters() {
    static const std::map<std::string, Setter, std::less<>> setters{
        {"role",
         [](Settings& settings, const std::string& value) {
             settings.Apply = [before = settings.Apply, host = value == "host"](Hexmire& control) {
                 before(control);
                 control.ConnectionHost(host);
             };
         }},
        {"first",
         [](Settings& settings, const std::string& value) {
             settings.FirstNumber = NumberIn(value);
         }},
        {"reopens",
         [](Settings& settings, const std::string&) {
             settings.ReopensPort = true;
             settings.Platform.Link.AutoReconnect = false;
         }},
        {"type", OfControl(&Hexmire::ConnectionPortType)},
        {"mode", OfControl(&Hexmire::HSMSConnectionType)},
        {"local-address", OfControl(&Hexmire::LocalIPAddress)},
        {"local-port", OfControl(&Hexmire::LocalIPPort)},
        {"remote-address", OfControl(&Hexmire::RemoteIPAddress)},
        {"remote-port", OfControl(&Hexmire::RemoteIPPort)},
        {"retries", OfControl(&Hexmire::ConnectionRetryLimit)},
        {"t1", OfControl(&Hexmire::T1Timeout)},
        {"t2", OfControl(&Hexmire::T2Timeout)},
        {"t3", OfControl(&Hexmire::T3Timeout)},
        {"t4", OfControl(&Hexmire::T4Timeout)},
        {"t5", OfControl(&Hexmire::T5Timeout)},
        {"t6", OfControl(&Hexmire::T6Timeout)},
        {"t7", OfControl(&Hexmire::T7Timeout)},
        {"t8", OfControl(&Hexmire::T8Timeout)},
        {"linktest-ms", OfDriver(&LinkSettings::LinktestInterval)},
        {"stall-ms", OfDriver(&LinkSettings::WriteStall)},
    };
    return setters;
}

Settings SettingsFrom(int count, char** arguments) {
    Settings settings;
    settings.Platform.MessageLog = false;
    settings.Platform.Link.AutoReconnect = true;
    for (int index = 2; index < count; ++index) {
        const std::string argument = arguments[index];
        const std::size_t equals = argument.find('=');
        const auto found = Setters().find(argument.substr(0, equals));
        if (equals == std::string::npos || found == Setters().end())
            throw std::invalid_argument("unknown setting: " + argument);
        found->second(settings, argument.substr(equals + 1));
    }
    return settings;
}

class NumberedPeer {
public:
    NumberedPeer(const std::string& dictionary, const Settings& settings)
        : control_(loop_.Platform(settings.Platform)),
          next_(settings.FirstNumber),
          reopensPort_(settings.ReopensPort) {
        TakeEvents();
        control_.SECSDictionaryFile(dictionary);
        control_.LoadXMLDictionary();
        control_.SystemBytesCheck(true);
        settings.Apply(control_);
    }

    void Run();

private:
    void TakeEvents();
    void ReadCommands();
    void Obey(const std::string& line);
    void SendOne(std::size_t size);
    void Answer(const SECSTransPtr& trans);
    static void TakeReply(const SECSTrans& trans);

    EventLoop loop_;
    Hexmire control_;
    std::int32_t next_;
    std::optional<Clock::time_point> sendAt_{};
    Clock::duration every_{};
    std::size_t size_ = 0;
    bool reopensPort_ = false;
    bool connected_ = false;
    bool quit_ = false;
};

void NumberedPeer::TakeEvents() {
    HexmireEvents& events = control_.Events();
    events.Connect = [this] {
        connected_ = true;
        std::cout << "connect" << std::endl;
    };
    events.Disconnect = [this](std::int32_t code, const std::string& text) {
        connected_ = false;
        std::cout << "disconnect " << code << ' ' << text << std::endl;
        if (reopensPort_ && !quit_) control_.OpenPort();
    };
    events.Error = [](std::int32_t code, const std::string& text, std::int32_t) {
        std::cout << "error " << code << ' ' << text << std::endl;
    };
    events.ReceivedPrimary = [this](const SECSTransPtr& trans, auto&&...) { Answer(trans); };
    events.ReceivedSecondary = [](const SECSTransPtr& trans, auto&&...) { TakeReply(*trans); };
}

void NumberedPeer::SendOne(std::size_t size) {
    const std::int32_t number = next_++;
    const SECSTransPtr trans = control_.NewSECSTransaction();
    trans->Name("S2F25");
    trans->Primary()->Stream(2);
    trans->Primary()->Func(25);
    trans->Secondary()->Stream(2);
    trans->Secondary()->Func(26);
    const SECSItemPtr item = trans->Primary()->Root()->AddNew(1);
    item->Format(FormatAscii);
    item->Value(BodyOf(number, size));
    trans->Send();
    std::cout << "sent " << number << ' ' << trans->SystemBytes() << std::endl;
}

void NumberedPeer::Answer(const SECSTransPtr& trans) {
    const auto number = NumberOf(*trans->Primary());
    if (!number) {
        std::cout << "damaged " << RenderSml(*trans->Primary(), false) << std::endl;
        return;
    }
    std::cout << "got " << *number << std::endl;
    const SECSItemPtr item = trans->Secondary()->Item(1);
    item->Format(FormatAscii);
    item->Value(trans->Primary()->Item(1)->Value());
    trans->Reply();
}

void NumberedPeer::TakeReply(const SECSTrans& trans) {
    const auto number = NumberOf(*trans.Secondary());
    if (!number) {
        std::cout << "damaged " << RenderSml(*trans.Secondary(), false) << std::endl;
    } else if (trans.Primary()->Root()->ItemCount() == 0) {
        std::cout << "late " << *number << std::endl;  // Nobody waits for it any more.
    } else if (number == NumberOf(*trans.Primary())) {
        std::cout << "answered " << *number << std::endl;
    } else {
        std::cout << "damaged reply of another message " << *number << std::endl;
    }
}

void NumberedPeer::Obey(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::int64_t every = 0;
    words >> command;
    if (command == "open") {
        control_.OpenPort();
    } else if (command == "send") {
        words >> every >> size_;
        every_ = std::chrono::milliseconds(every);
        sendAt_ = Clock::now();
    } else if (command == "stop") {
        sendAt_.reset();
        std::cout << "stopped" << std::endl;
    } else if (command == "once") {
        words >> size_;
        SendOne(size_);
    } else {
        quit_ = true;
    }
}

void NumberedPeer::ReadCommands() {
    std::string line;
    while (std::getline(std::cin, line))
        loop_.Post([this, line] { Obey(line); });
    loop_.Post([this] { quit_ = true; });
}

void NumberedPeer::Run() {
    std::thread reader([this] { ReadCommands(); });
    while (!quit_) {
        constexpr Clock::duration kLongest = 1s;
        const auto now = Clock::now();
        if (sendAt_ && *sendAt_ <= now) {
            SendOne(size_);
            *sendAt_ += every_;
        }
        const auto wait =
            sendAt_ ? std::clamp(*sendAt_ - now, Clock::duration::zero(), kLongest) : kLongest;
        // A command may change the time of the next message.
        const auto before = sendAt_;
        loop_.RunUntil([&] { return quit_ || sendAt_ != before; }, wait);
    }
    if (control_.PortOpened()) {
        control_.ClosePort();
        loop_.RunUntil([this] { return !connected_; }, 5s);
    }
    std::cout.flush();
    reader.join();
}

}  // namespace

int main(int count, char** arguments) try {
    if (count < 2) throw std::invalid_argument("usage: network_peer DICTIONARY NAME=VALUE...");
    NumberedPeer(arguments[1], SettingsFrom(count, arguments)).Run();
    return 0;
} catch (const std::exception& failure) {
    std::cerr << "network_peer: " << failure.what() << '\n';
    return 2;
}
