#pragma once

#include <hexmire/support/Site.h>

#include <cstdint>
#include <vector>

namespace hexmire::detail {

/// The only state of the process that outlives its objects: the counter that all transactions take
/// their system bytes from, and the reference to the control that standalone objects report to.
struct ProcessState {
    std::int32_t SystemBytesCounter = 0;
    std::vector<SiteCell*> PublishedSites;  // In the order of publication; the last one serves.
};

[[nodiscard]] ProcessState& State() noexcept;

}  // namespace hexmire::detail
