#include <hexmire/control/detail/Control.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Text.h>
#include <hexmire/support/detail/ObjectMaker.h>
#include <hexmire/trans/TransFactory.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

/// Working transactions: empty ones and copies of templates.
namespace hexmire::detail {

namespace {

constexpr const char* kNewTransaction = "NewSECSTransaction";

bool HasItems(const SECSMessage& message) { return message.Root()->ItemCount() > 0; }

}  // namespace

SECSTransPtr Control::NewSECSTransaction() {
    SECSTransPtr result;
    RunOwn(kNewTransaction, [&] {
        RequireAlive();
        result = ObjectMaker::Make<SECSTrans>(site_.Ref());
    });
    return result;
}

SECSTransPtr Control::NewSECSTransaction(const Variant& value) {
    SECSTransPtr result;
    RunOwn(kNewTransaction, [&] {
        RequireTemplates();
        SECSTransPtr found;
        const VariantKind kind = value.Kind();
        if (kind == VariantKind::String) {
            found = TemplateFor(value.Text());
        } else if (dictionary_->TransCount() < 1) {
            RaiseOwnError(kNewTransaction, 1020);
        } else if (kind == VariantKind::Integer || kind == VariantKind::Long) {
            found = TemplateByIndex(kind == VariantKind::Long ? value.AsLong()
                                                              : std::int32_t{value.AsInteger()});
        } else {
            RaiseOwnError(kNewTransaction, 1027);
        }
        if (found != nullptr) result = CopyOf(found);
    });
    return result;
}

SECSTransPtr Control::NewSECSTransaction(std::string_view name) {
    SECSTransPtr result;
    RunOwn(kNewTransaction, [&] {
        RequireTemplates();
        if (const SECSTransPtr found = TemplateFor(name); found != nullptr) result = CopyOf(found);
    });
    return result;
}

void Control::RequireTemplates() const {
    RequireAlive();
    if (dictionary_ == nullptr) throw Fault(FaultNumber::ObjectNotSet);
}

SECSTransPtr Control::TemplateFor(std::string_view name) {
    if (dictionary_->TransCount() < 1) {
        RaiseOwnError(kNewTransaction, 1020);
        return nullptr;
    }
    if (TrimBlanks(name).empty()) {
        RaiseOwnError(kNewTransaction, 1027);
        return nullptr;
    }
    return TemplateByName(name);
}

SECSTransPtr Control::TemplateByIndex(std::int32_t index) {
    if (index < 1) {
        RaiseOwnError(kNewTransaction, 1022);
        return nullptr;
    }
    if (index > dictionary_->TransCount()) {
        RaiseOwnError(kNewTransaction, 1026);
        return nullptr;
    }
    return (*SECSDictionaryAccess::AllItems(*dictionary_))[static_cast<std::size_t>(index) - 1];
}

SECSTransPtr Control::TemplateByName(std::string_view name) {
    const auto known = SECSDictionaryAccess::FirstWithName(*dictionary_, name);
    if (known && *known != nullptr) return *known;
    if (known) {
        RaiseOwnError(kNewTransaction, 1025);
        return nullptr;
    }
    for (const SECSTransPtr& entry : *SECSDictionaryAccess::AllItems(*dictionary_)) {
        if (EqualsIgnoringCase(SECSTransAccess::Name(*entry), name)) return entry;
    }
    RaiseOwnError(kNewTransaction, 1025);
    return nullptr;
}

SECSTransPtr Control::CopyOf(const SECSTransPtr& source) const {
    SECSTransPtr copy = ObjectMaker::Make<SECSTrans>(site_.Ref());
    ModGeneral::CreateNewTrans(copy, source);
    return copy;
}

// What the received message takes the place of is copied only where it has items: copying them may
// be an error to tell.

SECSTransPtr Control::TransWithPrimary(const SECSTransPtr& source,
                                       const SECSMessagePtr& message) const {
    if (source != nullptr && HasItems(*source->Primary())) {
        SECSTransPtr trans = CopyOf(source);
        SECSTransAccess::Primary(*trans, message);
        return trans;
    }
    SECSTransPtr trans = ObjectMaker::Make<SECSTrans>(site_.Ref(), message, nullptr);
    if (source != nullptr) ModGeneral::CreateNewTrans(trans, source, message.get());
    return trans;
}

SECSTransPtr Control::TransWithSecondary(const SECSTransPtr& source,
                                         const SECSMessagePtr& message) const {
    if (source != nullptr && HasItems(*source->Secondary())) {
        SECSTransPtr trans = CopyOf(source);
        SECSTransAccess::Secondary(*trans, message);
        return trans;
    }
    SECSTransPtr trans = ObjectMaker::Make<SECSTrans>(site_.Ref(), nullptr, message);
    if (source != nullptr) ModGeneral::CreateNewTrans(trans, source, message.get());
    return trans;
}

}  // namespace hexmire::detail
