// A message of 100 KB over a SECS-I line at 9600 bit/s, in simulated time: what the line carries
// and how long it takes, beside the least that the block protocol permits. Nothing here depends on
// the machine that runs it.
#include "../tests/fakes/LinePair.h"
#include "../tests/fakes/Secs1Rig.h"
#include "Benchmarks.h"
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace hexmire::bench {

namespace {

constexpr std::int64_t kBodyBytes = 102'400;
constexpr double kBitsPerCharacter = 10;
/// ENQ, EOT and ACK; length byte, header and checksum.
constexpr std::size_t kBytesAroundData = 3 + 1 + secs1::kHeaderBytes + secs1::kChecksumBytes;

std::size_t LeastBytes(std::size_t bodyBytes) {
    return bodyBytes + secs1::BlockCount(bodyBytes) * kBytesAroundData;
}

double LeastSeconds(std::size_t bodyBytes, std::int32_t baudRate) {
    return static_cast<double>(LeastBytes(bodyBytes)) * kBitsPerCharacter / baudRate;
}

void SecsILine(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(0));
    const auto header = test::ParseBlock("S7F3 000A 00000001").Header;
    const std::vector<std::uint8_t> body = test::PatternBytes(bytes);
    const LinkSettings settings = test::Secs1Rig::Settings(1);
    for (auto _ : state) {
        test::LinePair pair(settings);
        pair.Send(true, header, body);
        if (!pair.Run() || pair.Equipment().Received.size() != 1) {
            state.SkipWithError("the message did not arrive");
            break;
        }
        const double seconds = std::chrono::duration<double>(pair.Elapsed()).count();
        state.SetIterationTime(seconds);
        state.counters["line_seconds"] = seconds;
        state.counters["least_seconds"] = LeastSeconds(bytes, settings.BaudRate);
        state.counters["line_bytes"] = static_cast<double>(pair.Bytes());
        state.counters["least_bytes"] = static_cast<double>(LeastBytes(bytes));
    }
}

}  // namespace

void RegisterSecs1() {
    benchmark::RegisterBenchmark("SecsILine", SecsILine)->Arg(kBodyBytes)->UseManualTime();
}

}  // namespace hexmire::bench
