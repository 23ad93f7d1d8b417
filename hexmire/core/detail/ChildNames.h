#pragma once

#include <hexmire/core/SECSItem.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace hexmire::detail {

/// Spares the walk through a long list to what is looked up by name. What it tells is what a walk
/// would find: the first child of that name, in any letter case. It follows names that are given to
/// children without one; the list forgets it with every other change.
class ChildNames {
public:
    /// Names of the children; std::bad_alloc when there is no memory for them.
    explicit ChildNames(const std::vector<SECSItemPtr>& children);

    /// nullptr when no child has that name; std::bad_alloc for a long name without memory for it.
    [[nodiscard]] SECSItem* Find(std::string_view name) const;
    /// A child that had no name has got one. False when it cannot be told which is the first now.
    [[nodiscard]] bool Named(SECSItem& child) noexcept;

private:
    std::unordered_map<std::string, SECSItem*> first_;
};

}  // namespace hexmire::detail
