#pragma once

#include <hexmire/trans/SECSDictionary.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace hexmire::detail {

/// Members of SECSDictionary that only the library uses.
class SECSDictionaryAccess {
public:
    using Entries = SECSDictionary::Entries;

    /// The entries as they are now; shared with the dictionary until it changes them.
    static std::shared_ptr<const Entries> AllItems(const SECSDictionary& dictionary) noexcept {
        return dictionary.items_;
    }
    /// Adds an entry behind the last one; neither Index nor Parent of the entry is set.
    static void Add(SECSDictionary& dictionary, const std::shared_ptr<SECSTrans>& entry);
    /// Removes and returns the entry at a 1-based position; fault 9 outside.
    static std::shared_ptr<SECSTrans> Remove(SECSDictionary& dictionary, std::int32_t position);
    /// Sets the Index of every entry to its position.
    static void Renumber(SECSDictionary& dictionary) noexcept { dictionary.RenumberFrom(0); }
    /// An entry's name or system bytes are about to change, or the collection that it belongs to.
    static void KeyChanges(SECSDictionary& dictionary) noexcept;
    /// The entry with these system bytes, none where there is none; nothing where the entries are
    /// to be walked: a short collection, or several with the same.
    static std::optional<std::shared_ptr<SECSTrans>> OneWithSystemBytes(SECSDictionary& dictionary,
                                                                        std::int32_t systemBytes);
    /// The first entry of that name in any letter case, likewise.
    static std::optional<std::shared_ptr<SECSTrans>> FirstWithName(SECSDictionary& dictionary,
                                                                   std::string_view name);
    /// Empties the collection; the entries keep their Parent.
    static void TearDown(SECSDictionary& dictionary) noexcept;
};

}  // namespace hexmire::detail
