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

void ReadValue(const Variant& value) {
    if (value.IsString()) {
        benchmark::DoNotOptimize(value.Text().data());
    } else if (value.Kind() == VariantKind::DecimalArray) {
        for (const Decimal& element : value.View<Decimal>())
            benchmark::DoNotOptimize(&element);
    } else {
        benchmark::DoNotOptimize(&value);
    }
}

void ReadTree(const SECSItemPtr& item) {
    for (const SECSItemPtr& child : *item) {
        ReadValue(child->Value());
        if (child->Format() == FormatList) ReadTree(child);
    }
}

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
        benchmark::DoNotOptimize(EncodeBody(*message).data());
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

/// A list that a host fills one item at a time.
void BuildTree(benchmark::State& state) {
    for (auto _ : state) {
        const SECSMessagePtr message = New<SECSMessage>();
        const SECSItemPtr list = message->Root()->AddNew(1);
        list->Format(FormatList);
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            list->AddNew(list->ItemCount() + 1)->Format(FormatU4);
        }
        benchmark::DoNotOptimize(list->ItemCount());
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

/// Every item of a list looked up by its position.
void LookUp(benchmark::State& state) {
    const SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr list = message->Root()->AddNew(1);
    list->Format(FormatList);
    for (std::int64_t i = 0; i < state.range(0); ++i)
        list->AddNew(list->ItemCount() + 1);
    for (auto _ : state) {
        for (std::int32_t i = 1; i <= state.range(0); ++i)
            benchmark::DoNotOptimize(list->Item(i));
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
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
    }
    benchmark::RegisterBenchmark("Sml/a", Sml);
    benchmark::RegisterBenchmark("BuildTree", BuildTree)->Arg(1'024)->Arg(65'536);
    benchmark::RegisterBenchmark("LookUp", LookUp)->Arg(1'024)->Arg(65'536);
}

}  // namespace hexmire::bench
