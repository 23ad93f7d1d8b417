#include "PlainPeer.h"

#include "Workloads.h"
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace hexmire::bench {

namespace {

constexpr std::size_t kLengthBytes = 4;
constexpr std::size_t kHeaderBytes = 10;
constexpr std::size_t kReadSize = std::size_t{64} * 1024;

enum SType : std::uint8_t { Data = 0, SelectRequest = 1, LinktestRequest = 5, Separate = 9 };

int Checked(int result, const char* call) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), call);
    return result;
}

sockaddr_in Loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

void SendAtOnce(int socket) {
    const int on = 1;
    Checked(::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)), "setsockopt");
}

bool WriteAll(int socket, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

std::uint32_t Number(std::span<const std::uint8_t> bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8U | bytes[i];
    return value;
}

void PutNumber(std::span<std::uint8_t> bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(value >> (24U - 8U * i));
    }
}

void Append(std::vector<std::uint8_t>& out, const std::vector<std::uint8_t>& frame) {
    out.insert(out.end(), frame.begin(), frame.end());
}

/// Answers one frame (without its length); false when the caller separates.
bool Answer(std::span<const std::uint8_t> frame, std::vector<std::uint8_t>& out) {
    const std::uint32_t systemBytes = Number(frame.subspan(6));
    const unsigned stream = frame[2] & 0x7FU;
    switch (frame[5]) {
        case SelectRequest:
        case LinktestRequest:
            Append(out, HsmsFrame(0, 0, static_cast<std::uint8_t>(frame[5] + 1), systemBytes));
            return true;
        case Separate:
            return false;
        default:
            break;
    }
    if (frame[5] == Data && stream == 1) {
        Append(out, HsmsFrame(1, 2, Data, systemBytes, OnLineData()));
    } else if (frame[5] == Data && stream == 2) {
        Append(out, HsmsFrame(2, 102, Data, systemBytes, frame.subspan(kHeaderBytes)));
    }
    return true;
}

/// Talks to one caller until it leaves.
void Talk(int socket) {
    std::vector<std::uint8_t> in;
    std::vector<std::uint8_t> out;
    std::vector<std::uint8_t> chunk(kReadSize);
    bool talking = true;
    while (talking) {
        const ssize_t count = ::recv(socket, chunk.data(), chunk.size(), 0);
        if (count <= 0) return;
        in.insert(in.end(), chunk.begin(), chunk.begin() + count);
        std::size_t used = 0;
        while (talking && in.size() - used >= kLengthBytes) {
            const std::span<const std::uint8_t> rest(in.data() + used, in.size() - used);
            const std::size_t length = Number(rest);
            if (rest.size() < kLengthBytes + length) break;
            talking = Answer(rest.subspan(kLengthBytes, length), out);
            used += kLengthBytes + length;
        }
        in.erase(in.begin(), in.begin() + static_cast<std::ptrdiff_t>(used));
        if (!WriteAll(socket, out)) return;
        out.clear();
    }
}

}  // namespace

std::vector<std::uint8_t> HsmsFrame(std::uint8_t byte2,
                                    std::uint8_t byte3,
                                    std::uint8_t sType,
                                    std::uint32_t systemBytes,
                                    std::span<const std::uint8_t> body) {
    const std::uint8_t session = sType == Data ? 0x00 : 0xFF;
    std::vector<std::uint8_t> frame(kLengthBytes + kHeaderBytes + body.size());
    PutNumber(frame, 0, static_cast<std::uint32_t>(kHeaderBytes + body.size()));
    frame[4] = session;
    frame[5] = session;
    frame[6] = byte2;
    frame[7] = byte3;
    frame[9] = sType;
    PutNumber(frame, 10, systemBytes);
    std::copy(body.begin(), body.end(), frame.begin() + kLengthBytes + kHeaderBytes);
    return frame;
}

PlainEquipment::PlainEquipment() : listener_(Checked(::socket(AF_INET, SOCK_STREAM, 0), "socket")) {
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    Checked(::bind(listener_, generic, size), "bind");
    Checked(::listen(listener_, 1), "listen");
    Checked(::getsockname(listener_, generic, &size), "getsockname");
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Serve(); });
}

PlainEquipment::~PlainEquipment() {
    ::shutdown(listener_, SHUT_RDWR);  // The waiting accept returns.
    thread_.join();
    ::close(listener_);
}

void PlainEquipment::Serve() {
    for (;;) {
        const int caller = ::accept(listener_, nullptr, nullptr);
        if (caller < 0) return;
        SendAtOnce(caller);
        Talk(caller);
        ::close(caller);
    }
}

PlainHost::PlainHost(std::uint16_t port)
    : socket_(Checked(::socket(AF_INET, SOCK_STREAM, 0), "socket")) {
    const sockaddr_in address = Loopback(port);
    Checked(::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
            "connect");
    SendAtOnce(socket_);
    Exchange(HsmsFrame(0, 0, SelectRequest, 1), kLengthBytes + kHeaderBytes);
}

PlainHost::~PlainHost() {
    WriteAll(socket_, HsmsFrame(0, 0, Separate, 2));
    ::close(socket_);
}

void PlainHost::Exchange(std::span<const std::uint8_t> frames, std::size_t replyBytes) {
    if (!WriteAll(socket_, frames)) Checked(-1, "send");
    buffer_.resize(std::max(buffer_.size(), replyBytes));
    std::size_t got = 0;
    while (got < replyBytes) {
        const ssize_t count = ::recv(socket_, buffer_.data() + got, replyBytes - got, 0);
        if (count <= 0) Checked(-1, "recv");
        got += static_cast<std::size_t>(count);
    }
}

}  // namespace hexmire::bench
