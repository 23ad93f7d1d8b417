#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace hexmire::program {

/// Reads a file from its beginning to its end. Throws Failure, "cannot read NAME: reason".
class FileReader {
public:
    /// Messages name the file as `name` says.
    FileReader(const std::string& path, std::string name);
    /// The standard input.
    FileReader();
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;
    ~FileReader();

    /// Number of bytes that were put into the room; 0 at the end.
    [[nodiscard]] std::size_t Read(std::span<char> room);

    /// All that is left. Failure for more than `most` bytes, some MiB: such a file, or device, is
    /// not what was meant.
    [[nodiscard]] std::string ReadAll(std::size_t most = std::size_t{1} << 30U);

private:
    std::string name_;
    int file_;
};

/// The lines of a file.
class FileLines {
public:
    FileLines(const std::string& path, std::string name);

    /// The next line without its end; none at the end of the file. UsageError for a line of more
    /// than `longest` bytes, some MiB.
    [[nodiscard]] std::optional<std::string> Next(std::size_t longest);

private:
    std::string path_;
    FileReader file_;
    std::string read_;
    std::size_t taken_ = 0;  ///< of what was read
    bool hasEnded_ = false;
};

}  // namespace hexmire::program
