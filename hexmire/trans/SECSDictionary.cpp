#include <hexmire/support/Fault.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/detail/ObjectMaker.h>
#include <hexmire/trans/SECSDictionary.h>
#include <hexmire/trans/detail/EntryIndex.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

#include <algorithm>
#include <utility>

namespace hexmire {

namespace {

constexpr RoutineName Routine(const char* name) { return {"SECSDictionary", name}; }

}  // namespace

SECSDictionary::SECSDictionary(PassKey /*key*/, SiteRef site)
    : items_(std::make_shared<Entries>()),
      index_(std::make_unique<detail::EntryIndex>()),
      site_(std::move(site)) {}

SECSDictionary::~SECSDictionary() = default;

template <>
std::shared_ptr<SECSDictionary> New<SECSDictionary>() {
    return detail::ObjectMaker::MakeForHost<SECSDictionary>("SECSDictionary");
}

SnapshotIterator<hexmire::SECSTrans> SECSDictionary::begin() const {
    return SnapshotIterator<hexmire::SECSTrans>(items_);
}

std::string SECSDictionary::Description() const {
    std::string text;
    RunRoutine(site_, Routine("Get Description"), [&] { text = description_; });
    return text;
}

void SECSDictionary::Description(std::string_view value) {
    RunRoutine(site_, Routine("Let Description"), [&] { description_ = value; });
}

std::int32_t SECSDictionary::TransCount() const noexcept {
    return static_cast<std::int32_t>(items_->size());
}

SECSTransPtr SECSDictionary::SECSTrans(const Variant& value) const {
    SECSTransPtr found;
    RunRoutine(site_, Routine("Get SECSTrans"), [&] { found = FindTrans(value); });
    return found;
}

SECSTransPtr SECSDictionary::SECSTrans(std::string_view name) const {
    SECSTransPtr found;
    RunRoutine(site_, Routine("Get SECSTrans"), [&] { found = FindTrans(Variant(name)); });
    return found;
}

SECSTransPtr SECSDictionary::FindTrans(const Variant& value) const {
    const auto fail = [this](std::int32_t code) {
        ReportError(site_, Routine("Get SECSTrans"), code);
        return SECSTransPtr();
    };
    if (items_->empty()) return fail(1020);
    switch (value.Kind()) {
        case VariantKind::String: {
            if (value.Text().empty()) return nullptr;
            if (const auto known = index_->WithName(*this, *items_, value.Text()); known) {
                if (known->Count == 0) return fail(1025);
                if (detail::SECSTransAccess::Name(*known->First) == value.Text()) {
                    return known->First->shared_from_this();
                }
                if (known->Count == 1) return fail(1025);
            }
            const auto found =
                std::find_if(items_->begin(), items_->end(), [&](const SECSTransPtr& entry) {
                    return detail::SECSTransAccess::Name(*entry) == value.Text();
                });
            return found == items_->end() ? fail(1025) : *found;
        }
        case VariantKind::Integer:
        case VariantKind::Long: {
            const std::int32_t index = value.Kind() == VariantKind::Long
                                           ? value.AsLong()
                                           : std::int32_t{value.AsInteger()};
            if (index < 1) return fail(1022);
            if (index > TransCount()) return fail(1026);
            return (*items_)[static_cast<std::size_t>(index) - 1];
        }
        default:
            return fail(1024);
    }
}

SECSTransPtr SECSDictionary::AddNewTrans(std::int32_t index) {
    const SiteScope scope(site_);
    SECSTransPtr added;
    RunRoutine(site_, Routine("AddNewTrans"), [&] {
        SECSTransPtr trans = detail::ObjectMaker::Make<hexmire::SECSTrans>(site_);
        if (index < 1 || index > TransCount() + 1) {
            ReportError(site_, Routine("AddNewTrans"), 2004);
            return;
        }
        const auto position = static_cast<std::size_t>(index) - 1;
        Entries& entries = WritableItems();
        const bool isLast = position == entries.size();
        entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(position), trans);
        if (isLast) {
            index_->Appended(*trans);
        } else {
            index_->Forget();
        }
        // Every change leaves the entries numbered, so those in front still are.
        RenumberFrom(position);
        detail::SECSTransAccess::Parent(*trans, shared_from_this());
        added = std::move(trans);
    });
    return added;
}

SECSDictionary::Entries& SECSDictionary::WritableItems() {
    if (items_.use_count() > 1) items_ = std::make_shared<Entries>(*items_);
    return *items_;
}

void SECSDictionary::RenumberFrom(std::size_t position) noexcept {
    for (std::size_t index = position; index < items_->size(); ++index) {
        detail::SECSTransAccess::Index(*(*items_)[index], static_cast<std::int32_t>(index) + 1);
    }
}

namespace detail {

void SECSDictionaryAccess::Add(SECSDictionary& dictionary, const SECSTransPtr& entry) {
    dictionary.WritableItems().push_back(entry);
    dictionary.index_->Appended(*entry);
}

SECSTransPtr SECSDictionaryAccess::Remove(SECSDictionary& dictionary, std::int32_t position) {
    if (position < 1 || position > dictionary.TransCount()) {
        throw Fault(FaultNumber::SubscriptOutOfRange);
    }
    auto& entries = dictionary.WritableItems();
    const auto place = entries.begin() + (position - 1);
    dictionary.index_->Removed(**place);
    // By exchanges: moving each entry would ask each time whether the one before it ends.
    for (auto next = place + 1; next != entries.end(); ++next)
        std::iter_swap(next - 1, next);
    SECSTransPtr removed = std::move(entries.back());
    entries.pop_back();
    return removed;
}

void SECSDictionaryAccess::TearDown(SECSDictionary& dictionary) noexcept {
    dictionary.index_->Forget();
    RunRoutine(dictionary.site_, Routine("TearDown"), [&] {
        if (dictionary.items_.use_count() > 1) {
            dictionary.items_ = std::make_shared<SECSDictionary::Entries>();
        } else {
            // No request for memory; the last entries end when the dictionary is empty already.
            const auto released = std::exchange(*dictionary.items_, {});
        }
    });
}

void SECSDictionaryAccess::KeyChanges(SECSDictionary& dictionary) noexcept {
    dictionary.index_->Forget();
}

std::optional<SECSTransPtr> SECSDictionaryAccess::OneWithSystemBytes(SECSDictionary& dictionary,
                                                                     std::int32_t systemBytes) {
    const auto found =
        dictionary.index_->WithSystemBytes(dictionary, *dictionary.items_, systemBytes);
    if (!found || found->Count > 1) return std::nullopt;
    return found->Count == 0 ? nullptr : found->First->shared_from_this();
}

std::optional<SECSTransPtr> SECSDictionaryAccess::FirstWithName(SECSDictionary& dictionary,
                                                                std::string_view name) {
    const auto found = dictionary.index_->WithName(dictionary, *dictionary.items_, name);
    if (!found) return std::nullopt;
    return found->Count == 0 ? nullptr : found->First->shared_from_this();
}

}  // namespace detail

}  // namespace hexmire
