// Loading the shipped dictionary, 268 transactions, beside reading the file alone.
#include <hexmire/control/Hexmire.h>
#include <hexmire/hosting/EventLoop.h>

#include "Benchmarks.h"
#include <benchmark/benchmark.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace hexmire::bench {

namespace {

constexpr const char* kDictionary = HEXMIRE_SOURCE_DIR "/dictionaries/Default.xml";

void LoadDictionary(benchmark::State& state) {
    std::int32_t transactions = 0;
    for (auto _ : state) {
        EventLoop loop;
        Hexmire control(loop.Platform({.MessageLog = false}));
        control.SECSDictionaryFile(kDictionary);
        control.LoadXMLDictionary();
        transactions = control.SECSDictionary()->TransCount();
    }
    if (transactions == 0) throw std::runtime_error("the dictionary did not load");
    state.SetItemsProcessed(transactions * state.iterations());
}

void PlainReadDictionary(benchmark::State& state) {
    for (auto _ : state) {
        std::ifstream file(kDictionary, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file),
                                std::istreambuf_iterator<char>()};
        benchmark::DoNotOptimize(bytes.data());
    }
}

}  // namespace

void RegisterDictionary() {
    benchmark::RegisterBenchmark("LoadDictionary", LoadDictionary)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("PlainReadDictionary", PlainReadDictionary)
        ->Unit(benchmark::kMillisecond);
}

}  // namespace hexmire::bench
