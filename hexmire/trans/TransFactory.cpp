#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/trans/TransFactory.h>
#include <hexmire/trans/detail/SECSTransAccess.h>
#include <hexmire/trans/detail/TransSite.h>

namespace hexmire::ModGeneral {

namespace {

using Access = detail::SECSTransAccess;
using MessageAccess = detail::SECSMessageAccess;

}  // namespace

void CreateNewTrans(const SECSTransPtr& target, const SECSTransPtr& source) {
    const SiteScope scope(target == nullptr ? SiteRef() : Access::Site(*target));
    RunFreeRoutine({"ModGeneral", "CreateNewTrans"}, [&] {
        if (target == nullptr || source == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        Access::Parent(*target, nullptr);
        if (!source->ActionOnError().IsEmpty()) target->ActionOnError(source->ActionOnError());
        if (!source->ActionOnSuccess().IsEmpty())
            target->ActionOnSuccess(source->ActionOnSuccess());
        target->AutoSystemBytes(source->AutoSystemBytes());
        if (!Access::Description(*source).empty())
            target->Description(Access::Description(*source));
        target->DeviceID(detail::RequireTransSite(scope).DeviceID());
        target->Name(Access::Name(*source));
        target->ReplyExpected(source->ReplyExpected());
        Access::SystemBytes(*target, source->SystemBytes());
        if (!source->Tag().IsEmpty()) target->Tag(source->Tag());
        CreateSECSMessage(target->Primary(), source->Primary());
        CreateSECSMessage(target->Secondary(), source->Secondary());
    });
}

void CreateSECSMessage(const SECSMessagePtr& target, const SECSMessagePtr& source) {
    const SiteScope scope(target == nullptr ? SiteRef() : MessageAccess::Site(*target));
    RunFreeRoutine({"ModGeneral", "CreateSECSMessage"}, [&] {
        if (target == nullptr || source == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        if (!source->Description().empty()) target->Description(source->Description());
        target->Func(source->Func());
        MessageAccess::Length(*target, source->Length());
        if (!source->Name().empty()) target->Name(source->Name());
        if (!source->Raw().IsEmpty()) target->Raw(source->Raw());
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
