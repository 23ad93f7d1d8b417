#pragma once

#include <hexmire/trans/SECSTrans.h>

#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire {

namespace detail {
class EntryIndex;
class SECSDictionaryAccess;
}  // namespace detail

/// An ordered collection of transactions: the control's templates, and its table of transactions in
/// use. Positions are 1-based; names are no keys, several entries may share one. Single-threaded;
/// call from the loop thread.
class SECSDictionary : public std::enable_shared_from_this<SECSDictionary> {
public:
    SECSDictionary(PassKey key, SiteRef site);
    SECSDictionary(const SECSDictionary&) = delete;
    SECSDictionary& operator=(const SECSDictionary&) = delete;
    ~SECSDictionary();

    /// The entries in order ("for each"); the loop body may insert and delete.
    [[nodiscard]] SnapshotIterator<hexmire::SECSTrans> begin() const;
    [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

    [[nodiscard]] std::string Description() const;
    void Description(std::string_view value);

    /// An entry by 1-based position (16- or 32-bit integer) or by name (letter case counts, first
    /// match). Errors 1020 empty dictionary, 1022 below 1, 1026 above TransCount, 1025 no such
    /// name, 1024 neither integer nor text; an empty text gives none without error.
    [[nodiscard]] std::shared_ptr<hexmire::SECSTrans> SECSTrans(const Variant& value) const;
    template <PositionInteger T>
    [[nodiscard]] std::shared_ptr<hexmire::SECSTrans> SECSTrans(T position) const {
        return SECSTrans(PositionVariant(position));
    }
    [[nodiscard]] std::shared_ptr<hexmire::SECSTrans> SECSTrans(std::string_view name) const;
    [[nodiscard]] std::shared_ptr<hexmire::SECSTrans> SECSTrans(const std::string& name) const {
        return SECSTrans(std::string_view(name));
    }
    [[nodiscard]] std::shared_ptr<hexmire::SECSTrans> SECSTrans(const char* name) const {
        return SECSTrans(std::string_view(name == nullptr ? "" : name));
    }

    [[nodiscard]] std::int32_t TransCount() const noexcept;

    /// Inserts a new transaction so that it takes the 1-based position; TransCount + 1 appends.
    /// Error 2004 outside; then none.
    std::shared_ptr<hexmire::SECSTrans> AddNewTrans(std::int32_t index);

private:
    friend class detail::SECSDictionaryAccess;

    using Entries = std::vector<std::shared_ptr<hexmire::SECSTrans>>;

    [[nodiscard]] std::shared_ptr<hexmire::SECSTrans> FindTrans(const Variant& value) const;
    Entries& WritableItems();
    void RenumberFrom(std::size_t position) noexcept;

    // Walkers share the entries; whoever changes them while they are shared changes a copy.
    std::shared_ptr<Entries> items_;
    std::unique_ptr<detail::EntryIndex> index_;
    std::string description_ = "Default Dictionary";
    SiteRef site_;
};

using SECSDictionaryPtr = std::shared_ptr<SECSDictionary>;

template <>
[[nodiscard]] std::shared_ptr<SECSDictionary> New<SECSDictionary>();

}  // namespace hexmire
