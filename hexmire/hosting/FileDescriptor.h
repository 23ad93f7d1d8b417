#pragma once

#include <unistd.h>

#include <utility>

namespace hexmire {

/// Owns one open file descriptor; -1 is none.
class FileDescriptor {
public:
    FileDescriptor() noexcept = default;
    explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() { Close(); }

    [[nodiscard]] bool IsOpen() const noexcept { return descriptor_ >= 0; }
    [[nodiscard]] int Get() const noexcept { return descriptor_; }
    /// Gives the descriptor away; none is left.
    [[nodiscard]] int Release() noexcept { return std::exchange(descriptor_, -1); }
    /// False when the system reports that earlier writes were lost. Closing none succeeds.
    bool Close() noexcept {
        const int descriptor = std::exchange(descriptor_, -1);
        return descriptor < 0 || ::close(descriptor) == 0;
    }

private:
    int descriptor_ = -1;
};

}  // namespace hexmire
