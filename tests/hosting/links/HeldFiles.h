#pragma once

#include <hexmire/hosting/IRecordFiles.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::test {

/// Files in memory that fail or wait when they are told to. Used from two threads.
class HeldFiles final : public IRecordFiles {
public:
    std::string Append(const std::string& path,
                       std::string_view start,
                       std::string_view bytes) override {
        std::unique_lock lock(mutex_);
        Wait(lock);
        ++writes_;
        if (!failure_.empty()) return failure_;
        std::string& file = files_[path];
        if (file.empty()) file = start;
        file += bytes;
        return "";
    }
    std::string Store(const std::string& folder,
                      const std::string& name,
                      std::string_view bytes) override {
        std::unique_lock lock(mutex_);
        Wait(lock);
        ++writes_;
        if (failure_.empty()) files_[folder + "/" + name] = bytes;
        return failure_;
    }

    /// From now on every operation ends like this; "": well.
    void Fail(std::string failure) {
        const std::lock_guard lock(mutex_);
        failure_ = std::move(failure);
    }
    /// Operations wait until Release.
    void Hold() {
        const std::lock_guard lock(mutex_);
        held_ = true;
    }
    void Release() {
        const std::lock_guard lock(mutex_);
        held_ = false;
        changed_.notify_all();
    }
    /// True while an operation waits.
    [[nodiscard]] bool IsWaiting() {
        const std::lock_guard lock(mutex_);
        return waiting_;
    }
    [[nodiscard]] int Writes() {
        const std::lock_guard lock(mutex_);
        return writes_;
    }
    [[nodiscard]] std::map<std::string, std::string> Files() {
        const std::lock_guard lock(mutex_);
        return files_;
    }

private:
    void Wait(std::unique_lock<std::mutex>& lock) {
        waiting_ = held_;
        changed_.wait(lock, [this] { return !held_; });
        waiting_ = false;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, std::string> files_;
    std::string failure_;
    int writes_ = 0;
    bool held_ = false;
    bool waiting_ = false;
};

}  // namespace hexmire::test
