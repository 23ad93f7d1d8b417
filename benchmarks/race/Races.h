#pragma once

#include <cstdint>
#include <string>

/// The races that the library runs, each in a process of its own. Each prints one line of JSON.
namespace hexmire::bench {

struct RaceSettings {
    std::string DataDirectory;
    std::string LogFolder;  ///< empty: the controls make no message log
};

/// Decodes and encodes the bodies a to e, renders a.
void RaceCodec(const std::string& dataDirectory);
/// Round trips of what (a, b, w3a, w3b), so many open at once.
void RaceRoundTrips(std::uint16_t port,
                    const std::string& what,
                    int open,
                    double seconds,
                    const RaceSettings& settings);
/// One S1F1.
void RaceStart(std::uint16_t port, const RaceSettings& settings);
/// So many round trips, and the memory that is in use before and after them.
void RaceEndurance(std::uint16_t port, std::int64_t count, const RaceSettings& settings);
/// Connects to ports one behind the other and does nothing until the standard input ends.
void RaceIdleLinks(std::uint16_t port, std::uint16_t links, const RaceSettings& settings);
/// The same links, each with one S1F1 open at a time.
void RaceBusyLinks(std::uint16_t port,
                   std::uint16_t links,
                   double seconds,
                   const RaceSettings& settings);

}  // namespace hexmire::bench
