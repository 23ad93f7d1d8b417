#include <hexmire/hexmire.h>

#include "../floor/Figures.h"
#include "RaceHost.h"
#include "Races.h"
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace hexmire::bench {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 30s;
constexpr auto kLongest = 600s;

/// The loop and its hosts, all connected.
class Hosts {
public:
    Hosts(std::uint16_t port,
          std::uint16_t links,
          const std::string& what,
          const RaceSettings& settings) {
        for (std::uint16_t i = 0; i < links; ++i) {
            hosts_.push_back(std::make_unique<RaceHost>(
                loop_,
                RaceHost::Options{.Port = static_cast<std::uint16_t>(port + i),
                                  .Message = RaceMessageNamed(what),
                                  .DataDirectory = settings.DataDirectory,
                                  .LogFile = LogFile(settings, i),
                                  .Failure = failure_}));
        }
        RunUntil([this] { return std::ranges::all_of(hosts_, &RaceHost::IsConnected, Of); },
                 kPatience);
    }

    [[nodiscard]] const std::vector<std::unique_ptr<RaceHost>>& All() const { return hosts_; }
    [[nodiscard]] RaceHost& First() const { return *hosts_.front(); }
    [[nodiscard]] EventLoop& Loop() { return loop_; }

    /// Throws when a host fails, or the time is over.
    void RunUntil(const std::function<bool()>& done, std::chrono::nanoseconds patience) {
        const bool ended = loop_.RunUntil([&] { return !failure_.empty() || done(); }, patience);
        if (!failure_.empty()) throw std::runtime_error(failure_);
        if (!ended) throw std::runtime_error("the equipment does not answer");
    }

private:
    static const RaceHost& Of(const std::unique_ptr<RaceHost>& host) { return *host; }
    static std::string LogFile(const RaceSettings& settings, std::uint16_t link) {
        if (settings.LogFolder.empty()) return {};
        return settings.LogFolder + "/link" + std::to_string(link) + ".log";
    }

    std::string failure_;
    EventLoop loop_;
    std::vector<std::unique_ptr<RaceHost>> hosts_;
};

std::size_t HeapInUse() {
    const auto info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// Keeps so many open on each host until the time is over, and prints the times.
void Race(Hosts& hosts, int open, double seconds) {
    const RaceTime time(seconds);
    RoundTripTimes times(time);
    bool over = false;
    for (const auto& host : hosts.All()) {
        host->OnReply = [&, sender = host.get()](Clock::time_point begin) {
            const auto now = Clock::now();
            times.Add(begin, now);
            over = times.Complete(now);
            if (!over) sender->Send();
        };
        for (int i = 0; i < open; ++i)
            host->Send();
    }
    hosts.RunUntil([&] { return over; }, kLongest);
    for (const auto& host : hosts.All())
        host->OnReply = nullptr;
    times.Print();
}

}  // namespace

void RaceRoundTrips(std::uint16_t port,
                    const std::string& what,
                    int open,
                    double seconds,
                    const RaceSettings& settings) {
    Hosts hosts(port, 1, what, settings);
    Race(hosts, open, seconds);
}

void RaceStart(std::uint16_t port, const RaceSettings& settings) {
    Hosts hosts(port, 1, "a", settings);
    bool answered = false;
    hosts.First().OnReply = [&](Clock::time_point) { answered = true; };
    hosts.First().Send();
    hosts.RunUntil([&] { return answered; }, kPatience);
    hosts.First().Close();
}

void RaceEndurance(std::uint16_t port, std::int64_t count, const RaceSettings& settings) {
    constexpr int kOpen = 32;
    Hosts hosts(port, 1, "b", settings);
    RaceHost& host = hosts.First();
    std::int64_t left = 0;
    host.OnReply = [&](Clock::time_point) {
        if (--left >= kOpen) host.Send();
    };
    const auto run = [&](std::int64_t trips) {
        left = trips;
        for (int i = 0; i < kOpen; ++i)
            host.Send();
        hosts.RunUntil([&] { return left == 0; }, kLongest);
        return static_cast<double>(HeapInUse());
    };
    constexpr std::int64_t kShareOfWarmUp = 20;
    const double before = run(std::max<std::int64_t>(count / kShareOfWarmUp, kOpen));
    const double after = run(count);
    Figures figures;
    figures.Add("count", static_cast<double>(count));
    figures.Add("heap_before", before);
    figures.Add("heap_after", after);
    figures.Print();
}

void RaceIdleLinks(std::uint16_t port, std::uint16_t links, const RaceSettings& settings) {
    Hosts hosts(port, links, "a", settings);
    std::puts(R"({"event": "ready"})");
    std::fflush(stdout);
    std::thread input([&loop = hosts.Loop()] {
        while (std::getchar() != EOF) {
        }
        loop.Post([&loop] { loop.Stop(); });
    });
    hosts.Loop().Run();
    input.join();
}

void RaceBusyLinks(std::uint16_t port,
                   std::uint16_t links,
                   double seconds,
                   const RaceSettings& settings) {
    Hosts hosts(port, links, "a", settings);
    Race(hosts, 1, seconds);
}

}  // namespace hexmire::bench
