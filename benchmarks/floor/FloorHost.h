#pragma once

#include <cstdint>
#include <string_view>

/// The host's side of the races over links, on frames that are ready.
namespace hexmire::bench {

/// Round trips of what (a, b, w3a, w3b), so many open at once.
void RaceRoundTrips(std::uint16_t port,
                    std::string_view what,
                    std::uint32_t open,
                    double seconds,
                    std::string_view dataDirectory);
/// One S1F1.
void RaceStart(std::uint16_t port);
/// Connects to ports one behind the other and does nothing until its input ends.
void RaceIdleLinks(std::uint16_t port, std::uint16_t links);
/// The same links, each with one S1F1 open at a time.
void RaceBusyLinks(std::uint16_t port, std::uint16_t links, double seconds);

}  // namespace hexmire::bench
