#pragma once

#include <hexmire/support/Fault.h>
#include <hexmire/support/Site.h>
#include <hexmire/trans/ITransSite.h>

namespace hexmire::detail {

/// The control that serves the running routine; fault 91 when there is none or it has ended.
[[nodiscard]] inline ITransSite& RequireTransSite(const SiteScope& scope) {
    IErrorSink* sink = scope.Site().Sink();
    if (sink == nullptr || sink->Serves() != IErrorSink::Service::Transactions)
        throw Fault(FaultNumber::ObjectNotSet);
    return static_cast<ITransSite&>(*sink);
}

}  // namespace hexmire::detail
