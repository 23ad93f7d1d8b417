#include <hexmire/hosting/FileDescriptor.h>
#include <hexmire/hosting/links/SerialStream.h>

#include <fcntl.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace hexmire::link {

namespace {

/// More than this many unsent bytes are part of a block, which is worth nothing without its rest.
/// Closing waits for those that are sent.
constexpr int kWorthSending = 2;

/// Waiting does not bring what is missing here: there is no such device, or it is no serial port.
bool IsHopeless(int number) {
    return number == ENOENT || number == ENODEV || number == ENXIO || number == ENOTTY;
}

SystemFailure FailureNow(LinkError code) {
    const int number = errno;
    return {.Number = number,
            .Text = std::generic_category().message(number),
            .Code = code,
            .IsPermanent = IsHopeless(number)};
}

speed_t SpeedOf(std::int32_t baudRate) {
    constexpr std::array<std::pair<std::int32_t, speed_t>, 7> kSpeeds{{{150, B150},
                                                                       {300, B300},
                                                                       {1200, B1200},
                                                                       {2400, B2400},
                                                                       {4800, B4800},
                                                                       {9600, B9600},
                                                                       {19200, B19200}}};
    const auto* found = std::find_if(
        kSpeeds.begin(), kSpeeds.end(), [&](const auto& entry) { return entry.first == baudRate; });
    return found == kSpeeds.end() ? B0 : found->second;
}

/// Nobody else may talk on our line. The lock keeps out those who ask for it too, the exclusive
/// mode everybody but the superuser.
bool TakeForUs(int descriptor) {
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 && ::ioctl(descriptor, TIOCEXCL) == 0;
}

bool SetUp(int descriptor, std::int32_t baudRate) {
    constexpr tcflag_t kLineFlags = CSIZE | PARENB | CSTOPB | CRTSCTS;
    const speed_t speed = SpeedOf(baudRate);
    termios wanted{};
    if (::tcgetattr(descriptor, &wanted) != 0) return false;
    ::cfmakeraw(&wanted);
    wanted.c_cflag &= ~kLineFlags;
    wanted.c_cflag |= CS8 | CLOCAL | CREAD;
    wanted.c_iflag &= ~(static_cast<tcflag_t>(IXON) | IXOFF | IXANY);
    wanted.c_iflag |= IGNPAR;
    // With a minimum of 0 a read that finds nothing would look like the end of the line.
    wanted.c_cc[VMIN] = 1;
    wanted.c_cc[VTIME] = 0;
    if (::cfsetispeed(&wanted, speed) != 0 || ::cfsetospeed(&wanted, speed) != 0 ||
        ::tcsetattr(descriptor, TCSANOW, &wanted) != 0) {
        return false;
    }
    // The call succeeds when any part of it was taken.
    termios present{};
    if (::tcgetattr(descriptor, &present) != 0) return false;
    const bool taken = (present.c_cflag & kLineFlags) == CS8 && ::cfgetispeed(&present) == speed &&
                       ::cfgetospeed(&present) == speed;
    if (!taken) errno = EINVAL;
    return taken;
}

/// What helps but is not given everywhere: the lines that tell the other end of us, and an adapter
/// that hands over characters as they come.
void SetComforts(int descriptor) {
    int lines = TIOCM_DTR | TIOCM_RTS;
    (void)::ioctl(descriptor, TIOCMBIS, &lines);
    serial_struct adapter{};
    if (::ioctl(descriptor, TIOCGSERIAL, &adapter) == 0) {
        adapter.flags |= ASYNC_LOW_LATENCY;
        (void)::ioctl(descriptor, TIOCSSERIAL, &adapter);
    }
}

}  // namespace

std::string SerialDevicePath(const std::string& name) {
    return name.find('/') == std::string::npos ? "/dev/" + name : name;
}

std::unique_ptr<SerialStream> SerialStream::Open(asio::io_context& loop,
                                                 const std::string& name,
                                                 std::int32_t baudRate,
                                                 SystemFailure& failure) {
    const auto failed = [&failure](LinkError code) {
        failure = FailureNow(code);
        return nullptr;
    };
    FileDescriptor port(
        ::open(SerialDevicePath(name).c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!port.IsOpen()) {
        return failed(errno == EBUSY ? LinkError::SerialInUse : LinkError::SerialOpenFailed);
    }
    if (::isatty(port.Get()) == 0) return failed(LinkError::SerialSetupFailed);
    if (!TakeForUs(port.Get())) return failed(LinkError::SerialInUse);
    if (!SetUp(port.Get(), baudRate)) return failed(LinkError::SerialSetupFailed);
    SetComforts(port.Get());
    (void)::tcflush(port.Get(), TCIOFLUSH);
    std::unique_ptr<SerialStream> stream(new SerialStream(loop));
    asio::error_code error;
    stream->port_.assign(port.Get(), error);
    if (!error) (void)port.Release();
    if (!error) stream->port_.non_blocking(true, error);
    if (error) {
        errno = error.value();
        return failed(LinkError::SerialOpenFailed);
    }
    return stream;
}

SerialStream::~SerialStream() {
    const int descriptor = port_.native_handle();
    // Closing waits until everything has left, which takes seconds at low speeds.
    int unsent = 0;
    if (::ioctl(descriptor, TIOCOUTQ, &unsent) == 0 && unsent > kWorthSending) {
        (void)::tcflush(descriptor, TCOFLUSH);
    }
    // It would go on for as long as anybody else has the port open.
    (void)::ioctl(descriptor, TIOCNXCL);
}

void SerialStream::WaitForInput(Ready ready) {
    port_.async_wait(asio::posix::stream_descriptor::wait_read, std::move(ready));
}

void SerialStream::WaitForRoom(Ready ready) {
    port_.async_wait(asio::posix::stream_descriptor::wait_write, std::move(ready));
}

std::size_t SerialStream::Read(asio::mutable_buffer into, asio::error_code& error) {
    return port_.read_some(into, error);
}

std::size_t SerialStream::Write(std::span<const asio::const_buffer> from, asio::error_code& error) {
    return port_.write_some(from, error);
}

}  // namespace hexmire::link
