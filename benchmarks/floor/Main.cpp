// What the races are measured by: the same work without any library.
//
//   floor equipment [PORTS]                           answers every host; ends with its input
//   floor codec DATA-DIRECTORY
//   floor host PORT a|b|w3a|w3b OPEN SECONDS DATA-DIRECTORY
//   floor start PORT
//   floor idle FIRST-PORT LINKS                       ends with its input
//   floor links FIRST-PORT LINKS SECONDS
//   floor version
#include "FloorCodec.h"
#include "FloorHost.h"
#include "PlainEquipment.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace hexmire::bench {

namespace {

std::uint16_t Short(const std::string& text) {
    const unsigned long value = std::stoul(text);
    if (value > UINT16_MAX) throw std::invalid_argument("too large: " + text);
    return static_cast<std::uint16_t>(value);
}

void ServeHosts(std::uint16_t ports) {
    const PlainEquipment equipment(ports);
    std::printf("{\"event\": \"ready\", \"port\": %u}\n", unsigned{equipment.Port()});
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
}

/// False when the arguments are no command.
bool Run(const std::vector<std::string>& words) {
    const std::string command = words.empty() ? "" : words[0];
    const auto is = [&](const char* name, std::size_t arguments) {
        return command == name && words.size() == arguments + 1;
    };
    if (is("equipment", 0)) {
        ServeHosts(1);
    } else if (is("equipment", 1)) {
        ServeHosts(Short(words[1]));
    } else if (is("codec", 1)) {
        RaceFloorCodec(words[1]);
    } else if (is("host", 5)) {
        RaceRoundTrips(Short(words[1]), words[2], Short(words[3]), std::stod(words[4]), words[5]);
    } else if (is("start", 1)) {
        RaceStart(Short(words[1]));
    } else if (is("idle", 2)) {
        RaceIdleLinks(Short(words[1]), Short(words[2]));
    } else if (is("links", 3)) {
        RaceBusyLinks(Short(words[1]), Short(words[2]), std::stod(words[3]));
    } else if (is("version", 0)) {
        std::puts(R"({"name": "floor", "version": "", "runtime": "blocking sockets, malloc"})");
    } else {
        return false;
    }
    return true;
}

}  // namespace

}  // namespace hexmire::bench

int main(int count, char** arguments) {
    try {
        if (hexmire::bench::Run({arguments + 1, arguments + count})) return 0;
        std::fputs("floor: see the head of benchmarks/floor/Main.cpp\n", stderr);
        return 2;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "floor: %s\n", failure.what());
        return 1;
    }
}
