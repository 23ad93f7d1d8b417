#pragma once

#include <hexmire/hosting/EventLoop.h>

#include "Interrupt.h"
#include "LineSource.h"
#include "Peer.h"
#include "Script.h"

namespace hexmire::program {

/// Does what a script says with one side of a link.
class ScriptRunner {
public:
    /// All four outlive the runner.
    ScriptRunner(EventLoop& loop, Peer& peer, LineSource& lines, const Interrupt& interrupt)
        : loop_(loop), peer_(peer), lines_(lines), interrupt_(interrupt) {}

    /// Runs to the end of the script or to "quit". Throws Failure, with the line's number, at the
    /// first command that fails, and when the program is interrupted.
    void Run();

private:
    /// False when the script ends here.
    bool Do(const Command& command);
    void Do(const ConnectCommand& command);
    void Do(const SendCommand& command);
    void Do(const ExpectCommand& command);
    void CheckInterrupt() const;

    EventLoop& loop_;
    Peer& peer_;
    LineSource& lines_;
    const Interrupt& interrupt_;
};

}  // namespace hexmire::program
