#pragma once

#include <hexmire/support/Fault.h>
#include <hexmire/support/Site.h>

#include <cstdint>
#include <string>
#include <utility>

namespace hexmire {

/// Where an error happened, as its text names it: class or module, and routine. Property accessors
/// are named "Get " or "Let " and the property.
struct RoutineName {
    const char* Class;
    const char* Routine;
};

/// "(Class-Routine) "
[[nodiscard]] std::string ContextPrefix(const RoutineName& name);

/// Reports one of the system's own codes to the control that serves `site`: prefix, the code's
/// fixed text, `details` behind it. Line 0.
void ReportError(const SiteRef& site,
                 const RoutineName& name,
                 std::int32_t code,
                 const std::string& details = {});

/// Reports the exception that is being handled as a fault: its number, prefix and description, line
/// 0. To be called inside a catch block only. Never throws.
void ReportCurrentFault(const SiteRef& site, const RoutineName& name) noexcept;

/// Reports a fault without an exception, for a routine that knows it beforehand and meets it often.
void ReportFault(const SiteRef& site, const RoutineName& name, FaultNumber number) noexcept;

/// Runs the body of a routine under its own fault handler: a fault stops the body and is reported
/// in the routine's name.
template <class Body>
void RunRoutine(const SiteRef& site, const RoutineName& name, Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        ReportCurrentFault(site, name);
    }
}

/// The same for a free routine, which reports to the current control.
template <class Body>
void RunFreeRoutine(const RoutineName& name, Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        ReportCurrentFault(CurrentSite(), name);
    }
}

}  // namespace hexmire
