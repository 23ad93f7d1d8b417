#pragma once

#include <hexmire/hosting/IRecordFiles.h>

#include <chrono>
#include <functional>
#include <memory>

namespace hexmire::link {

/// Where the records of a link go and what time they bear. Tests bring their own.
struct RecordSite {
    std::shared_ptr<IRecordFiles> Files;
    std::function<std::chrono::system_clock::time_point()> Now;

    /// The real files and the system's wall clock.
    [[nodiscard]] static RecordSite System();
};

}  // namespace hexmire::link
