#pragma once

/// Everything that a host includes: the control, its object model, the tools for SML and message
/// bodies, and the loop that carries it all. A host that brings its own surroundings includes
/// <hexmire/control/Hexmire.h> alone and needs no more than the C++ standard library.
#include <hexmire/control/Hexmire.h>
#include <hexmire/core/ItemFormat.h>
#include <hexmire/hosting/EventLoop.h>
#include <hexmire/sml.h>
