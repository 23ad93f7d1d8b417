#pragma once

#include "ChildProcess.h"

#include <string>
#include <vector>

namespace hexmire::fakes {

/// What the program did with a command line.
struct ProgramRun {
    int Status = 0;
    std::string Output;
    std::string Errors;

    friend bool operator==(const ProgramRun&, const ProgramRun&) = default;
};

/// Runs the program to its end.
inline ProgramRun RunProgram(const std::vector<std::string>& words, const std::string& input = {}) {
    ChildProcess program(HEXMIRE_PROGRAM, words);
    if (!input.empty()) program.Write(input);
    program.CloseInput();
    ProgramRun run;
    run.Status = program.Wait();
    run.Output = program.Output();
    run.Errors = program.Errors();
    return run;
}

/// For messages of a test that fails.
inline void PrintTo(const ProgramRun& run, std::ostream* out) {
    *out << "status " << run.Status << "\n" << run.Output << "errors: " << run.Errors;
}

}  // namespace hexmire::fakes
