#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hexmire::program {

/// Something in a dictionary file that loads otherwise than it looks, and its line.
struct DictionaryFinding {
    std::size_t Line = 0;
    std::string Text;
};

struct CheckedDictionary {
    std::vector<DictionaryFinding> Findings;  ///< by line
    std::size_t Transactions = 0;
};

/// Checks a file. Throws Failure when it cannot be read.
[[nodiscard]] CheckedDictionary CheckDictionary(const std::string& path);

}  // namespace hexmire::program
