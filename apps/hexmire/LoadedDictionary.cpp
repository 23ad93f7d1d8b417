#include "LoadedDictionary.h"

#include <hexmire/hosting/Utf8.h>

namespace hexmire::program {

LoadedDictionary::LoadedDictionary(const std::string& path) {
    control_.Events().Error = [this](std::int32_t code, const std::string& text, std::int32_t) {
        errors_.push_back(std::to_string(code) + ' ' + Utf8FromLatin1(text));
    };
    control_.SECSDictionaryFile(path);
    control_.LoadXMLDictionary();
}

}  // namespace hexmire::program
