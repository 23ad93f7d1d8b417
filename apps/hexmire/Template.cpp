#include "Template.h"

#include <vector>

namespace hexmire::program {

namespace {

bool Repeats(const SECSItem& item) {
    return item.Format() == FormatList && item.Description().starts_with("any number of");
}

/// A value stands in the item or somewhere below it.
bool IsFilled(const SECSItemPtr& item) {
    std::vector<SECSItemPtr> open{item};
    while (!open.empty()) {
        const SECSItemPtr next = open.back();
        open.pop_back();
        if (next->Format() != FormatList && !next->Value().IsEmpty()) return true;
        for (const SECSItemPtr& child : *next)
            open.push_back(child);
    }
    return false;
}

}  // namespace

bool HasReply(const SECSTrans& trans) {
    const SECSMessage& secondary = *trans.Secondary();
    return !secondary.Name().empty() || !secondary.Description().empty() ||
           secondary.Root()->ItemCount() > 0;
}

void DropExamples(const SECSMessage& message) {
    std::vector<SECSItemPtr> open{message.Root()};
    while (!open.empty()) {
        const SECSItemPtr list = open.back();
        open.pop_back();
        const bool repeats = Repeats(*list);
        for (const SECSItemPtr& child : *list) {
            if (repeats && !IsFilled(child)) {
                child->Delete();
            } else if (child->ItemCount() > 0) {
                open.push_back(child);
            }
        }
    }
}

bool HoldsValues(const SECSMessage& message) { return IsFilled(message.Root()); }

void PrepareSending(SECSTrans& trans) {
    if (!HasReply(trans)) trans.ReplyExpected(false);
    DropExamples(*trans.Primary());
}

}  // namespace hexmire::program
