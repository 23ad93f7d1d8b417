// The library in the races, as every contestant runs them: one process for each race.
//
//   race_host codec DATA-DIRECTORY
//   race_host host PORT a|b|w3a|w3b OPEN SECONDS DATA-DIRECTORY
//   race_host start PORT
//   race_host idle FIRST-PORT LINKS                  ends with its input
//   race_host links FIRST-PORT LINKS SECONDS
//   race_host endurance PORT COUNT DATA-DIRECTORY
//   race_host version
//
// --log FOLDER, anywhere, makes the controls write their message logs into that folder.
#include "Races.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iterator>
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

/// Takes "--log FOLDER" out of the words.
std::string TakeLogFolder(std::vector<std::string>& words) {
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word != "--log" || std::next(word) == words.end()) continue;
        std::string folder = *std::next(word);
        words.erase(word, word + 2);
        return folder;
    }
    return {};
}

/// False when the arguments are no command.
bool Run(std::vector<std::string> words) {
    RaceSettings settings;
    settings.LogFolder = TakeLogFolder(words);
    const std::string command = words.empty() ? "" : words[0];
    const auto is = [&](const char* name, std::size_t arguments) {
        return command == name && words.size() == arguments + 1;
    };
    if (is("codec", 1)) {
        RaceCodec(words[1]);
    } else if (is("host", 5)) {
        settings.DataDirectory = words[5];
        RaceRoundTrips(
            Short(words[1]), words[2], std::stoi(words[3]), std::stod(words[4]), settings);
    } else if (is("start", 1)) {
        RaceStart(Short(words[1]), settings);
    } else if (is("idle", 2)) {
        RaceIdleLinks(Short(words[1]), Short(words[2]), settings);
    } else if (is("links", 3)) {
        RaceBusyLinks(Short(words[1]), Short(words[2]), std::stod(words[3]), settings);
    } else if (is("endurance", 3)) {
        settings.DataDirectory = words[3];
        RaceEndurance(Short(words[1]), std::stoll(words[2]), settings);
    } else if (is("version", 0)) {
        std::puts("{\"name\": \"hexmire\", \"version\": \"" HEXMIRE_VERSION
                  "\", \"runtime\": \"C++\"}");
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
        std::fputs("race_host: see the head of benchmarks/race/Main.cpp\n", stderr);
        return 2;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "race_host: %s\n", failure.what());
        return 1;
    }
}
