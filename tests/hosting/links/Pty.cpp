#include "Pty.h"

#include <asio/buffer.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/write.hpp>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

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
