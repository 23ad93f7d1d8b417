#include "Benchmarks.h"
#include <benchmark/benchmark.h>

int main(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
    hexmire::bench::RegisterCodec();
    hexmire::bench::RegisterTexts();
    hexmire::bench::RegisterControl();
    hexmire::bench::RegisterLinks();
    hexmire::bench::RegisterSecs1();
    hexmire::bench::RegisterDictionary();
    hexmire::bench::RegisterGrowth();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
