#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Reporting.h>

#include <utility>
#include <vector>

/// Deep copy of a subtree.
namespace hexmire::ModGeneral {

namespace {

using Access = detail::SECSItemAccess;

constexpr RoutineName kName{"ModGeneral", "CreateDuplicateItem"};

/// Everything but the children.
void CopyFields(SECSItem& target, const SECSItem& source) {
    if (Access::HasTexts(source)) {
        if (const std::string text = source.Description(); !text.empty()) target.Description(text);
    }
    target.Format(source.Format());
    Access::ItemIndex(target, source.ItemIndex());
    Access::Length(target, Access::Length(source));
    if (Access::HasTexts(source)) {
        if (const std::string name = source.Name(); !name.empty()) target.Name(name);
    }
    target.NLB(source.NLB());
    if (!Access::Raw(source).IsEmpty()) Access::Raw(target, Access::Raw(source));
    if (!Access::Value(source).IsEmpty()) target.Value(Access::Value(source));
}

/// One list whose children are being copied.
struct Step {
    SECSItemPtr Target;
    SECSItemPtr Source;
    std::int32_t Count = 0;
    std::int32_t Next = 1;
};

}  // namespace

void CreateDuplicateItem(const SECSItemPtr& target, const SECSItemPtr& source) {
    // The stack of lists stands in for the machine's: each item is a call of its own, with its own
    // fault boundary.
    std::vector<Step> steps;
    const auto enter = [&steps](const SECSItemPtr& to, const SECSItemPtr& from) {
        RunFreeRoutine(kName, [&] {
            if (to == nullptr || from == nullptr) throw Fault(FaultNumber::ObjectNotSet);
            CopyFields(*to, *from);
            if (from->ItemCount() > 0) steps.push_back({to, from, from->ItemCount()});
        });
    };
    enter(target, source);
    while (!steps.empty()) {
        Step& step = steps.back();
        if (step.Next > step.Count) {
            steps.pop_back();
            continue;
        }
        const std::int32_t index = step.Next++;
        const SECSItemPtr child = step.Target->AddNew(step.Target->ItemCount() + 1);
        const SECSItemPtr original = step.Source->Item(index);
        enter(child, original);
    }
}

}  // namespace hexmire::ModGeneral
