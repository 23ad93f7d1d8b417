// The hex texts between driver and control, beside a plain copy of as many bytes.
#include <hexmire/support/HexBytes.h>

#include "Benchmarks.h"
#include "Workloads.h"
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace hexmire::bench {

namespace {

ByteVector SomeBytes(std::int64_t size) {
    ByteVector bytes(static_cast<std::size_t>(size));
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7);
    return bytes;
}

void WriteHex(benchmark::State& state) {
    const ByteVector bytes = SomeBytes(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(HexText(bytes).data());
    state.SetBytesProcessed(state.range(0) * state.iterations());
}

void ReadHex(benchmark::State& state) {
    const std::string text = HexText(SomeBytes(state.range(0)));
    ByteVector out(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(ReadHexText(text, out.size(), out.data()));
    state.SetBytesProcessed(state.range(0) * state.iterations());
}

/// Writes as many bytes as a hex text has characters.
void PlainCopy(benchmark::State& state) {
    const ByteVector bytes = SomeBytes(state.range(0) * 3);
    for (auto _ : state) {
        // The copy is what is measured.
        const ByteVector copy = bytes;  // NOLINT(performance-unnecessary-copy-initialization)
        benchmark::DoNotOptimize(copy.data());
    }
    state.SetBytesProcessed(state.range(0) * state.iterations());
}

}  // namespace

void RegisterTexts() {
    const auto add = [](const char* name, void (*function)(benchmark::State&)) {
        benchmark::RegisterBenchmark(name, function)->Arg(164)->Arg(1 << 20);
    };
    add("WriteHex", WriteHex);
    add("ReadHex", ReadHex);
    add("PlainCopy", PlainCopy);
}

}  // namespace hexmire::bench
