#pragma once

namespace hexmire::program {

/// The whole program: reads the command line, does what it asks, tells failures in one line on the
/// standard error. Exit status 0: what was asked happened; 1: it did not; 2: it was not understood.
[[nodiscard]] int Run(int argc, const char* const* argv);

}  // namespace hexmire::program
