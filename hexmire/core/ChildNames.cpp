#include <hexmire/core/detail/ChildNames.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/support/Text.h>

namespace hexmire::detail {

ChildNames::ChildNames(const std::vector<SECSItemPtr>& children) {
    first_.reserve(children.size());
    for (const SECSItemPtr& child : children) {
        if (const std::string_view name = SECSItemAccess::Name(*child); !name.empty()) {
            first_.try_emplace(UpperCase(name), child.get());
        }
    }
}

SECSItem* ChildNames::Find(std::string_view name) const {
    const auto found = first_.find(UpperCase(name));
    return found == first_.end() ? nullptr : found->second;
}

bool ChildNames::Named(SECSItem& child) noexcept {
    try {
        return first_.try_emplace(UpperCase(SECSItemAccess::Name(child)), &child).second;
    } catch (...) {
        return false;
    }
}

}  // namespace hexmire::detail
