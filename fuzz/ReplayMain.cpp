// Runs every file of a folder through a fuzz target: what fuzzing has found stays found.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::size_t Replay(const std::filesystem::path& folder) {
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        std::printf("%s\n", entry.path().filename().c_str());
        // An own block of exactly this size: a sanitizer then sees any read beyond the input.
        const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++files;
    }
    return files;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: replay FOLDER\n", stderr);
        return 2;
    }
    try {
        const std::size_t files = Replay(arguments[1]);
        std::printf("%zu inputs replayed\n", files);
        return files == 0 ? 1 : 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "replay: %s\n", error.what());
        return 1;
    }
}
