#pragma once

#include <hexmire/hexmire.h>

#include <string>
#include <vector>

namespace hexmire::program {

/// A dictionary file in a control of its own, without any link.
class LoadedDictionary {
public:
    explicit LoadedDictionary(const std::string& path);

    /// What loading reported, in UTF-8: "2001 (Hexmire-LoadXMLDictionary) ...".
    [[nodiscard]] const std::vector<std::string>& Errors() const { return errors_; }
    [[nodiscard]] SnapshotIterator<SECSTrans> begin() const {
        return control_.SECSDictionary()->begin();
    }
    [[nodiscard]] std::default_sentinel_t end() const { return {}; }

private:
    EventLoop loop_;
    Hexmire control_{loop_.Platform({.MessageLog = false})};
    std::vector<std::string> errors_;
};

}  // namespace hexmire::program
