#include <hexmire/driver/LinkOutput.h>

namespace hexmire::link {

void LinkOutput::Raise(LinkError code, std::string text) {
    if (code == LinkError::Internal) ++statistics_.InternalFailures;
    const bool summaryOwed = limiter_.NextSummary().has_value();
    if (limiter_.Admit(code, now_)) {
        Emit(RaiseError{code, std::move(text)});
        return;
    }
    ++statistics_.ErrorsLeftOut;
    if (!summaryOwed) Start(TimerId::ErrorWindow, ErrorLimiter::kWindow);
}

void LinkOutput::RaiseSummaries() {
    for (const auto& summary : limiter_.TakeSummaries(now_)) {
        Emit(RaiseError{
            summary.Code,
            ErrorText(summary.Code, std::to_string(summary.Suppressed) + " more left out")});
    }
    if (const auto next = limiter_.NextSummary()) {
        Start(TimerId::ErrorWindow, std::chrono::ceil<std::chrono::milliseconds>(*next - now_));
    }
}

void LinkOutput::TakeActions(std::vector<Action>& into) {
    into.clear();
    std::swap(into, actions_);
}

}  // namespace hexmire::link
