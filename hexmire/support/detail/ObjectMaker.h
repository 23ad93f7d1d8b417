#pragma once

#include <hexmire/support/PassKey.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/detail/BlockPool.h>

#include <memory>
#include <utility>

namespace hexmire::detail {

/// Makes objects of the model.
struct ObjectMaker {
    /// On behalf of a maker, inside one of its routines: missing memory is that routine's fault.
    template <class T, class... Parts>
    [[nodiscard]] static std::shared_ptr<T> Make(const SiteRef& site, Parts&&... parts) {
        if constexpr (kIsTreeNode<T> && kPoolsBlocks) {
            return std::allocate_shared<T>(
                PoolAllocator<T>(), PassKey(), site, std::forward<Parts>(parts)...);
        } else {
            return std::make_shared<T>(PassKey(), site, std::forward<Parts>(parts)...);
        }
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
