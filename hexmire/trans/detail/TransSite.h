#pragma once

#include <hexmire/support/Fault.h>
#include <hexmire/support/Site.h>
#include <hexmire/trans/ITransSite.h>

namespace hexmire::detail {

/// The control that serves the running routine; fault 91 when there is none or it has ended.
[[nodiscard]] inline ITransSite& RequireTransSite(const SiteScope& scope) {
    auto* site = dynamic_cast<ITransSite*>(scope.Site().Sink());
    if (site == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    return *site;
}

}  // namespace hexmire::detail
