#include <hexmire/support/ModErrorMsg.h>
#include <hexmire/support/Reporting.h>

namespace hexmire {

namespace {

void Trigger(const SiteRef& site, std::int32_t code, const std::string& text) {
    const SiteScope scope(site);
    if (IErrorSink* sink = scope.Site().Sink(); sink != nullptr) sink->TriggerError(code, text, 0);
}

}  // namespace

std::string ContextPrefix(const RoutineName& name) {
    return std::string("(") + name.Class + "-" + name.Routine + ") ";
}

void ReportError(const SiteRef& site,
                 const RoutineName& name,
                 std::int32_t code,
                 const std::string& details) {
    Trigger(site, code, ContextPrefix(name) + ModErrorMsg::FormatErrorMsg(code) + details);
}

void ReportFault(const SiteRef& site, const RoutineName& name, FaultNumber number) noexcept {
    try {
        Trigger(site,
                static_cast<std::int32_t>(number),
                ContextPrefix(name) + FaultDescription(number));
    } catch (...) {  // As below.
    }
}

void ReportCurrentFault(const SiteRef& site, const RoutineName& name) noexcept {
    try {
        const Fault fault = CurrentFault();
        Trigger(site, fault.Number(), ContextPrefix(name) + fault.Description());
    } catch (...) {  // No memory even for the report: there is nobody left to tell.
    }
}

}  // namespace hexmire
