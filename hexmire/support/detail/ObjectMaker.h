#pragma once

#include <hexmire/support/PassKey.h>

#include <memory>

namespace hexmire::detail {

/// Makes objects of the model on behalf of a maker.
struct ObjectMaker {
    template <class T>
    [[nodiscard]] static std::shared_ptr<T> Make(const SiteRef& site) {
        return std::make_shared<T>(PassKey(), site);
    }
};

}  // namespace hexmire::detail
