#include "FloorHost.h"

#include "Figures.h"
#include "Frames.h"
#include "PlainHost.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace hexmire::bench {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kSystemBytes = 10;     // in a frame with its length
constexpr std::size_t kSystemBytesRead = 6;  // in one without

Bytes Request(std::string_view what, std::string_view dataDirectory) {
    constexpr std::uint8_t kWait = 0x80;
    if (what == "a") return HsmsFrame(kWait | 1, 1, Data, 0);
    if (what == "b") return HsmsFrame(kWait | 2, 101, Data, 0, ReadBody(dataDirectory, "w1a"));
    if (what == "w3a" || what == "w3b")
        return HsmsFrame(kWait | 7, 3, Data, 0, ReadBody(dataDirectory, what));
    throw std::invalid_argument("no such race: " + std::string(what));
}

std::vector<PlainHost> Hosts(std::uint16_t port, std::uint16_t links) {
    std::vector<PlainHost> hosts;
    hosts.reserve(links);
    for (std::uint16_t i = 0; i < links; ++i)
        hosts.emplace_back(static_cast<std::uint16_t>(port + i));
    return hosts;
}

}  // namespace

void RaceRoundTrips(std::uint16_t port,
                    std::string_view what,
                    std::uint32_t open,
                    double seconds,
                    std::string_view dataDirectory) {
    const Bytes request = Request(what, dataDirectory);
    PlainHost host(port);
    // The system bytes of a frame are its place among those that are open.
    Bytes frames;
    for (std::uint32_t i = 0; i < open; ++i) {
        frames.insert(frames.end(), request.begin(), request.end());
        PutNumber(frames.data() + i * request.size() + kSystemBytes, i);
    }
    const RaceTime time(seconds);
    RoundTripTimes times(time);
    std::vector<Clock::time_point> begins(open, Clock::now());
    host.Write(frames);
    for (auto now = Clock::now(); !times.Complete(now);) {
        host.Receive();
        now = Clock::now();
        std::size_t replies = 0;
        std::uint32_t first = 0;
        for (auto reply = host.Next(); !reply.empty(); reply = host.Next(), ++replies) {
            const std::uint32_t index = Number(reply.data() + kSystemBytesRead);
            if (replies == 0) first = index;
            times.Add(begins.at(index), now);
            begins[index] = now;
        }
        // Replies come in order, so what follows is one or two pieces of the ready frames.
        const std::span<const std::uint8_t> ready(frames);
        const std::size_t atOnce = std::min<std::size_t>(replies, open - first);
        if (atOnce != 0) {
            host.Write(ready.subspan(first * request.size(), atOnce * request.size()));
        }
        if (replies != atOnce) host.Write(ready.first((replies - atOnce) * request.size()));
    }
    times.Print();
}

void RaceStart(std::uint16_t port) {
    PlainHost host(port);
    host.Exchange(Request("a", {}), 1);
}

void RaceIdleLinks(std::uint16_t port, std::uint16_t links) {
    const std::vector<PlainHost> hosts = Hosts(port, links);
    std::puts(R"({"event": "ready"})");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
}

void RaceBusyLinks(std::uint16_t port, std::uint16_t links, double seconds) {
    std::vector<PlainHost> hosts = Hosts(port, links);
    const Bytes request = Request("a", {});
    const RaceTime time(seconds);
    RoundTripTimes times(time);
    std::vector<Clock::time_point> begins(links, Clock::now());
    for (PlainHost& host : hosts)
        host.Write(request);
    for (auto now = Clock::now(); !times.Complete(now);) {
        for (std::size_t i = 0; i < hosts.size(); ++i) {
            hosts[i].Receive();
            hosts[i].Next();
            now = Clock::now();
            times.Add(begins[i], now);
            begins[i] = now;
            hosts[i].Write(request);
        }
    }
    times.Print();
}

}  // namespace hexmire::bench
