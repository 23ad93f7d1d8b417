#pragma once

#include "LinkOptions.h"

namespace hexmire::program {

class Command;

/// `hexmire demo`: a host and a simulated equipment talk over HSMS-SS on the loopback address, in
/// one process, on one loop.
void AddDemoOptions(Command command, LinkOptions& options);

/// Shows it all on the standard output. Throws Failure when anything did not happen as it should.
void RunDemo(const LinkOptions& options);

}  // namespace hexmire::program
