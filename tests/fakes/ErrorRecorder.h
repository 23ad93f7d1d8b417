#pragma once

#include <hexmire/core/IMessageSite.h>
#include <hexmire/support/Site.h>
#include <hexmire/support/detail/ObjectMaker.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace hexmire::fakes {

/// One error as it was reported.
struct ReportedError {
    std::int32_t Code = 0;
    std::string Text;
    std::int32_t Line = 0;
    bool operator==(const ReportedError&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const ReportedError& error) {
    return out << error.Code << " \"" << error.Text << "\" line " << error.Line;
}

/// Stands in for the error side of a control: objects that it makes report to it. It is published
/// at once, as a control is, and ends when the test says so.
class ErrorRecorder : public IMessageSite {
public:
    using Reports = std::vector<ReportedError>;

    ErrorRecorder() : owner_(std::make_unique<SiteOwner>(*this)) { owner_->Publish(); }
    ErrorRecorder(const ErrorRecorder&) = delete;
    ErrorRecorder& operator=(const ErrorRecorder&) = delete;
    ~ErrorRecorder() override = default;

    void TriggerError(std::int32_t errorCode,
                      const std::string& errorText,
                      std::int32_t errorLine) override {
        Errors.push_back({errorCode, errorText, errorLine});
        if (OnError) OnError();
    }
    [[nodiscard]] CLogFile* Log() noexcept override { return nullptr; }

    /// The control's end: its handles lead nowhere from now on.
    void End() { owner_.reset(); }
    void Publish() { owner_->Publish(); }
    [[nodiscard]] const SiteRef& Ref() const { return owner_->Ref(); }

    /// An object that this control made.
    template <class T>
    [[nodiscard]] std::shared_ptr<T> Make() const {
        return hexmire::detail::ObjectMaker::Make<T>(Ref());
    }

    /// What was reported since the last call.
    Reports Take() {
        Reports taken;
        taken.swap(Errors);
        return taken;
    }

    Reports Errors;
    /// Runs inside each report, as a host's handler does.
    std::function<void()> OnError;

private:
    std::unique_ptr<SiteOwner> owner_;
};

}  // namespace hexmire::fakes
