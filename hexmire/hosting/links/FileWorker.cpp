#include <hexmire/hosting/links/FileWorker.h>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <pthread.h>

#include <condition_variable>
#include <csignal>
#include <list>
#include <mutex>
#include <utility>

namespace hexmire::link {

namespace {

struct Task {
    FileWorker::Work Work;
    FileWorker::Done Done;
    std::string Failure;
};

/// Signals are the host's: none of them is to be handled on a thread that it does not know.
class NoSignals {
public:
    NoSignals() noexcept {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;
    ~NoSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

}  // namespace

/// What both threads use; it lives on with a thread that a hanging disk does not let go.
struct FileWorker::Shared : std::enable_shared_from_this<FileWorker::Shared> {
    explicit Shared(asio::io_context& loop) : Loop(&loop) {}

    void Run() noexcept;
    void TellDone();

    std::mutex Mutex;
    std::condition_variable Changed;
    asio::io_context* Loop;  ///< null: nobody is to be told any more
    std::list<Task> Waiting;
    std::list<Task> Working;  ///< one at most
    std::list<Task> Finished;
    bool Stopping = false;
};

void FileWorker::Shared::Run() noexcept {
    std::unique_lock lock(Mutex);
    for (;;) {
        Changed.wait(lock, [this] { return Stopping || !Waiting.empty(); });
        if (Waiting.empty()) return;
        Working.splice(Working.end(), Waiting, Waiting.begin());
        lock.unlock();
        Task& task = Working.front();
        try {
            task.Failure = task.Work();
        } catch (...) {
            task.Failure = "failed";  // memory that has run out
        }
        task.Work = nullptr;
        lock.lock();
        Finished.splice(Finished.end(), Working);
        if (Loop != nullptr) {
            try {
                asio::post(*Loop, [self = shared_from_this()] { self->TellDone(); });
            } catch (...) {
                // No memory: told together with the next.
            }
        }
        Changed.notify_all();
    }
}

/// On the loop's thread.
void FileWorker::Shared::TellDone() {
    for (;;) {
        std::list<Task> told;
        {
            const std::lock_guard lock(Mutex);
            if (Loop == nullptr || Finished.empty()) return;
            told.splice(told.end(), Finished, Finished.begin());
        }
        try {
            told.front().Done(told.front().Failure);
        } catch (...) {
            // No memory to tell of it; what is behind it is told all the same.
        }
    }
}

FileWorker::FileWorker(asio::io_context& loop) : shared_(std::make_shared<Shared>(loop)) {}

FileWorker::~FileWorker() { Finish(std::chrono::milliseconds(0)); }

void FileWorker::Post(Work work, Done done) {
    std::list<Task> task;
    task.push_back({std::move(work), std::move(done), {}});
    {
        const std::lock_guard lock(shared_->Mutex);
        if (shared_->Stopping) return;
        if (!thread_.joinable()) {
            const NoSignals blocked;
            thread_ = std::thread([shared = shared_] { shared->Run(); });
        }
        shared_->Waiting.splice(shared_->Waiting.end(), task);
    }
    shared_->Changed.notify_all();
}

bool FileWorker::Finish(std::chrono::milliseconds patience) noexcept {
    if (!thread_.joinable()) {
        const std::lock_guard lock(shared_->Mutex);
        shared_->Stopping = true;
        shared_->Loop = nullptr;
        return true;
    }
    std::list<Task> dropped;  // destroyed without the lock
    bool settled = false;
    {
        std::unique_lock lock(shared_->Mutex);
        shared_->Stopping = true;
        shared_->Loop = nullptr;
        shared_->Changed.notify_all();
        settled = shared_->Changed.wait_for(lock, patience, [this] {
            return shared_->Waiting.empty() && shared_->Working.empty();
        });
        dropped.splice(dropped.end(), shared_->Waiting);
        dropped.splice(dropped.end(), shared_->Finished);
    }
    settled ? thread_.join() : thread_.detach();
    return settled;
}

}  // namespace hexmire::link
