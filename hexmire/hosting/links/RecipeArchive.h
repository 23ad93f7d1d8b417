#pragma once

#include <hexmire/driver/LinkSettings.h>
#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/driver/trace/TraceText.h>
#include <hexmire/hosting/links/FileWorker.h>
#include <hexmire/hosting/links/RecordSite.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace hexmire::link {

/// Keeps a copy of every process program that passes: the PPBODY of each S7F3 and S7F6, in one file
/// a PPID, in one folder for those that were sent and another for those that were received. A later
/// one of the same PPID replaces the file.
class RecipeArchive {
public:
    /// Process programs that may wait for the disk, in bytes; further ones are not stored.
    static constexpr std::size_t kMostWaiting = std::size_t{64} * 1024 * 1024;
    /// Told each process program that could not be stored, and why.
    using Failed = std::function<void(const std::string& what)>;

    RecipeArchive(FileWorker& worker, RecordSite site, LinkStatistics& statistics, Failed failed);

    void Configure(const LinkSettings& settings);
    /// A message that has been sent or received whole.
    void Take(TraceDirection direction,
              std::span<const std::uint8_t, 10> header,
              std::span<const std::uint8_t> body);

private:
    void Store(const std::string& folder, std::string name, std::span<const std::uint8_t> body);
    void OnDone(const std::string& failure, const std::string& path, std::size_t size);
    void Fail(const std::string& what);

    FileWorker& worker_;
    RecordSite site_;
    LinkStatistics& statistics_;
    Failed failed_;
    bool isOn_ = false;
    std::string sendFolder_;
    std::string receiveFolder_;
    std::size_t waiting_ = 0;  // bytes that the worker has
};

}  // namespace hexmire::link
