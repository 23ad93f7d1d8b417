#include "LinkRig.h"

#include <algorithm>
#include <numeric>

namespace hexmire::test {

// --- LinkRecorder --------------------------------------------------------------------------------

void LinkRecorder::Add(std::string line) {
    const auto hook = Hook;  // the hook may replace itself
    if (Recording) Lines.push_back(line);
    if (hook) hook(line);
}

void LinkRecorder::Disconnect(std::int32_t code, const std::string& text) {
    Texts.push_back(text);
    Add("Disconnect " + std::to_string(code));
}

void LinkRecorder::Error(std::int32_t code, const std::string& text) {
    Texts.push_back(text);
    Add("Error " + std::to_string(code));
}

void LinkRecorder::SecsMsgReceive(const std::string& header,
                                  const std::string& body,
                                  std::int32_t length) {
    Add("Message " + header + "| " + body + "| " + std::to_string(length));
}

std::size_t LinkRecorder::Count(std::string_view start) const {
    return static_cast<std::size_t>(
        std::count_if(Lines.begin(), Lines.end(), [start](const std::string& line) {
            return line.starts_with(start);
        }));
}

// --- LinkRig -------------------------------------------------------------------------------------

bool LinkRig::RunUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        Loop.restart();
        Loop.run_one_until(
            std::min(end, std::chrono::steady_clock::now() + std::chrono::milliseconds(5)));
    }
    return true;
}

void LinkRig::RunFor(std::chrono::milliseconds duration) {
    (void)RunUntil([] { return false; }, duration);
}

std::uint16_t LinkRig::FreePort() {
    asio::ip::tcp::acceptor probe(Loop, {asio::ip::address_v4::loopback(), 0});
    return probe.local_endpoint().port();
}

LinkSettings LinkRig::Active(std::uint16_t port) {
    using namespace std::chrono_literals;
    LinkSettings settings;
    settings.PortType = 4;
    settings.HSMSConnectionMode = 1;
    settings.DeviceID = 5;
    settings.LocalIPAddress = "127.0.0.1";
    settings.LocalIPPort = port;
    settings.RemoteIPAddress = "127.0.0.1";
    settings.RemoteIPPort = port;
    settings.AllowShortTimers = true;
    settings.T5 = 20ms;
    settings.T6 = 5s;
    settings.T7 = 5s;
    return settings;
}

LinkSettings LinkRig::Passive(std::uint16_t port) {
    LinkSettings settings = Active(port);
    settings.HSMSConnectionMode = 2;
    settings.HostRole = false;
    return settings;
}

LinkSettings LinkRig::Serial(const std::string& path) {
    using namespace std::chrono_literals;
    LinkSettings settings = Active(1);
    settings.PortType = 1;
    settings.SerialPort = path;
    settings.BaudRate = 19'200;
    settings.T1 = 2s;
    settings.T2 = 5s;
    return settings;
}

// --- RawPeer -------------------------------------------------------------------------------------

bool RawPeer::ConnectTo(std::uint16_t port) {
    bool done = false;
    asio::error_code result;
    socket_ = asio::ip::tcp::socket(rig_.Loop);
    socket_.async_connect({asio::ip::address_v4::loopback(), port},
                          [&](const asio::error_code& error) {
                              done = true;
                              result = error;
                          });
    return rig_.RunUntil([&] { return done; }) && !result;
}

bool RawPeer::AcceptFrom(asio::ip::tcp::acceptor& acceptor) {
    bool done = false;
    asio::error_code result;
    acceptor.async_accept(socket_, [&](const asio::error_code& error) {
        done = true;
        result = error;
    });
    return rig_.RunUntil([&] { return done; }) && !result;
}

void RawPeer::Send(std::string_view hex) { asio::write(socket_, asio::buffer(Bytes(hex))); }

std::string RawPeer::Read(std::size_t count) {
    asio::error_code error;
    const std::vector<std::uint8_t> bytes = ReadBytes(rig_, socket_, count, error);
    reset_ = error == asio::error::connection_reset;
    return HexText(bytes);
}

std::string RawPeer::ReadToEnd() { return Read(1 << 20U); }

void RawPeer::Reset() {
    socket_.set_option(asio::socket_base::linger(true, 0));
    socket_.close();
}

// --- SECS-I ----------------------------------------------------------------------------------

std::string BlockHex(std::string_view header, std::string_view data) {
    std::vector<std::uint8_t> bytes = Bytes(header);
    const std::vector<std::uint8_t> more = Bytes(data);
    bytes.insert(bytes.end(), more.begin(), more.end());
    const std::uint32_t sum = std::accumulate(bytes.begin(), bytes.end(), 0U);
    bytes.insert(bytes.begin(), static_cast<std::uint8_t>(bytes.size()));
    bytes.push_back(static_cast<std::uint8_t>(sum >> 8U));
    bytes.push_back(static_cast<std::uint8_t>(sum));
    return HexText(bytes);
}

// --- bytes ---------------------------------------------------------------------------------------

std::vector<std::uint8_t> Bytes(std::string_view hex) {
    std::vector<std::uint8_t> bytes;
    int high = -1;
    for (const char one : hex) {
        const int digit = HexDigitValue(one);
        if (digit < 0) continue;
        if (high < 0) {
            high = digit;
        } else {
            bytes.push_back(static_cast<std::uint8_t>(high * 16 + digit));
            high = -1;
        }
    }
    return bytes;
}

std::vector<std::uint8_t> Header(std::uint8_t streamWithW,
                                 std::uint8_t function,
                                 std::uint32_t systemBytes,
                                 std::uint16_t device) {
    return {static_cast<std::uint8_t>(device >> 8U),
            static_cast<std::uint8_t>(device),
            streamWithW,
            function,
            0x80,
            0x01,
            static_cast<std::uint8_t>(systemBytes >> 24U),
            static_cast<std::uint8_t>(systemBytes >> 16U),
            static_cast<std::uint8_t>(systemBytes >> 8U),
            static_cast<std::uint8_t>(systemBytes)};
}

}  // namespace hexmire::test
