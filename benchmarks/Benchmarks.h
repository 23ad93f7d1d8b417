#pragma once

/// Each function registers the benchmarks of one subject. The name of a benchmark that is a measure
/// for another begins with "Plain": the same bytes moved without the library, in the same run.
namespace hexmire::bench {

void RegisterCodec();
void RegisterTexts();
void RegisterControl();
void RegisterLinks();
void RegisterSecs1();
void RegisterDictionary();
void RegisterGrowth();

}  // namespace hexmire::bench
