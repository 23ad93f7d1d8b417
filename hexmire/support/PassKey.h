#pragma once

#include <hexmire/support/Site.h>

#include <memory>

namespace hexmire {

namespace detail {

struct ObjectMaker;

/// True for what a tree has many of: the memory of ended ones is kept for the next.
template <class T>
inline constexpr bool kIsTreeNode = false;

}  // namespace detail

/// Objects of the model live behind std::shared_ptr only: their constructors ask for this key,
/// which only the library itself can make.
class PassKey {
    friend struct detail::ObjectMaker;

    PassKey() noexcept = default;
};

/// Makes an object that belongs to no control: SECSItem, SECSMessage, SECSTrans or SECSDictionary.
/// Its errors go to the control that was created last and is still alive. Without memory for it
/// that control is told fault 7 in the name of the class's "Class_Initialize", and there is none.
template <class T>
[[nodiscard]] std::shared_ptr<T> New() = delete;

}  // namespace hexmire
