#pragma once

#include <hexmire/core/SECSItem.h>

#include <memory>
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
        item.parent_ = parent;
    }
    static void Raw(SECSItem& item, Variant value) noexcept { item.raw_ = std::move(value); }
    static void Value(SECSItem& item, Variant value) noexcept { item.value_ = std::move(value); }
    static void NLB(SECSItem& item, std::uint8_t value) noexcept { item.nlb_ = value; }
    /// The children as they are now; shared with the item until it changes them. May be nullptr.
    static std::shared_ptr<const ChildList> AllItems(const SECSItem& item) noexcept {
        return item.children_;
    }
    /// Adds a child of that format at the end of a list, which keeps it. nullptr, and nothing done,
    /// when the 1-based index is not the next one or the format is none: AddNew knows what to say.
    static SECSItem* Append(SECSItem& list, std::int32_t index, std::int32_t format);
    /// Makes room for children of a list that has had none.
    static void Reserve(SECSItem& list, std::size_t count);
    /// Replaces the children.
    static void AllItems(SECSItem& item, const ChildList& children);
    static void TearDown(SECSItem& item) noexcept { item.TearDown(); }
    /// The name in place: no copy, so no request for memory.
    static std::string_view Name(const SECSItem& item) noexcept {
        return item.texts_ == nullptr ? std::string_view() : item.texts_->Name;
    }
    /// False when neither name nor description have been set.
    static bool HasTexts(const SECSItem& item) noexcept { return item.texts_ != nullptr; }
    static const Variant& Value(const SECSItem& item) noexcept { return item.value_; }
    static const Variant& Raw(const SECSItem& item) noexcept { return item.raw_; }
};

}  // namespace hexmire::detail
