#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/trans/TransFactory.h>
#include <hexmire/trans/detail/SECSTransAccess.h>
#include <hexmire/trans/detail/TransSite.h>

#include <string>
#include <utility>

namespace hexmire::ModGeneral {

namespace {

using Access = detail::SECSTransAccess;
using MessageAccess = detail::SECSMessageAccess;

}  // namespace

void CreateNewTrans(const SECSTransPtr& target, const SECSTransPtr& source) {
    CreateNewTrans(target, source, nullptr);
}

void CreateNewTrans(const SECSTransPtr& target,
                    const SECSTransPtr& source,
                    const SECSMessage* kept) {
    const SiteScope scope(target == nullptr ? SiteRef() : Access::Site(*target));
    RunFreeRoutine({"ModGeneral", "CreateNewTrans"}, [&] {
        if (target == nullptr || source == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        Access::Parent(*target, nullptr);
        Access::CopySlots(*target, *source);
        target->AutoSystemBytes(source->AutoSystemBytes());
        if (!Access::Description(*source).empty())
            target->Description(Access::Description(*source));
        target->DeviceID(detail::RequireTransSite(scope).DeviceID());
        target->Name(Access::Name(*source));
        target->ReplyExpected(source->ReplyExpected());
        Access::SystemBytes(*target, source->SystemBytes());
        const auto copy = [kept](const SECSMessagePtr& to, const SECSMessagePtr& from) {
            if (kept == nullptr || to.get() != kept) CreateSECSMessage(to, from);
        };
        copy(target->Primary(), source->Primary());
        copy(target->Secondary(), source->Secondary());
    });
}

void CreateSECSMessage(const SECSMessagePtr& target, const SECSMessagePtr& source) {
    const SiteScope scope(target == nullptr ? SiteRef() : MessageAccess::Site(*target));
    RunFreeRoutine({"ModGeneral", "CreateSECSMessage"}, [&] {
        if (target == nullptr || source == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        if (const std::string text = source->Description(); !text.empty())
            target->Description(text);
        target->Func(source->Func());
        MessageAccess::Length(*target, source->Length());
        if (const std::string name = source->Name(); !name.empty()) target->Name(name);
        if (Variant raw = source->Raw(); !raw.IsEmpty()) target->Raw(std::move(raw));
        MessageAccess::CopyRawHex(*target, *source);
        target->Stream(source->Stream());
        if (source->Root()->ItemCount() < 1) return;
        // A body is one item: what else the root holds stays behind.
        const SECSItemPtr root = target->Root();
        const SECSItemPtr copy = root->AddNew(root->ItemCount() + 1);
        CreateDuplicateItem(copy, source->Root()->Item(std::int32_t{1}));
    });
}

}  // namespace hexmire::ModGeneral
