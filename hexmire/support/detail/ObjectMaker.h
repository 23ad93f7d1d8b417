#pragma once

#include <hexmire/support/PassKey.h>
#include <hexmire/support/Reporting.h>

#include <memory>

namespace hexmire::detail {

/// Makes objects of the model.
struct ObjectMaker {
    /// On behalf of a maker, inside one of its routines: missing memory is that routine's fault.
    template <class T>
    [[nodiscard]] static std::shared_ptr<T> Make(const SiteRef& site) {
        return std::make_shared<T>(PassKey(), site);
    }

    /// For a host, which is to meet no exception: missing memory is reported.
    template <class T>
    [[nodiscard]] static std::shared_ptr<T> MakeForHost(const char* className) noexcept {
        std::shared_ptr<T> made;
        RunFreeRoutine({className, "Class_Initialize"}, [&] { made = Make<T>(SiteRef()); });
        return made;
    }
};

}  // namespace hexmire::detail
