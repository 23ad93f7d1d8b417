#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace hexmire {

class SECSDictionary;
class SECSTrans;

namespace detail {

/// Spares the walk through a long collection of transactions to what is looked up by system bytes
/// or by name. It is made when walks have cost as much as making it, follows what is appended and
/// removed, and is forgotten by every other change: what it tells is what a walk would find.
class EntryIndex {
public:
    using Entries = std::vector<std::shared_ptr<SECSTrans>>;

    /// What has the key: how many entries, and the first of them as long as Count is 1 or none has
    /// been removed.
    struct Found {
        SECSTrans* First = nullptr;
        std::size_t Count = 0;
    };

    /// Nothing where the entries are to be walked.
    [[nodiscard]] std::optional<Found> WithSystemBytes(const SECSDictionary& owner,
                                                       const Entries& entries,
                                                       std::int32_t systemBytes) noexcept;
    /// The same; names are compared in any letter case.
    [[nodiscard]] std::optional<Found> WithName(const SECSDictionary& owner,
                                                const Entries& entries,
                                                std::string_view name) noexcept;

    void Appended(SECSTrans& entry) noexcept;
    void Removed(SECSTrans& entry) noexcept;
    /// Entries have been inserted, or a key has changed.
    void Forget() noexcept;

private:
    template <class Key>
    struct Keys {
        std::optional<std::unordered_map<Key, Found>> Map;
        std::size_t Walks = 0;
    };
    template <class Key, class KeyOf>
    std::optional<Found> Find(Keys<Key>& keys,
                              const SECSDictionary& owner,
                              const Entries& entries,
                              const Key& key,
                              KeyOf keyOf);

    Keys<std::int32_t> systemBytes_;
    Keys<std::string> names_;
};

}  // namespace detail

}  // namespace hexmire
