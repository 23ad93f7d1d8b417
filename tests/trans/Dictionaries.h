#pragma once

#include "../fakes/TransHost.h"

#include <string>
#include <vector>

namespace hexmire::fakes {

/// A dictionary of the named entries.
inline SECSDictionaryPtr DictionaryOf(const TransHost& host,
                                      const std::vector<std::string>& names) {
    SECSDictionaryPtr dictionary = host.Make<SECSDictionary>();
    for (const std::string& name : names) {
        dictionary->AddNewTrans(dictionary->TransCount() + 1)->Name(name);
    }
    return dictionary;
}

/// "A1 B2": names and indexes in order.
inline std::string Contents(const SECSDictionary& dictionary) {
    std::string text;
    for (const SECSTransPtr& entry : dictionary) {
        text += (text.empty() ? "" : " ") + entry->Name() + std::to_string(entry->Index());
    }
    return text;
}

}  // namespace hexmire::fakes
