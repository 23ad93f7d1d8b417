#pragma once

#include <hexmire/platform/Platform.h>

#include <memory>

namespace hexmire::program {

/// Tells the driver below to leave out the last byte of the next body.
using TruncateNext = std::shared_ptr<bool>;

/// Puts a driver around the one that the platform makes: it passes everything on as it is, but for
/// the message that it is told to cut short.
void AddTruncation(Platform& platform, TruncateNext truncateNext);

}  // namespace hexmire::program
