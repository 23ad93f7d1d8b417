#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/SECSItem.h>
#include <hexmire/core/detail/ChildNames.h>
#include <hexmire/core/detail/PlainNumber.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/support/ByteOrder.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/Text.h>
#include <hexmire/support/detail/ObjectMaker.h>
#include <hexmire/support/detail/VariantBoxes.h>

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <utility>

namespace hexmire {

namespace {

constexpr RoutineName Routine(const char* name) { return {"SECSItem", name}; }

/// Every format but the list.
bool IsValueFormat(std::int32_t code) {
    switch (code) {
        case FormatBinary:
        case FormatBoolean:
        case FormatAscii:
        case FormatI8:
        case FormatI1:
        case FormatI2:
        case FormatI4:
        case FormatF8:
        case FormatF4:
        case FormatU8:
        case FormatU1:
        case FormatU2:
        case FormatU4:
        case FormatVar:
            return true;
        default:
            return false;
    }
}

/// An item that is made where it is to stay: a pointer that is moved there is written twice.
struct NewItem {
    const SiteRef& Site;
    operator SECSItemPtr() const {  // NOLINT(google-explicit-constructor): that is its use
        return detail::ObjectMaker::Make<SECSItem>(Site);
    }
};

}  // namespace

SECSItem::Rare::Rare() = default;
SECSItem::Rare::~Rare() = default;

SECSItem::SECSItem(PassKey /*key*/, SiteRef site) : site_(std::move(site)) {}

SECSItem::~SECSItem() { TearDown(); }

template <>
std::shared_ptr<SECSItem> New<SECSItem>() {
    return detail::ObjectMaker::MakeForHost<SECSItem>("SECSItem");
}

SnapshotIterator<SECSItem> SECSItem::begin() const { return SnapshotIterator<SECSItem>(children_); }

std::string SECSItem::Description() const {
    std::string text;
    RunRoutine(site_, Routine("Get Description"), [&] {
        if (rare_ != nullptr) text = rare_->Description;
    });
    return text;
}

void SECSItem::Description(std::string_view value) {
    RunRoutine(site_, Routine("Let Description"), [&] {
        if (!value.empty() || rare_ != nullptr) WritableRare().Description = value;
    });
}

std::string SECSItem::Name() const {
    std::string text;
    RunRoutine(site_, Routine("Get Name"), [&] {
        if (rare_ != nullptr) text = rare_->Name;
    });
    return text;
}

void SECSItem::Name(std::string_view value) {
    RunRoutine(site_, Routine("Let Name"), [&] {
        if (value.empty() && rare_ == nullptr) return;
        std::string& name = WritableRare().Name;
        const bool isFirst = name.empty();
        name = value;
        if (!isFirst || !value.empty()) TellParentOfName(isFirst);
    });
}

SECSItem::Rare& SECSItem::WritableRare() {
    if (rare_ == nullptr) rare_ = std::make_unique<Rare>();
    return *rare_;
}

void SECSItem::Format(std::int32_t value) {
    // An illegal code is told in the words of the root item: hosts know this code under 1001.
    const bool isLegal = value == FormatList || (IsValueFormat(value) && !parent_.expired());
    if (isLegal && rawForm_ != RawForm::Number) {
        format_ = static_cast<std::uint8_t>(value);
        return;
    }
    RunRoutine(site_, Routine("Let Format"), [&] {
        if (!isLegal) {
            ReportError(site_, Routine("Let Format"), 1001);
            return;
        }
        if (value != format_) KeepRaw(MakeRaw());
        format_ = static_cast<std::uint8_t>(value);
    });
}

std::int32_t SECSItem::ItemIndex() const noexcept { return parent_.expired() ? 1 : itemIndex_; }

std::int32_t SECSItem::ItemCount() const noexcept {
    return format_ == FormatList ? static_cast<std::int32_t>(ChildCount()) : 0;
}

std::int32_t SECSItem::Length() const noexcept {
    return format_ == FormatList ? static_cast<std::int32_t>(ChildCount()) : length_;
}

void SECSItem::NLB(std::int32_t value) {
    if (value >= 0 && value <= 3) {
        nlb_ = static_cast<std::uint8_t>(value);
        return;
    }
    RunRoutine(site_, Routine("Let NLB"), [&] { ReportError(site_, Routine("Let NLB"), 1003); });
}

void SECSItem::Value(Variant value) noexcept {
    if (rawForm_ != RawForm::Number && rawForm_ != RawForm::Bytes) {
        value_ = std::move(value);
        return;
    }
    RunRoutine(site_, Routine("Let Value"), [&] {
        KeepRaw(MakeRaw());
        value_ = std::move(value);
    });
}

// --- Raw ---------------------------------------------------------------------------------------

Variant SECSItem::Raw() const {
    Variant raw;
    RunRoutine(site_, Routine("Get Raw"), [&] { raw = MakeRaw(); });
    return raw;
}

Variant SECSItem::MakeRaw() const {
    switch (rawForm_) {
        case RawForm::Kept:
            return rare_->Raw;
        case RawForm::Number: {
            const detail::PlainNumber number = detail::PlainNumberOf(format_, value_);
            std::array<std::uint8_t, sizeof(number.Bits)> bytes{};
            WriteBigEndian<bytes.size()>(number.Bits, bytes.data());
            return Variant::Bytes(std::span(bytes).last(number.Width));
        }
        case RawForm::Bytes:
            return detail::VariantAccess::BytesOf(value_);
        case RawForm::Byte:
            return rawByte_;
        case RawForm::Truth:
            return std::int16_t{rawByte_};
        default:
            return {};
    }
}

void SECSItem::KeepRaw(Variant raw) {
    WritableRare();
    rawForm_ = raw.IsEmpty() ? RawForm::Empty : RawForm::Kept;
    rare_->Raw = std::move(raw);
}

// --- Lookup ------------------------------------------------------------------------------------

SECSItemPtr SECSItem::Item(const Variant& value) const {
    // A position that is there needs no fault handler.
    if (value.Kind() == VariantKind::Long && childrenNumbered_) {
        const std::int32_t index = value.AsLong();
        if (index >= 1 && index <= ItemCount()) {
            return (*children_)[static_cast<std::size_t>(index) - 1];
        }
    }
    SECSItemPtr found;
    RunRoutine(site_, Routine("Get Item"), [&] { found = FindChild(value); });
    return found;
}

SECSItemPtr SECSItem::Item(std::string_view name) const {
    SECSItemPtr found;
    RunRoutine(site_, Routine("Get Item"), [&] { found = FindChild(Variant(name)); });
    return found;
}

SECSItemPtr SECSItem::FindChild(const Variant& value) const {
    const auto fail = [this](std::int32_t code) {
        ReportError(site_, Routine("Get Item"), code);
        return SECSItemPtr();
    };
    if (ItemCount() == 0) return fail(1004);
    const VariantKind kind = value.Kind();
    if (kind == VariantKind::Integer || kind == VariantKind::Long) {
        const std::int32_t index =
            kind == VariantKind::Long ? value.AsLong() : std::int32_t{value.AsInteger()};
        if (index < 1 || index > ItemCount()) return fail(1007);
        return FindByIndex(index);
    }
    if (kind != VariantKind::String || value.Text().empty()) return fail(1008);
    SECSItemPtr found = FindByName(value.Text());
    return found != nullptr ? found : fail(1009);
}

SECSItemPtr SECSItem::FindByIndex(std::int32_t index) const {
    // What counts is the stored index; while the children are numbered, it is the position.
    if (childrenNumbered_) return (*children_)[static_cast<std::size_t>(index) - 1];
    const auto found =
        std::find_if(children_->begin(), children_->end(), [index](const SECSItemPtr& child) {
            return child->itemIndex_ == index;
        });
    return found == children_->end() ? nullptr : *found;
}

SECSItemPtr SECSItem::FindByName(std::string_view name) const {
    if (const detail::ChildNames* names = KnownNames(); names != nullptr) {
        try {
            SECSItem* const found = names->Find(name);
            return found == nullptr ? nullptr : found->shared_from_this();
        } catch (const std::bad_alloc&) {
            // The walk needs no memory.
        }
    }
    const auto found =
        std::find_if(children_->begin(), children_->end(), [name](const SECSItemPtr& child) {
            return child->rare_ != nullptr && EqualsIgnoringCase(child->rare_->Name, name);
        });
    return found == children_->end() ? nullptr : *found;
}

/// nullptr where the children are to be walked.
detail::ChildNames* SECSItem::KnownNames() const {
    constexpr std::size_t kShortest = 32;  // A shorter list is walked faster than a name is hashed.
    constexpr std::uint8_t kWalksBefore = 8;  // They have cost as much as noting the names does.
    if (rare_ != nullptr && rare_->ChildNames != nullptr) return rare_->ChildNames.get();
    if (children_->size() < kShortest || ++nameWalks_ < kWalksBefore) return nullptr;
    nameWalks_ = 0;
    // A child tells its parent of a new name: one that has another parent does not.
    if (!std::ranges::all_of(*children_, [this](const SECSItemPtr& child) {
            return child->parent_.lock().get() == this;
        }))
        return nullptr;
    try {
        auto names = std::make_unique<detail::ChildNames>(*children_);
        if (rare_ == nullptr) rare_ = std::make_unique<Rare>();
        rare_->ChildNames = std::move(names);
        return rare_->ChildNames.get();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void SECSItem::ForgetNames() noexcept {
    if (rare_ != nullptr) rare_->ChildNames = nullptr;
}

void SECSItem::TellParentOfName(bool isFirst) noexcept {
    const SECSItemPtr parent = parent_.lock();
    if (parent == nullptr || parent->rare_ == nullptr) return;
    detail::ChildNames* const names = parent->rare_->ChildNames.get();
    if (names == nullptr) return;
    // One that has been torn off, or is not in its place yet, is none of the children.
    const bool isChild =
        parent->childrenNumbered_ && itemIndex_ >= 1 &&
        static_cast<std::size_t>(itemIndex_) <= parent->ChildCount() &&
        (*parent->children_)[static_cast<std::size_t>(itemIndex_) - 1].get() == this;
    if (!(isChild && isFirst && names->Named(*this))) parent->ForgetNames();
}

// --- Changes -----------------------------------------------------------------------------------

SECSItem::ChildList& SECSItem::WritableChildren() {
    if (children_ == nullptr) {
        children_ = std::make_shared<ChildList>();
    } else if (children_.use_count() > 1) {
        children_ = std::make_shared<ChildList>(*children_);
    }
    return *children_;
}

void SECSItem::RenumberFrom(std::size_t position) noexcept {
    const std::size_t first = childrenNumbered_ ? position : 0;
    for (std::size_t index = first; index < children_->size(); ++index) {
        (*children_)[index]->itemIndex_ = static_cast<std::int32_t>(index) + 1;
    }
    childrenNumbered_ = true;
}

void SECSItem::AdoptChild(std::size_t position, SECSItemPtr child) {
    ChildList& children = WritableChildren();
    ForgetNames();
    children.insert(children.begin() + static_cast<std::ptrdiff_t>(position), std::move(child));
    RenumberFrom(position);
}

SECSItemPtr SECSItem::InsertChild(std::size_t position) {
    SECSItemPtr child = detail::ObjectMaker::Make<SECSItem>(site_);
    AdoptChild(position, child);
    child->parent_ = weak_from_this();
    return child;
}

const SECSItemPtr& SECSItem::AppendChild() {
    ChildList& children = WritableChildren();
    SECSItem& child = *children.emplace_back(NewItem{site_});
    if (childrenNumbered_) {
        child.itemIndex_ = static_cast<std::int32_t>(children.size());
    } else {
        RenumberFrom(0);
    }
    child.parent_ = weak_from_this();
    return children.back();
}

SECSItemPtr SECSItem::AddNew(std::int32_t index) {
    SECSItemPtr added;
    RunRoutine(site_, Routine("AddNew"), [&] {
        if (format_ != FormatList) {
            ReportError(site_, Routine("AddNew"), 2002);
        } else if (index < 1 || static_cast<std::size_t>(index) > ChildCount() + 1) {
            ReportError(site_, Routine("AddNew"), 2003);
        } else if (static_cast<std::size_t>(index) == ChildCount() + 1) {
            added = AppendChild();
        } else {
            added = InsertChild(static_cast<std::size_t>(index) - 1);
        }
    });
    return added;
}

Variant SECSItem::Delete() {
    RunRoutine(site_, Routine("Delete"), [&] {
        const SECSItemPtr parent = parent_.lock();
        if (parent == nullptr) {
            ReportError(site_, Routine("Delete"), 1079);
            return;
        }
        const SECSItemPtr self = shared_from_this();  // The parent may hold the last reference.
        if (itemIndex_ < 1 || static_cast<std::size_t>(itemIndex_) > parent->ChildCount()) {
            throw Fault(FaultNumber::SubscriptOutOfRange);
        }
        const auto position = static_cast<std::size_t>(itemIndex_) - 1;
        ChildList& siblings = parent->WritableChildren();
        parent->ForgetNames();
        siblings.erase(siblings.begin() + static_cast<std::ptrdiff_t>(position));
        parent->RenumberFrom(position);
        parent_.reset();
    });
    return {};
}

Variant SECSItem::Duplicate() {
    const SiteScope scope(site_);
    Variant result;
    RunRoutine(site_, Routine("Duplicate"), [&] {
        const SECSItemPtr parent = parent_.lock();
        if (parent == nullptr) {
            ReportError(site_, Routine("Duplicate"), 1133);
            return;
        }
        SECSItemPtr copy = detail::ObjectMaker::Make<SECSItem>(site_);
        copy->parent_ = parent;  // Before the copy: a root item could only become a list.
        ModGeneral::CreateDuplicateItem(copy, shared_from_this());
        if (itemIndex_ < 1 || static_cast<std::size_t>(itemIndex_) > parent->ChildCount()) {
            throw Fault(FaultNumber::SubscriptOutOfRange);
        }
        parent->AdoptChild(static_cast<std::size_t>(itemIndex_), copy);
        result = copy;
    });
    return result;
}

void SECSItem::SetItemIndex(std::int32_t value) noexcept {
    if (value == itemIndex_) return;
    itemIndex_ = value;
    if (const SECSItemPtr parent = parent_.lock(); parent != nullptr) {
        parent->childrenNumbered_ = false;
    }
}

SECSItem* detail::SECSItemAccess::Append(SECSItem& list, std::int32_t index, std::int32_t format) {
    const bool isNext = list.format_ == FormatList && index > 0 &&
                        static_cast<std::size_t>(index) == list.ChildCount() + 1;
    if (!isNext || (format != FormatList && !IsValueFormat(format))) return nullptr;
    SECSItem& child = *list.AppendChild();
    child.format_ = static_cast<std::uint8_t>(format);
    return &child;
}

void detail::SECSItemAccess::Reserve(SECSItem& list, std::size_t count) {
    if (list.children_ == nullptr) list.WritableChildren().reserve(count);
}

void detail::SECSItemAccess::CopyValue(SECSItem& target, const SECSItem& source) {
    if (source.rawForm_ == Form::Empty) {
        if (!source.value_.IsEmpty()) target.Value(source.value_);
        return;
    }
    const bool isSeparate = source.rawForm_ == Form::Kept ||
                            (source.rawForm_ == Form::Number && source.format_ != target.format_);
    if (isSeparate) {
        target.KeepRaw(source.MakeRaw());
    } else {
        target.RawFollows(source.rawForm_, source.rawByte_);
    }
    if (!source.value_.IsEmpty()) target.value_ = source.value_;
}

void detail::SECSItemAccess::AllItems(SECSItem& item, const ChildList& children) {
    item.children_ = std::make_shared<ChildList>(children);
    item.childrenNumbered_ = false;
    item.ForgetNames();
}

// --- End ---------------------------------------------------------------------------------------

// Depth first without the machine's stack: a subtree may be a million lists deep. Every list is
// emptied before the reference to its item goes, so that no destructor finds children of its own.
void SECSItem::TearDown() noexcept {
    if (children_ == nullptr) return;
    RunRoutine(site_, Routine("TearDown"), [&] {
        struct Step {
            std::shared_ptr<ChildList> Children;
            std::size_t Next = 0;
        };
        std::vector<Step> steps;
        const auto takeChildren = [&steps](SECSItem& item) {
            steps.emplace_back().Children = std::exchange(item.children_, nullptr);
            item.childrenNumbered_ = true;
            item.ForgetNames();
        };
        takeChildren(*this);
        while (!steps.empty()) {
            Step& step = steps.back();
            if (step.Next == step.Children->size()) {
                const Step ended = std::move(step);
                steps.pop_back();
                continue;
            }
            SECSItemPtr& child = (*step.Children)[step.Next];
            if (child->children_ != nullptr) {
                takeChildren(*child);
                continue;
            }
            ++step.Next;
            if (step.Children.use_count() > 1) continue;  // A walk goes on.
            const SECSItemPtr ended = std::move(child);
        }
    });
}

}  // namespace hexmire
