#include "FileReader.h"

#include "Failure.h"
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace hexmire::program {

namespace {

constexpr std::size_t kPiece = std::size_t{64} << 10;

[[noreturn]] void ThrowUnreadable(const std::string& name) {
    throw Failure("cannot read " + name + ": " + std::strerror(errno));
}

}  // namespace

FileReader::FileReader(const std::string& path, std::string name)
    : name_(std::move(name)), file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {
    if (file_ < 0) ThrowUnreadable(name_);
}

FileReader::FileReader() : name_("the standard input"), file_(STDIN_FILENO) {}

FileReader::~FileReader() {
    if (file_ != STDIN_FILENO) ::close(file_);
}

std::size_t FileReader::Read(std::span<char> room) {
    ssize_t count = 0;
    do {
        count = ::read(file_, room.data(), room.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) ThrowUnreadable(name_);
    return static_cast<std::size_t>(count);
}

std::string FileReader::ReadAll(std::size_t most) {
    std::string text;
    std::array<char, kPiece> room{};
    while (const std::size_t count = Read(room)) {
        if (text.size() + count > most)
            throw Failure(name_ + " is larger than " + std::to_string(most >> 20U) + " MiB");
        text.append(room.data(), count);
    }
    return text;
}

FileLines::FileLines(const std::string& path, std::string name)
    : path_(path), file_(path, std::move(name)) {}

std::optional<std::string> FileLines::Next(std::size_t longest) {
    std::array<char, kPiece> room{};
    std::size_t end = read_.find('\n', taken_);
    while (end == std::string::npos && !hasEnded_) {
        read_.erase(0, std::exchange(taken_, 0));
        if (read_.size() > longest) break;
        const std::size_t searched = read_.size();
        const std::size_t count = file_.Read(room);
        read_.append(room.data(), count);
        hasEnded_ = count == 0;
        end = read_.find('\n', searched);
    }
    const bool isLast = end == std::string::npos;
    if (isLast) end = read_.size();
    if (end - taken_ > longest)
        throw UsageError(path_ + ": a line is longer than " + std::to_string(longest >> 20U) +
                         " MiB");
    if (isLast && end == taken_) return std::nullopt;
    std::string line = read_.substr(taken_, end - taken_);
    taken_ = isLast ? end : end + 1;
    return line;
}

}  // namespace hexmire::program
