#include "Pty.h"

#include <asio/buffer.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <array>
#include <cerrno>
#include <memory>
#include <system_error>

namespace hexmire::test {

Pty::Pty() {
    int master = -1;
    int slave = -1;
    std::array<char, 128> name{};
    termios raw{};
    ::cfmakeraw(&raw);
    raw.c_cc[VMIN] = 1;
    if (::openpty(&master, &slave, name.data(), &raw, nullptr) != 0) {
        throw std::system_error(errno, std::generic_category(), "openpty");
    }
    master_ = FileDescriptor(master);
    slave_ = FileDescriptor(slave);
    path_ = name.data();
}

int Pty::Unread() const {
    int count = 0;
    return ::ioctl(slave_.Get(), FIONREAD, &count) == 0 ? count : -1;
}

// --- RawLine -------------------------------------------------------------------------------------

void RawLine::Send(std::string_view hex) { asio::write(master_, asio::buffer(Bytes(hex))); }

void RawLine::SendPaced(std::string_view hex, std::chrono::microseconds characterTime) {
    auto next = std::chrono::steady_clock::now();
    asio::steady_timer timer(rig_.Loop);
    for (const std::uint8_t byte : Bytes(hex)) {
        bool due = false;
        timer.expires_at(next += characterTime);
        timer.async_wait([&](const asio::error_code&) { due = true; });
        (void)rig_.RunUntil([&] { return due; });
        asio::write(master_, asio::buffer(&byte, 1));
    }
}

std::string RawLine::Read(std::size_t count) {
    asio::error_code error;
    return HexText(ReadBytes(rig_, master_, count, error));
}

// --- PtyCable ------------------------------------------------------------------------------------

namespace {

/// One direction of a cable.
class Lane : public std::enable_shared_from_this<Lane> {
public:
    Lane(asio::io_context& loop, int from, int to)
        : from_(loop, ::dup(from)), to_(loop, ::dup(to)) {}

    void Carry() {
        from_.async_read_some(
            asio::buffer(bytes_),
            [self = shared_from_this()](const asio::error_code& error, std::size_t count) {
                if (!error) self->Pass(count);
            });
    }

private:
    void Pass(std::size_t count) {
        asio::async_write(to_,
                          asio::buffer(bytes_, count),
                          [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                              if (!error) self->Carry();
                          });
    }

    asio::posix::stream_descriptor from_;
    asio::posix::stream_descriptor to_;
    std::array<char, 4096> bytes_{};
};

}  // namespace

PtyCable::PtyCable() {
    std::make_shared<Lane>(loop_, a_.Master(), b_.Master())->Carry();
    std::make_shared<Lane>(loop_, b_.Master(), a_.Master())->Carry();
    thread_ = std::thread([this] { loop_.run(); });
}

PtyCable::~PtyCable() {
    loop_.stop();
    thread_.join();
}

}  // namespace hexmire::test
