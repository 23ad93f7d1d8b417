#include "Figures.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ios>
#include <iterator>
#include <stdexcept>

namespace hexmire::bench {

namespace {

constexpr double kNanosecondsOfOne = 1000;  // microsecond

double WarmUp(double seconds) { return std::max(0.3, seconds / 3); }

Clock::duration Seconds(double seconds) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

}  // namespace

void Figures::Print() const {
    const char* before = "{";
    for (const auto& [name, value] : values_) {
        std::printf("%s\"%s\": %.6g", before, name.c_str(), value);
        before = ", ";
    }
    std::puts("}");
    std::fflush(stdout);
}

RaceTime::RaceTime(double seconds)
    : begin_(Clock::now() + bench::Seconds(WarmUp(seconds))),
      end_(begin_ + bench::Seconds(seconds)) {}

RoundTripTimes::RoundTripTimes(const RaceTime& time) : time_(time) {
    constexpr std::size_t kMany = 1'000'000;
    nanoseconds_.reserve(kMany);
}

void RoundTripTimes::Add(Clock::time_point begin, Clock::time_point end) {
    if (!time_.Counts(begin) || (time_.Over(end) && !nanoseconds_.empty())) return;
    nanoseconds_.push_back(static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(end - begin).count()));
    last_ = end;
}

void RoundTripTimes::Print() {
    if (nanoseconds_.empty()) throw std::runtime_error("no round trip in the time");
    const auto quantile = [this](std::size_t hundredths) {
        const auto at = nanoseconds_.begin() +
                        static_cast<std::ptrdiff_t>((nanoseconds_.size() - 1) * hundredths / 100);
        std::nth_element(nanoseconds_.begin(), at, nanoseconds_.end());
        return static_cast<double>(*at) / kNanosecondsOfOne;
    };
    const auto count = static_cast<double>(nanoseconds_.size());
    const std::chrono::duration<double> seconds = std::max(last_, time_.End()) - time_.Begin();
    Figures figures;
    figures.Add("p50_us", quantile(50));
    figures.Add("p99_us", quantile(99));
    figures.Add("per_s", count / seconds.count());
    figures.Add("count", count);
    figures.Print();
}

bool IsShortRace() { return std::getenv("RACE_SHORT") != nullptr; }

std::vector<std::uint8_t> ReadBody(std::string_view directory, std::string_view name) {
    const std::string path = std::string(directory) + "/" + std::string(name) + ".bin";
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace hexmire::bench
