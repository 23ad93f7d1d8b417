#include "SmlMessage.h"

#include <hexmire/hosting/Utf8.h>

#include "ScriptCommands.h"
#include "ScriptWords.h"

#include <utility>
#include <vector>

namespace hexmire::program {

ParsedSml ReadSml(std::string_view text) {
    ParsedSml sml = ParseSml(Latin1In(text));
    if (sml.Message == nullptr)
        throw BadCommand(Utf8FromLatin1(sml.Error), sml.Line, sml.Column, sml.IsIncomplete);
    return sml;
}

void CopyMessage(const SECSMessage& source, SECSMessage& target) {
    target.Stream(source.Stream());
    target.Func(source.Func());
    while (target.Root()->ItemCount() > 0)
        target.Root()->Item(1)->Delete();
    // Lists nest to any depth: those that wait for their children stand in a stack.
    std::vector<std::pair<SECSItemPtr, SECSItemPtr>> open{{source.Root(), target.Root()}};
    while (!open.empty()) {
        const auto [from, to] = open.back();
        open.pop_back();
        for (const SECSItemPtr& item : *from) {
            const SECSItemPtr copy = to->AddNew(to->ItemCount() + 1);
            if (copy == nullptr) return;  // Memory has ended, which is reported.
            copy->Format(item->Format());
            if (item->Format() == FormatList) {
                open.emplace_back(item, copy);
            } else {
                copy->Value(item->Value());
            }
        }
    }
}

}  // namespace hexmire::program
