#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace hexmire::fakes {

/// A real folder of its own for one test, gone with it.
class TempFolder {
public:
    TempFolder() : path_(testing::TempDir() + "hexmire-XXXXXX") {
        if (::mkdtemp(path_.data()) == nullptr)
            throw std::runtime_error("no temporary folder: " + path_);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::string& Path() const { return path_; }
    [[nodiscard]] std::string operator/(std::string_view name) const {
        return path_ + '/' + std::string(name);
    }
    /// Writes a file and gives its path.
    std::string Write(std::string_view name, std::string_view bytes) const {
        const std::string path = *this / name;
        std::ofstream(path, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return path;
    }
    [[nodiscard]] static std::string Read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string path_;
};

}  // namespace hexmire::fakes
