#include "PlainHost.h"

#include <stdexcept>

namespace hexmire::bench {

namespace {

[[noreturn]] void Gone() { throw std::runtime_error("the equipment has gone"); }

}  // namespace

PlainHost::PlainHost(std::uint16_t port) : socket_(Connect(port)) {
    Exchange(HsmsFrame(0, 0, SelectRequest, 1), 1);
}

PlainHost::~PlainHost() {
    if (socket_.Descriptor() >= 0) WriteAll(socket_, HsmsFrame(0, 0, Separate, 2));
}

void PlainHost::Write(std::span<const std::uint8_t> frames) {
    if (!WriteAll(socket_, frames)) Gone();
}

void PlainHost::Receive() {
    if (!in_.Receive(socket_.Descriptor())) Gone();
}

void PlainHost::Exchange(std::span<const std::uint8_t> frames, std::size_t replies) {
    Write(frames);
    while (replies != 0) {
        Receive();
        while (!Next().empty())
            --replies;
    }
}

}  // namespace hexmire::bench
