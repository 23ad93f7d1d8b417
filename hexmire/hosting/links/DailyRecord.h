#pragma once

#include <hexmire/hosting/IRecordFiles.h>
#include <hexmire/hosting/links/FileWorker.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace hexmire::link {

/// A record that goes on from day to day, one file each: what is added is gathered and handed to
/// the worker. Files that cannot be written cost entries, never memory without bounds and never
/// time: each piece is tried once, the failure is told once, and when writing works again the
/// record says how much is missing.
class DailyRecord {
public:
    /// Bytes that may wait for the disk; further entries are left out.
    static constexpr std::size_t kMostWaiting = std::size_t{64} * 1024 * 1024;

    struct Form {
        std::string Extension;  ///< ".log"
        /// An entry that tells how many are missing before it; empty: that is not told.
        std::function<std::string(std::uint64_t lost)> Gap{};
    };
    /// Told the first failure at a place, and the first after a success there: path and reason.
    using Failed = std::function<void(const std::string& what)>;

    /// Entries that reach no file are counted in `lost`. It outlives the record, as the worker
    /// does.
    DailyRecord(FileWorker& worker,
                std::shared_ptr<IRecordFiles> files,
                Form form,
                std::uint64_t& lost,
                Failed failed);

    /// Where the record is from now on: folder and name, to which the day and the extension are
    /// added, and what a new file begins with.
    void Place(std::string base, std::string start = {});
    /// One entry of this day.
    void Add(std::string_view entry, const std::chrono::year_month_day& date);
    /// Hands over what has been gathered, unless the worker is still busy with what it had before:
    /// then that follows by itself.
    void Flush();
    /// Hands over what has been gathered.
    void HandOver();

private:
    struct Spot {
        std::string Base;
        std::string Start;
        bool IsFailing = false;
    };
    struct Piece {
        std::shared_ptr<Spot> Where;
        std::string Path;
        std::size_t Size = 0;
        std::uint64_t Entries = 0;
        std::uint64_t Told = 0;  ///< missing entries that it tells of
    };
    void OnDone(const std::string& failure, const Piece& piece);

    FileWorker& worker_;
    std::shared_ptr<IRecordFiles> files_;
    Form form_;
    std::uint64_t& lost_;
    Failed failed_;
    std::shared_ptr<Spot> spot_ = std::make_shared<Spot>();
    std::chrono::year_month_day date_{};
    std::string gathered_;
    std::uint64_t entries_ = 0;  // in gathered_
    std::size_t waiting_ = 0;    // bytes that the worker has
    std::uint64_t untold_ = 0;   // lost entries that no file tells of
};

}  // namespace hexmire::link
