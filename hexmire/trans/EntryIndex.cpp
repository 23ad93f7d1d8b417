#include <hexmire/support/Text.h>
#include <hexmire/trans/SECSTrans.h>
#include <hexmire/trans/detail/EntryIndex.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

#include <algorithm>

namespace hexmire::detail {

namespace {

/// Shorter collections are walked faster than a name is hashed, or than an index of numbers
/// follows what comes and goes.
constexpr std::size_t kShortestByName = 32;
constexpr std::size_t kShortestBySystemBytes = 64;
/// A walk costs about an eighth of what making the index costs for as many entries.
constexpr std::size_t kWalksBefore = 8;

std::int32_t SystemBytesOf(const SECSTrans& entry) { return entry.SystemBytes(); }
std::string NameOf(const SECSTrans& entry) { return UpperCase(SECSTransAccess::Name(entry)); }

template <class Map, class Key>
void Count(Map& map, Key&& key, SECSTrans& entry) {
    auto& found = map[std::forward<Key>(key)];
    if (found.Count == 0) found.First = &entry;
    ++found.Count;
}

/// False when it cannot be told any more which entry is the first.
template <class Map, class Key>
bool Uncount(Map& map, const Key& key, const SECSTrans& entry) {
    const auto place = map.find(key);
    if (place == map.end()) return false;
    if (--place->second.Count == 0) {
        map.erase(place);
        return true;
    }
    return place->second.First != &entry;
}

}  // namespace

template <class Key, class KeyOf>
std::optional<EntryIndex::Found> EntryIndex::Find(Keys<Key>& keys,
                                                  const SECSDictionary& owner,
                                                  const Entries& entries,
                                                  const Key& key,
                                                  KeyOf keyOf) {
    if (!keys.Map) {
        if (++keys.Walks < kWalksBefore) return std::nullopt;
        keys.Walks = 0;
        // An entry tells its collection of changes: one that has another does not.
        if (!std::ranges::all_of(entries, [&owner](const SECSTransPtr& entry) {
                return SECSTransAccess::Parent(*entry).get() == &owner;
            }))
            return std::nullopt;
        std::unordered_map<Key, Found> map;
        map.reserve(entries.size());
        for (const SECSTransPtr& entry : entries)
            Count(map, keyOf(*entry), *entry);
        keys.Map = std::move(map);
    }
    const auto place = keys.Map->find(key);
    return place == keys.Map->end() ? Found() : place->second;
}

std::optional<EntryIndex::Found> EntryIndex::WithSystemBytes(const SECSDictionary& owner,
                                                             const Entries& entries,
                                                             std::int32_t systemBytes) noexcept {
    try {
        if (entries.size() < kShortestBySystemBytes) return std::nullopt;
        return Find(systemBytes_, owner, entries, systemBytes, &SystemBytesOf);
    } catch (...) {
        Forget();  // no memory: the entries are walked
        return std::nullopt;
    }
}

std::optional<EntryIndex::Found> EntryIndex::WithName(const SECSDictionary& owner,
                                                      const Entries& entries,
                                                      std::string_view name) noexcept {
    try {
        if (entries.size() < kShortestByName) return std::nullopt;
        return Find(names_, owner, entries, UpperCase(name), &NameOf);
    } catch (...) {
        Forget();  // no memory: the entries are walked
        return std::nullopt;
    }
}

void EntryIndex::Appended(SECSTrans& entry) noexcept {
    try {
        if (systemBytes_.Map) Count(*systemBytes_.Map, SystemBytesOf(entry), entry);
        if (names_.Map) Count(*names_.Map, NameOf(entry), entry);
    } catch (...) {
        Forget();
    }
}

void EntryIndex::Removed(SECSTrans& entry) noexcept {
    try {
        if ((systemBytes_.Map && !Uncount(*systemBytes_.Map, SystemBytesOf(entry), entry)) ||
            (names_.Map && !Uncount(*names_.Map, NameOf(entry), entry)))
            Forget();
    } catch (...) {
        Forget();
    }
}

void EntryIndex::Forget() noexcept {
    systemBytes_ = {};
    names_ = {};
}

}  // namespace hexmire::detail
