// The table of waiting transactions with many entries, on fakes: no socket, no clock, no log.
#include <hexmire/control/Hexmire.h>

#include "../tests/fakes/TestHost.h"
#include "Benchmarks.h"
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace hexmire::bench {

namespace {

/// A host whose table holds so many S1F1 that wait, each with its T3 running.
class WaitingHost {
public:
    explicit WaitingHost(std::int64_t count) {
        host_.AddTemplate("S1F1", 1, 1);
        host_.Control().T3Timeout(120);
        host_.Control().SystemBytesCheck(true);
        for (std::int64_t i = 0; i < count; ++i)
            Send();
    }
    /// Sends one more and tells the control that it has gone out; gives its system bytes.
    std::uint32_t Send() {
        const SECSTransPtr trans = host_.Control().NewSECSTransaction("S1F1");
        trans->Send();
        host_.Driver.Sent.clear();
        host_.Driver.Calls.clear();
        const auto systemBytes = static_cast<std::uint32_t>(trans->SystemBytes());
        host_.MessageSent(fakes::Header(0, true, 1, 1, systemBytes));
        return systemBytes;
    }
    void Receive(std::uint32_t systemBytes) {
        const auto header = fakes::Header(0, false, 1, 2, systemBytes);
        host_.BlockReceived(header);
        host_.MessageReceived(header, {});
        host_.Secondaries.clear();
        host_.Raised.clear();
    }
    fakes::TestHost& Host() { return host_; }

private:
    fakes::TestHost host_{false};
};

void SendAndReceive(benchmark::State& state) {
    WaitingHost waiting(state.range(0));
    for (auto _ : state)
        waiting.Receive(waiting.Send());
    state.SetItemsProcessed(state.iterations());
}

/// One second passes for every entry.
void Tick(benchmark::State& state) {
    WaitingHost waiting(state.range(0));
    constexpr std::int64_t kSecondsLeft = 119;
    std::int64_t ticks = 0;
    for (auto _ : state) {
        if (++ticks > kSecondsLeft) {
            state.SkipWithError("more ticks than T3 has seconds");
            break;
        }
        waiting.Host().TickSecond();
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

}  // namespace

void RegisterControl() {
    benchmark::RegisterBenchmark("Growth/table: send and take the reply", SendAndReceive)
        ->Arg(1)
        ->Arg(100)
        ->Arg(10'000);
    benchmark::RegisterBenchmark("Growth/table: one second of T3", Tick)
        ->Arg(100)
        ->Arg(10'000)
        ->Iterations(100);
}

}  // namespace hexmire::bench
