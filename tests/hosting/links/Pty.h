#pragma once

#include <hexmire/hosting/FileDescriptor.h>

#include "LinkRig.h"
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <thread>

namespace hexmire::test {

/// A pseudo-terminal: its slave is the serial port of a driver, its master the other end of the
/// line. It is raw from the start and stays open while no driver has it.
class Pty {
public:
    Pty();

    /// Path of the serial port.
    [[nodiscard]] const std::string& Path() const { return path_; }
    [[nodiscard]] int Master() const { return master_.Get(); }
    [[nodiscard]] int Slave() const { return slave_.Get(); }
    /// Bytes that have come in at the serial port and that nobody has read.
    [[nodiscard]] int Unread() const;
    /// The line is gone: whoever has the port sees it hang up.
    void HangUp() { master_.Close(); }

private:
    FileDescriptor master_;
    FileDescriptor slave_;
    std::string path_;
};

/// The far end of a pseudo-terminal, blocking towards the test alone: every operation runs the
/// loop.
class RawLine {
public:
    RawLine(LinkRig& rig, const Pty& pty) : rig_(rig), master_(rig.Loop, ::dup(pty.Master())) {}

    void Send(std::string_view hex);
    /// Sends one character after the other at this pace.
    void SendPaced(std::string_view hex, std::chrono::microseconds characterTime);
    /// Reads so many bytes; their hex text, or what came in ten seconds.
    std::string Read(std::size_t count);
    void Close() { master_.close(); }

private:
    LinkRig& rig_;
    asio::posix::stream_descriptor master_;
};

/// A cable between two serial ports: a thread carries the bytes both ways.
class PtyCable {
public:
    PtyCable();
    PtyCable(const PtyCable&) = delete;
    PtyCable& operator=(const PtyCable&) = delete;
    ~PtyCable();

    [[nodiscard]] const std::string& PathA() const { return a_.Path(); }
    [[nodiscard]] const std::string& PathB() const { return b_.Path(); }

private:
    Pty a_;
    Pty b_;
    asio::io_context loop_;
    std::thread thread_;
};

}  // namespace hexmire::test
