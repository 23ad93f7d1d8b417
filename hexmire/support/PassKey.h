#pragma once

#include <hexmire/support/Site.h>

#include <memory>

namespace hexmire {

namespace detail {
struct ObjectMaker;
}

template <class T>
std::shared_ptr<T> New();

/// Objects of the model live behind std::shared_ptr only: their constructors ask for this key,
/// which only New and the library itself can make.
class PassKey {
    friend struct detail::ObjectMaker;
    template <class T>
    friend std::shared_ptr<T> New();

    PassKey() noexcept = default;
};

/// Makes an object that belongs to no control: SECSItem, SECSMessage, SECSTrans or SECSDictionary.
/// Its errors go to the control that was created last and is still alive.
template <class T>
[[nodiscard]] std::shared_ptr<T> New() {
    return std::make_shared<T>(PassKey(), SiteRef());
}

}  // namespace hexmire
