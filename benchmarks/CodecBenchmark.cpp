// Bodies to trees and back. "Decode" ends with every value read once; "Encode" begins with building
// the tree; "PlainWalk" reads the item headers and copies the values without making anything.
#include <hexmire/sml.h>
#include <hexmire/support/PassKey.h>

#include "Benchmarks.h"
#include "Workloads.h"
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace hexmire::bench {

namespace {

void SetBytes(benchmark::State& state, const Workload& workload) {
    state.SetBytesProcessed(static_cast<std::int64_t>(workload.Bytes.size()) * state.iterations());
}

void Decode(benchmark::State& state, const Workload& workload) {
    for (auto _ : state) {
        const DecodedBody decoded = DecodeBody(workload.Bytes);
        ReadTree(decoded.Message->Root());
    }
    SetBytes(state, workload);
}

void Encode(benchmark::State& state, const Workload& workload) {
    const SECSMessagePtr probe = New<SECSMessage>();
    workload.Build(probe->Root());
    const std::string difference = Difference(workload.Bytes, EncodeBody(*probe));
    if (!difference.empty()) state.SkipWithError(difference.c_str());
    for (auto _ : state) {
        const SECSMessagePtr message = New<SECSMessage>();
        workload.Build(message->Root());
        const Variant body = EncodedBody(*message);
        benchmark::DoNotOptimize(body.View<std::uint8_t>().data());
    }
    SetBytes(state, workload);
}

/// The tree is there: what sending the same message again costs.
void EncodeReady(benchmark::State& state, const Workload& workload) {
    const SECSMessagePtr message = New<SECSMessage>();
    workload.Build(message->Root());
    for (auto _ : state) {
        const Variant body = EncodedBody(*message);
        benchmark::DoNotOptimize(body.View<std::uint8_t>().data());
    }
    SetBytes(state, workload);
}

void PlainWalk(benchmark::State& state, const Workload& workload) {
    ByteVector values(workload.Bytes.size());
    for (auto _ : state) {
        const std::uint8_t* next = workload.Bytes.data();
        const std::uint8_t* const end = next + workload.Bytes.size();
        std::uint8_t* out = values.data();
        while (next != end) {
            const unsigned format = *next >> 2U;
            const unsigned lengthBytes = *next++ & 3U;
            std::size_t length = 0;
            for (unsigned i = 0; i < lengthBytes; ++i)
                length = length << 8U | *next++;
            if (format == FormatList) continue;
            std::memcpy(out, next, length);
            next += length;
            out += length;
        }
        benchmark::DoNotOptimize(out);
        benchmark::ClobberMemory();
    }
    SetBytes(state, workload);
}

void Sml(benchmark::State& state) {
    const SECSMessagePtr message = DecodeBody(EventReport().Bytes).Message;
    for (auto _ : state)
        benchmark::DoNotOptimize(RenderSml(*message, true).data());
}

}  // namespace

void RegisterCodec() {
    for (const Workload& workload : CodecWorkloads()) {
        const auto add = [&workload](const char* subject, auto function) {
            benchmark::RegisterBenchmark(
                (std::string(subject) + "/" + workload.Name).c_str(),
                [&workload, function](benchmark::State& state) { function(state, workload); });
        };
        add("PlainWalk", PlainWalk);
        add("Decode", Decode);
        add("Encode", Encode);
        add("EncodeReady", EncodeReady);
    }
    benchmark::RegisterBenchmark("Sml/a", Sml);
}

}  // namespace hexmire::bench
