#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/detail/ObjectMaker.h>
#include <hexmire/trans/SECSDictionary.h>
#include <hexmire/trans/SECSTrans.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>
#include <hexmire/trans/detail/SECSTransAccess.h>
#include <hexmire/trans/detail/TransSite.h>

#include <utility>

namespace hexmire {

namespace {

constexpr std::int32_t kLargestDeviceId = 32767;
constexpr std::int32_t kFuncOfReply = 2;   // A new primary has function 1.
constexpr std::int32_t kWaitingLimit = 4;  // Times T3, for an entry whose timer never started.

constexpr RoutineName Routine(const char* name) { return {"SECSTrans", name}; }

}  // namespace

SECSTrans::SECSTrans(PassKey key, SiteRef site)
    : SECSTrans(key, std::move(site), nullptr, nullptr) {}

SECSTrans::SECSTrans(PassKey /*key*/,
                     SiteRef site,
                     SECSMessagePtr primary,
                     SECSMessagePtr secondary)
    : primary_(std::move(primary)), secondary_(std::move(secondary)), site_(std::move(site)) {
    if (primary_ == nullptr) primary_ = detail::ObjectMaker::Make<SECSMessage>(site_);
    if (secondary_ == nullptr) {
        secondary_ = detail::ObjectMaker::Make<SECSMessage>(site_);
        secondary_->Func(kFuncOfReply);
    }
    RunRoutine(site_, Routine("Class_Initialize"), [&] {
        const SiteScope scope(site_);
        const ITransSite& control = detail::RequireTransSite(scope);
        deviceId_ = control.DeviceID();
        t3Timer_ = control.T3Timeout();
    });
}

SECSTrans::~SECSTrans() = default;

template <>
std::shared_ptr<SECSTrans> New<SECSTrans>() {
    return detail::ObjectMaker::MakeForHost<SECSTrans>("SECSTrans");
}

void SECSTrans::ActionOnError(Variant value) noexcept { actionOnError_ = std::move(value); }

void SECSTrans::ActionOnSuccess(Variant value) noexcept { actionOnSuccess_ = std::move(value); }

void SECSTrans::Tag(Variant value) noexcept { tag_ = std::move(value); }

std::string SECSTrans::Description() const {
    std::string text;
    RunRoutine(site_, Routine("Get Description"), [&] { text = description_; });
    return text;
}

void SECSTrans::Description(std::string_view value) {
    RunRoutine(site_, Routine("Let Description"), [&] { description_ = value; });
}

std::string SECSTrans::Name() const {
    std::string text;
    RunRoutine(site_, Routine("Get Name"), [&] { text = name_; });
    return text;
}

void SECSTrans::Name(std::string_view value) {
    TellKeyChange();
    RunRoutine(site_, Routine("Let Name"), [&] { name_ = value; });
}

/// A collection may have its own way to entries by name and by system bytes.
void SECSTrans::TellKeyChange() const noexcept {
    if (const SECSDictionaryPtr parent = parent_.lock(); parent != nullptr) {
        detail::SECSDictionaryAccess::KeyChanges(*parent);
    }
}

void SECSTrans::DeviceID(std::int32_t value) {
    if (value >= 0 && value <= kLargestDeviceId) {
        deviceId_ = value;
        return;
    }
    RunRoutine(
        site_, Routine("Let DeviceID"), [&] { ReportError(site_, Routine("Let DeviceID"), 1047); });
}

std::int32_t SECSTrans::Index() const noexcept { return parent_.expired() ? 0 : index_; }

Variant SECSTrans::Delete() {
    const SiteScope scope(site_);
    RunRoutine(site_, Routine("Delete"), [&] {
        const SECSDictionaryPtr parent = parent_.lock();
        if (parent == nullptr) {
            ReportError(site_, Routine("Delete"), 1079);
            return;
        }
        const SECSTransPtr self =
            shared_from_this();  // The collection may hold the last reference.
        const SECSTransPtr removed = detail::SECSDictionaryAccess::Remove(*parent, index_);
        // Another one had its place: this one stays, and tells the collection nothing any more.
        if (removed != self) detail::SECSDictionaryAccess::KeyChanges(*parent);
        detail::SECSDictionaryAccess::Renumber(*parent);
        parent_.reset();
    });
    return {};
}

// --- Inside the library ------------------------------------------------------------------------

namespace detail {

void SECSTransAccess::Primary(SECSTrans& trans, SECSMessagePtr message) noexcept {
    trans.primary_.reset();
    trans.primary_ = std::move(message);
}

void SECSTransAccess::Secondary(SECSTrans& trans, SECSMessagePtr message) noexcept {
    trans.secondary_.reset();
    trans.secondary_ = std::move(message);
}

// Expiry is told first; the handler still finds the transaction where it was.
void SECSTransAccess::T3Timer(SECSTrans& trans, std::int32_t value) {
    trans.t3Timer_ = value;
    if (value > 0) return;
    const SECSTransPtr self = trans.shared_from_this();
    RunRoutine(trans.site_, Routine("Let T3Timer"), [&] {
        if (trans.primary_ == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        ReportError(trans.site_,
                    Routine("Let T3Timer"),
                    2012,
                    " For [SystemBytes-" + std::to_string(trans.systemBytes_) + "] S" +
                        std::to_string(trans.primary_->Stream()) + "F" +
                        std::to_string(trans.primary_->Func()));
        trans.Delete();
    });
}

void SECSTransAccess::T3Counter(SECSTrans& trans, std::int32_t value) {
    trans.t3Counter_ = value;
    const SECSTransPtr self = trans.shared_from_this();
    RunRoutine(trans.site_, Routine("Let T3Counter"), [&] {
        const SiteScope scope(trans.site_);
        if (value < kWaitingLimit * RequireTransSite(scope).T3Timeout()) return;
        ReportError(trans.site_, Routine("Let T3Counter"), 2015, " For " + trans.name_);
        trans.Delete();
    });
}

}  // namespace detail

}  // namespace hexmire
