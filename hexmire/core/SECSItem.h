#pragma once

#include <hexmire/core/ItemFormat.h>
#include <hexmire/support/PassKey.h>
#include <hexmire/support/Variant.h>

#include <concepts>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire {

class SECSItem;

namespace detail {
class ChildNames;
class SECSItemAccess;

template <>
inline constexpr bool kIsTreeNode<SECSItem> = true;
}  // namespace detail

using SECSItemPtr = std::shared_ptr<SECSItem>;

/// C++ integers that name a 1-based position.
template <class T>
concept PositionInteger = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char>;

/// The position as a Variant: an integer that fits 32 bits is a Long, a wider one is no position.
template <PositionInteger T>
[[nodiscard]] Variant PositionVariant(T value) noexcept {
    if (std::in_range<std::int32_t>(value)) return static_cast<std::int32_t>(value);
    return value;
}

/// Walks shared objects in order, over what the collection held when the walk began: the body of
/// the loop may insert and delete.
template <class T>
class SnapshotIterator {
public:
    using value_type = std::shared_ptr<T>;
    using difference_type = std::ptrdiff_t;
    using iterator_concept = std::forward_iterator_tag;

    SnapshotIterator() = default;
    explicit SnapshotIterator(std::shared_ptr<const std::vector<value_type>> entries)
        : entries_(std::move(entries)) {}
    const value_type& operator*() const { return (*entries_)[index_]; }
    SnapshotIterator& operator++() {
        ++index_;
        return *this;
    }
    SnapshotIterator operator++(int) {
        SnapshotIterator before = *this;
        ++index_;
        return before;
    }
    bool operator==(const SnapshotIterator&) const = default;
    bool operator==(std::default_sentinel_t) const {
        return entries_ == nullptr || index_ >= entries_->size();
    }

private:
    std::shared_ptr<const std::vector<value_type>> entries_;
    std::size_t index_ = 0;
};

/// One node of the tree of data items that forms the body of a message (SEMI E5, data items): a
/// list holds children, any other item a value.
///
/// A root item is one without parent: its format can only be 0 (list), and it can be neither
/// deleted nor duplicated. Rejected arguments are reported through the control's `Error` event and
/// change nothing. Single-threaded; call from the loop thread.
class SECSItem : public std::enable_shared_from_this<SECSItem> {
public:
    SECSItem(PassKey key, SiteRef site);
    SECSItem(const SECSItem&) = delete;
    SECSItem& operator=(const SECSItem&) = delete;
    ~SECSItem();

    /// The children in order ("for each"); the loop body may add and delete children.
    [[nodiscard]] SnapshotIterator<SECSItem> begin() const;
    [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

    /// Free text.
    [[nodiscard]] std::string Description() const;
    void Description(std::string_view value);

    /// Format code, one of enmItemFormat; 63 (any format) at first. Error 1001 for an illegal code
    /// and for anything but 0 on a root item. Children and value stay as they are.
    [[nodiscard]] std::int32_t Format() const noexcept { return format_; }
    void Format(std::int32_t value);

    /// 1-based position among the parent's children; 1 for a root item.
    [[nodiscard]] std::int32_t ItemIndex() const noexcept;

    /// A child by its 1-based position (16- or 32-bit integer) or its name (any letter case, first
    /// match). Errors 1004 no list or no children, 1007 no such position, 1008 neither integer nor
    /// text or an empty text, 1009 no such name; then none.
    [[nodiscard]] SECSItemPtr Item(const Variant& value) const;
    template <PositionInteger T>
    [[nodiscard]] SECSItemPtr Item(T position) const {
        return Item(PositionVariant(position));
    }
    [[nodiscard]] SECSItemPtr Item(std::string_view name) const;
    [[nodiscard]] SECSItemPtr Item(const std::string& name) const {
        return Item(std::string_view(name));
    }
    [[nodiscard]] SECSItemPtr Item(const char* name) const {
        return Item(std::string_view(name == nullptr ? "" : name));
    }

    /// Number of children of a list; 0 for any other format.
    [[nodiscard]] std::int32_t ItemCount() const noexcept;

    /// Number of children of a list; otherwise the length in bytes that the last encoding used (0
    /// before it; decoding leaves it).
    [[nodiscard]] std::int32_t Length() const noexcept;

    /// Names need not be unique.
    [[nodiscard]] std::string Name() const;
    void Name(std::string_view value);

    /// Number of length bytes that the last encoding used, [0..3]; error 1003 outside. What a host
    /// sets has no effect on the bytes sent.
    [[nodiscard]] std::int32_t NLB() const noexcept { return nlb_; }
    void NLB(std::int32_t value);

    /// The list that holds this item; none for a root item and after Delete.
    [[nodiscard]] SECSItemPtr Parent() const noexcept { return parent_.lock(); }

    /// The item's value bytes as the last encoding or decoding left them; Empty before.
    [[nodiscard]] Variant Raw() const;

    /// The value, stored as it stands, whatever the format.
    [[nodiscard]] Variant Value() const { return value_; }
    void Value(Variant value) noexcept;

    /// Inserts a new child (format 63, no name, no value) so that it takes the 1-based position;
    /// ItemCount + 1 appends. Errors 2002 not a list, 2003 no such place; then none.
    SECSItemPtr AddNew(std::int32_t index);

    /// Takes this item out of its parent; it keeps its own children. Error 1079 for a root item.
    /// Always Empty.
    Variant Delete();

    /// Copies this item with its subtree and inserts the copy right behind it. The result refers to
    /// the copy; error 1133 and Empty for a root item.
    Variant Duplicate();

private:
    friend class detail::SECSItemAccess;

    using ChildList = std::vector<SECSItemPtr>;
    /// What few items have.
    struct Rare {
        std::string Name;
        std::string Description;
        Variant Raw;
        std::unique_ptr<detail::ChildNames> ChildNames;

        Rare();
        Rare(const Rare&) = delete;
        Rare& operator=(const Rare&) = delete;
        ~Rare();
    };
    /// What Raw tells. Most of the time it follows from the value, and takes no memory until the
    /// value changes.
    enum class RawForm : std::uint8_t {
        Empty,
        Kept,    ///< what lies in Rare
        Number,  ///< the bytes of the number that the value is in the item's format
        Bytes,   ///< the bytes of the text or array that the value is
        Byte,    ///< rawByte_
        Truth,   ///< rawByte_ as an Integer
    };

    [[nodiscard]] std::size_t ChildCount() const noexcept {
        return children_ == nullptr ? 0 : children_->size();
    }
    [[nodiscard]] SECSItemPtr FindChild(const Variant& value) const;
    [[nodiscard]] SECSItemPtr FindByIndex(std::int32_t index) const;
    [[nodiscard]] SECSItemPtr FindByName(std::string_view name) const;
    [[nodiscard]] detail::ChildNames* KnownNames() const;
    void ForgetNames() noexcept;
    void TellParentOfName(bool isFirst) noexcept;
    ChildList& WritableChildren();
    Rare& WritableRare();
    SECSItemPtr InsertChild(std::size_t position);
    const SECSItemPtr& AppendChild();
    void AdoptChild(std::size_t position, SECSItemPtr child);
    void RenumberFrom(std::size_t position) noexcept;
    void SetItemIndex(std::int32_t value) noexcept;
    [[nodiscard]] Variant MakeRaw() const;
    void KeepRaw(Variant raw);
    void RawFollows(RawForm form, std::uint8_t byte = 0) noexcept {
        if (rawForm_ == RawForm::Kept) rare_->Raw = Variant();
        rawForm_ = form;
        rawByte_ = byte;
    }
    void TearDown() noexcept;

    // Together with the counts in front of the object, what encoding needs takes 64 bytes.
    Variant value_;
    std::int32_t length_ = 0;
    std::uint8_t format_ = FormatVar;
    std::uint8_t nlb_ = 0;
    RawForm rawForm_ = RawForm::Empty;
    std::uint8_t rawByte_ = 0;
    // Walkers share the list; whoever changes it while it is shared changes a copy.
    std::shared_ptr<ChildList> children_;
    std::weak_ptr<SECSItem> parent_;
    mutable std::unique_ptr<Rare> rare_;
    SiteRef site_;
    std::int32_t itemIndex_ = 0;
    bool childrenNumbered_ = true;  // Child k carries the index k, for every k.
    mutable std::uint8_t nameWalks_ = 0;
};

template <>
[[nodiscard]] std::shared_ptr<SECSItem> New<SECSItem>();

}  // namespace hexmire
