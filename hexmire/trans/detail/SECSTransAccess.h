#pragma once

#include <hexmire/trans/SECSTrans.h>

#include <cstdint>
#include <memory>
#include <string>

namespace hexmire::detail {

/// Members of SECSTrans that only the library uses.
class SECSTransAccess {
public:
    static void Index(SECSTrans& trans, std::int32_t value) noexcept { trans.index_ = value; }
    static std::int32_t StoredIndex(const SECSTrans& trans) noexcept { return trans.index_; }
    static void InProgress(SECSTrans& trans, bool value) noexcept { trans.inProgress_ = value; }
    /// The field is cleared first, then takes the message; the message may be none.
    static void Primary(SECSTrans& trans, SECSMessagePtr message) noexcept;
    static void Secondary(SECSTrans& trans, SECSMessagePtr message) noexcept;
    static std::shared_ptr<SECSDictionary> Parent(const SECSTrans& trans) noexcept {
        return trans.parent_.lock();
    }
    static void Parent(SECSTrans& trans, const std::shared_ptr<SECSDictionary>& parent) noexcept {
        trans.TellKeyChange();
        trans.parent_ = parent;
    }
    static void SystemBytes(SECSTrans& trans, std::int32_t value) noexcept {
        trans.TellKeyChange();
        trans.systemBytes_ = value;
    }

    /// Remaining reply time in seconds. Setting 0 or less reports 2012 and deletes the transaction.
    static std::int32_t T3Timer(const SECSTrans& trans) noexcept { return trans.t3Timer_; }
    static void T3Timer(SECSTrans& trans, std::int32_t value);
    /// True while the reply timer runs.
    static bool T3Start(const SECSTrans& trans) noexcept { return trans.t3Start_; }
    static void T3Start(SECSTrans& trans, bool value) noexcept { trans.t3Start_ = value; }
    /// Seconds spent waiting without a running timer. Setting 4 x T3Timeout or more reports 2015
    /// and deletes the transaction.
    static std::int32_t T3Counter(const SECSTrans& trans) noexcept { return trans.t3Counter_; }
    static void T3Counter(SECSTrans& trans, std::int32_t value);

    /// The texts in place: no copy, so no request for memory.
    static const std::string& Name(const SECSTrans& trans) noexcept { return trans.name_; }
    static const std::string& Description(const SECSTrans& trans) noexcept {
        return trans.description_;
    }

    /// The host's free slots, but those that are empty.
    static void CopySlots(SECSTrans& target, const SECSTrans& source) noexcept {
        CopySlot(target.actionOnError_, source.actionOnError_);
        CopySlot(target.actionOnSuccess_, source.actionOnSuccess_);
        CopySlot(target.tag_, source.tag_);
    }

    static const SiteRef& Site(const SECSTrans& trans) noexcept { return trans.site_; }

private:
    static void CopySlot(Variant& target, const Variant& source) noexcept {
        if (!source.IsEmpty()) target = source;
    }
};

}  // namespace hexmire::detail
