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
    if (const std::string_view text = Access::Description(source); !text.empty()) {
        target.Description(text);
    }
    target.Format(source.Format());
    Access::ItemIndex(target, source.ItemIndex());
    Access::Length(target, Access::Length(source));
    if (const std::string_view name = Access::Name(source); !name.empty()) target.Name(name);
    target.NLB(source.NLB());
    Access::CopyValue(target, source);
}

/// One list whose children are being copied.
struct Step {
    SECSItem& Target;
    const SECSItem& Source;
    std::int32_t Count = 0;
    std::int32_t Next = 1;
    // They hold the two while they are copied.
    SECSItemPtr TargetUse;
    std::shared_ptr<const SECSItem> SourceUse;
};

/// The stack of lists stands in for the machine's: each item is a call of its own, with its own
/// fault boundary.
class Copying {
public:
    void Run(const SECSItemPtr& target, const SECSItemPtr& source) {
        Copy(target.get(), source.get());
        while (!steps_.empty()) {
            if (steps_.back().Next > steps_.back().Count) {
                const Step ended = std::move(steps_.back());
                steps_.pop_back();
            } else {
                CopyChild(steps_.back());
            }
        }
    }

private:
    void Copy(SECSItem* target, const SECSItem* source) {
        RunFreeRoutine(kName, [&] {
            if (target == nullptr || source == nullptr) throw Fault(FaultNumber::ObjectNotSet);
            // A text may find no memory, and the handler that is told may delete either item.
            const bool isSafe = !Access::HasTexts(*source);
            const SECSItemPtr targetUse = isSafe ? nullptr : target->shared_from_this();
            const auto sourceUse = isSafe ? nullptr : source->shared_from_this();
            CopyFields(*target, *source);
            if (const std::int32_t count = source->ItemCount(); count > 0) {
                if (target->Format() == FormatList) {
                    Access::Reserve(*target, static_cast<std::size_t>(count));
                }
                steps_.push_back({*target,
                                  *source,
                                  count,
                                  1,
                                  target->shared_from_this(),
                                  source->shared_from_this()});
            }
        });
    }

    void CopyChild(Step& step) {
        const std::int32_t index = step.Next++;
        const std::int32_t place = step.Target.ItemCount() + 1;
        const SECSItem* original = Access::Child(step.Source, index);
        if (original != nullptr) {
            SECSItem* child = nullptr;
            bool isDone = false;
            RunRoutine(Access::Site(step.Target), {"SECSItem", "AddNew"}, [&] {
                child = Access::Append(step.Target, place, FormatVar);
                isDone = true;
            });
            if (child != nullptr || !isDone) {
                Copy(child, original);
                return;
            }
        }
        const SECSItemPtr child = step.Target.AddNew(place);
        const SECSItemPtr found = step.Source.Item(index);
        Copy(child.get(), found.get());
    }

    std::vector<Step> steps_;
};

}  // namespace

void CreateDuplicateItem(const SECSItemPtr& target, const SECSItemPtr& source) {
    Copying().Run(target, source);
}

}  // namespace hexmire::ModGeneral
