#pragma once

#include <hexmire/core/SECSItem.h>

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace hexmire::detail {

/// Members of SECSItem that only the library uses.
class SECSItemAccess {
public:
    using ChildList = SECSItem::ChildList;

    static void ItemIndex(SECSItem& item, std::int32_t value) noexcept { item.SetItemIndex(value); }
    /// The stored length, also of a list, whose count hides it.
    static std::int32_t Length(const SECSItem& item) noexcept { return item.length_; }
    static void Length(SECSItem& item, std::int32_t value) noexcept { item.length_ = value; }
    static void Parent(SECSItem& item, const SECSItemPtr& parent) noexcept {
        if (const SECSItemPtr before = item.Parent(); before != nullptr) before->ForgetNames();
        item.parent_ = parent;
    }
    /// Raw as it stands, for a value that does not tell it.
    static void KeepRaw(SECSItem& item, Variant raw) { item.KeepRaw(std::move(raw)); }
    /// Raw is the bytes of the value: a number that needs no conversion into the item's format.
    static void RawIsNumber(SECSItem& item) noexcept { item.RawFollows(Form::Number); }
    /// Raw is the bytes of the value: a text, or an array of bytes or of whole numbers.
    static void RawIsBytes(SECSItem& item) noexcept { item.RawFollows(Form::Bytes); }
    static void RawIsByte(SECSItem& item, std::uint8_t byte) noexcept {
        item.RawFollows(Form::Byte, byte);
    }
    /// Raw is an Integer.
    static void RawIsTruth(SECSItem& item, std::uint8_t byte) noexcept {
        item.RawFollows(Form::Truth, byte);
    }
    /// The value of an item that has neither one nor a Raw. It is made in its place: a value that
    /// was written just now is slow to copy.
    template <class T>
    static void FirstValue(SECSItem& item, T&& value) noexcept {
        static_assert(std::is_nothrow_constructible_v<Variant, T>);
        std::destroy_at(&item.value_);
        std::construct_at(&item.value_, std::forward<T>(value));
    }
    static void NLB(SECSItem& item, std::uint8_t value) noexcept { item.nlb_ = value; }
    /// The children as they are now; shared with the item until it changes them. May be nullptr.
    static std::shared_ptr<const ChildList> AllItems(const SECSItem& item) noexcept {
        return item.children_;
    }
    /// Adds a child of that format at the end of a list, which keeps it. nullptr, and nothing done,
    /// when the 1-based index is not the next one or the format is none: AddNew knows what to say.
    static SECSItem* Append(SECSItem& list, std::int32_t index, std::int32_t format);
    static const SiteRef& Site(const SECSItem& item) noexcept { return item.site_; }
    /// Makes room for children of a list that has had none.
    static void Reserve(SECSItem& list, std::size_t count);
    /// Replaces the children.
    static void AllItems(SECSItem& item, const ChildList& children);
    static void TearDown(SECSItem& item) noexcept { item.TearDown(); }
    /// The name in place: no copy, so no request for memory.
    static std::string_view Name(const SECSItem& item) noexcept {
        return item.rare_ == nullptr ? std::string_view() : item.rare_->Name;
    }
    static bool HasTexts(const SECSItem& item) noexcept {
        return !Name(item).empty() || !Description(item).empty();
    }
    static std::string_view Description(const SECSItem& item) noexcept {
        return item.rare_ == nullptr ? std::string_view() : item.rare_->Description;
    }
    /// The child that the 1-based position names, without a use of it; nullptr when only Item can
    /// tell.
    static const SECSItem* Child(const SECSItem& list, std::int32_t index) noexcept {
        const bool isPosition = list.childrenNumbered_ && index >= 1 && index <= list.ItemCount();
        return isPosition ? (*list.children_)[static_cast<std::size_t>(index) - 1].get() : nullptr;
    }
    /// Tells the machine that the item's value is wanted soon.
    static void Fetch(const SECSItem* item) noexcept {
        if (item != nullptr) __builtin_prefetch(&item->value_);
    }
    static const Variant& Value(const SECSItem& item) noexcept { return item.value_; }
    /// Replaces value and Raw by those of another item of the same format; either stays when the
    /// other item has none.
    static void CopyValue(SECSItem& target, const SECSItem& source);

private:
    using Form = SECSItem::RawForm;
};

}  // namespace hexmire::detail
