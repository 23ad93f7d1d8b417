#include "DictionaryFile.h"

#include "Failure.h"

#include <filesystem>

namespace hexmire::program {

std::string FindDictionary(const std::string& asked) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (!asked.empty()) {
        if (!fs::is_regular_file(asked, error)) throw Failure("no such dictionary file: " + asked);
        return asked;
    }
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    for (const fs::path& path : {program.parent_path() / "Default.xml",
                                 fs::path(HEXMIRE_SOURCE_DICTIONARY),
                                 fs::path("Default.xml")}) {
        if (fs::is_regular_file(path, error)) return path.string();
    }
    throw Failure("no dictionary Default.xml found; name one with --dictionary FILE");
}

}  // namespace hexmire::program
