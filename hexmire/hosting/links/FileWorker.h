#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace asio {
class io_context;
}

namespace hexmire::link {

/// Does what may have to wait for a disk, one piece of work after the other, on a thread of its
/// own: a disk that hangs must not hold up the loop. The thread is started by the first piece of
/// work.
///
/// Everything but the work itself runs on the loop's thread. The loop outlives the worker.
class FileWorker {
public:
    /// Runs on the worker's thread; returns what went wrong, "" when nothing did.
    using Work = std::function<std::string()>;
    /// Told by the loop when its work is done.
    using Done = std::function<void(const std::string& failure)>;

    explicit FileWorker(asio::io_context& loop);
    FileWorker(const FileWorker&) = delete;
    FileWorker& operator=(const FileWorker&) = delete;
    ~FileWorker();

    /// Throws std::system_error when there can be no thread. Work that is posted after Finish is
    /// not done.
    void Post(Work work, Done done);

    /// Waits until everything posted has been done, but not longer than this; what then still waits
    /// is dropped. True when nothing had to be. No Done is told any more.
    bool Finish(std::chrono::milliseconds patience) noexcept;

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
    std::thread thread_;
};

}  // namespace hexmire::link
