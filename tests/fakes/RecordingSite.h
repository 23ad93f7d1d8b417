#pragma once

#include <hexmire/core/IMessageSite.h>
#include <hexmire/support/Site.h>

#include "FakeClock.h"
#include "MemoryFiles.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace hexmire::fakes {

/// The little of a control that messages need: it takes their errors and, when asked to, keeps
/// their log. While it lives, objects without a maker and free routines report to it.
///
/// An error is recorded as one text, "13 (SECSMessage-lBuildSECSMessage) Type mismatch", with
/// " line N" behind it when the line indicator is not 0.
class RecordingSite : public IMessageSite {
public:
    RecordingSite() : owner_(*this) { owner_.Publish(); }

    void TriggerError(std::int32_t errorCode,
                      const std::string& errorText,
                      std::int32_t errorLine) override {
        ++ErrorCount;
        if (!KeepTexts) return;
        Errors.push_back(std::to_string(errorCode) + " " + errorText);
        if (errorLine != 0) Errors.back() += " line " + std::to_string(errorLine);
        if (OnError) OnError(errorCode);
    }
    CLogFile* Log() noexcept override { return log_.get(); }

    /// From here on there is a log, at C:\Log\SECSII.log in the files below.
    void StartLog() {
        Files.Directories.insert("C:\\Log");
        log_ = std::make_unique<CLogFile>(Files, Clock, owner_.Ref());
        log_->FileName("C:\\Log\\SECSII.log");
    }
    /// The whole log of 5 March 2024.
    [[nodiscard]] std::string LogText() const {
        const auto found = Files.Files.find("C:\\Log\\SECSII_2024-03-05.log");
        return found == Files.Files.end() ? "" : found->second.Content;
    }

    std::vector<std::string> Errors;
    std::size_t ErrorCount = 0;
    /// False: errors are counted only.
    bool KeepTexts = true;
    /// Runs inside each error, as a host's handler does.
    std::function<void(std::int32_t code)> OnError;
    FakeClock Clock;
    MemoryFiles Files;

private:
    SiteOwner owner_;
    std::unique_ptr<CLogFile> log_;
};

}  // namespace hexmire::fakes
