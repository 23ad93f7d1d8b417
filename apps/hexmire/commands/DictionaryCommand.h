#pragma once

#include <string>
#include <vector>

namespace hexmire::program {

class Command;

/// `hexmire dictionary check|list|show|from-sml`.
struct DictionaryOptions {
    std::vector<std::string> Files{};
    std::string Dictionary{};  ///< "": the default one
    std::string Pattern{};
    std::string Name{};
    std::vector<std::string> Sml{};  ///< as ReadInput takes them
    bool Json = false;
    bool Latin1 = false;
};

/// Adds the four commands, each of which runs when it was asked for; they throw Failure, UsageError
/// and Told.
void AddDictionaryCommands(Command command, DictionaryOptions& options);

}  // namespace hexmire::program
