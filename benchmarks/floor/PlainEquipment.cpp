#include "PlainEquipment.h"

#include "Frames.h"
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <random>
#include <span>
#include <system_error>

namespace hexmire::bench {

namespace {

using Bytes = std::span<const std::uint8_t>;

// L{A 'EQ-SIM', A '1.0.00'}
constexpr std::array<std::uint8_t, 18> kOnLineData{
    0x01, 0x02, 0x41, 0x06, 'E', 'Q', '-', 'S', 'I', 'M', 0x41, 0x06, '1', '.', '0', '.', '0', '0'};
// L{B 0, L{A 'EQ-SIM', A '1.0.00'}}
constexpr std::array<std::uint8_t, 23> kEstablished{0x01, 0x02, 0x21, 0x01, 0x00, 0x01, 0x02, 0x41,
                                                    0x06, 'E',  'Q',  '-',  'S',  'I',  'M',  0x41,
                                                    0x06, '1',  '.',  '0',  '.',  '0',  '0'};
constexpr std::array<std::uint8_t, 3> kAccepted{0x21, 0x01, 0x00};
constexpr unsigned kWaitBit = 0x80;

Bytes ReplyBody(unsigned stream, unsigned function, Bytes body) {
    if (stream == 1 && function == 1) return kOnLineData;
    if (stream == 1 && function == 13) return kEstablished;
    if (stream == 2 && function == 101) return body;
    return kAccepted;
}

/// Appends a frame whose header is the request's but for three bytes.
void Append(std::vector<std::uint8_t>& out,
            Bytes request,
            unsigned byte2,
            unsigned byte3,
            unsigned sType,
            Bytes body) {
    const std::size_t at = out.size();
    out.resize(at + kFrameOverhead + body.size());
    std::uint8_t* const frame = out.data() + at;
    PutNumber(frame, static_cast<std::uint32_t>(kHeaderBytes + body.size()));
    std::memcpy(frame + kLengthBytes, request.data(), kHeaderBytes);
    frame[6] = static_cast<std::uint8_t>(byte2);
    frame[7] = static_cast<std::uint8_t>(byte3);
    frame[9] = static_cast<std::uint8_t>(sType);
    std::copy(body.begin(), body.end(), frame + kFrameOverhead);
}

/// Answers one frame (without its length); false when the caller separates.
bool Answer(Bytes frame, std::vector<std::uint8_t>& out) {
    if (frame.size() < kHeaderBytes) return false;
    const unsigned sType = frame[5];
    if (sType == Separate) return false;
    if (sType != Data) {
        // Requests are odd; a reject (7) wants no answer.
        if (sType % 2 == 1 && sType < 7) Append(out, frame, 0, 0, sType + 1, {});
        return true;
    }
    if ((frame[2] & kWaitBit) == 0) return true;
    const unsigned stream = frame[2] & ~kWaitBit;
    const unsigned function = frame[3];
    Append(out,
           frame,
           stream,
           function + 1,
           Data,
           ReplyBody(stream, function, frame.subspan(kHeaderBytes)));
    return true;
}

/// Talks to one caller until it leaves. All that came at once is answered at once.
void Talk(const Socket& socket) {
    FrameBuffer in;
    std::vector<std::uint8_t> out;
    while (in.Receive(socket.Descriptor())) {
        for (Bytes frame = in.Next(); !frame.empty(); frame = in.Next()) {
            if (!Answer(frame, out)) return;
        }
        if (!WriteAll(socket, out)) return;
        out.clear();
    }
}

/// So many free ports one behind the other, below those that the system gives to callers.
std::vector<Socket> ListenOnNeighbours(std::uint16_t ports) {
    constexpr std::uint16_t kFirst = 20'000;
    constexpr std::uint16_t kLast = 31'000;
    constexpr int kAttempts = 100;
    std::random_device seed;
    std::mt19937 random(seed());
    std::uniform_int_distribution<int> anywhere(kFirst, kLast - ports);
    for (int attempt = 1;; ++attempt) {
        const int first = anywhere(random);
        std::vector<Socket> listeners;
        try {
            for (int port = first; port < first + ports; ++port)
                listeners.push_back(Listen(static_cast<std::uint16_t>(port)));
            return listeners;
        } catch (const std::system_error&) {
            if (attempt == kAttempts) throw;
        }
    }
}

}  // namespace

PlainEquipment::PlainEquipment(std::uint16_t ports)
    : listeners_(ListenOnNeighbours(ports)), wakeUp_(::eventfd(0, 0)) {
    thread_ = std::thread([this] { Serve(); });
}

PlainEquipment::~PlainEquipment() {
    const std::uint64_t one = 1;
    if (::write(wakeUp_.Descriptor(), &one, sizeof(one)) == sizeof(one)) thread_.join();
    for (Caller& caller : callers_) {
        caller.Connection.ShutDown();
        caller.Server.join();
    }
}

void PlainEquipment::Serve() {
    std::vector<pollfd> waiting;
    for (const Socket& listener : listeners_)
        waiting.push_back({listener.Descriptor(), POLLIN, 0});
    waiting.push_back({wakeUp_.Descriptor(), POLLIN, 0});
    while (::poll(waiting.data(), waiting.size(), -1) > 0) {
        if (waiting.back().revents != 0) return;
        for (std::size_t i = 0; i < listeners_.size(); ++i) {
            if (waiting[i].revents != 0) Admit(listeners_[i]);
        }
    }
}

void PlainEquipment::Admit(const Socket& listener) {
    Caller& caller = callers_.emplace_back(Caller{Accept(listener), {}});
    caller.Server = std::thread([&connection = caller.Connection] {
        Talk(connection);
        connection.ShutDown();
    });
}

}  // namespace hexmire::bench
