#pragma once

#include "LinkOptions.h"
#include "equipment/EquipmentOptions.h"

#include <string>

namespace hexmire::program {

class Command;

/// `hexmire host` and `hexmire equipment`: one side of a real link.
struct PeerOptions {
    Role Side = Role::Host;
    LinkOptions Link{};
    std::string Script{};  ///< "": none; "-": the standard input
    bool Json = false;
    EquipmentOptions Equipment{};  ///< of an equipment only
};

void AddPeerOptions(Command command, PeerOptions& options);

/// Runs the script, or serves the link until SIGINT or SIGTERM. Ends an open link with a Separate
/// in every case. Throws Failure or UsageError.
void RunPeer(const PeerOptions& options);

}  // namespace hexmire::program
