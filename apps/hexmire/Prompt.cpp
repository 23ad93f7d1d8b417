#include "Prompt.h"

#include "ScriptRunner.h"
#include "VisibleText.h"

#include <optional>

namespace hexmire::program {

namespace {

std::string TextOf(const BadCommand& bad) {
    if (bad.Column == 0) return bad.what();
    return std::to_string(bad.Line) + ':' + std::to_string(bad.Column) + ": " + bad.what();
}

/// False at the end of the input.
bool DoNext(ScriptContext& context, ScriptReader& reader) {
    try {
        const std::optional<Action> action = reader.Read();
        if (!action) return false;
        if (*action) (*action)(context);
    } catch (const BadCommand& bad) {
        if (!context.GivenUp()) context.Out << "error: " << VisibleText(TextOf(bad)) << std::endl;
    } catch (const Failure& failure) {
        if (context.GivenUp()) context.Out << '\n';  // The terminal has shown "^C".
        context.Out << "error: " << VisibleText(failure.what()) << std::endl;
    }
    return true;
}

}  // namespace

void RunPrompt(ScriptContext& context,
               Terminal& terminal,
               Interrupt& interrupt,
               const std::string& prompt) {
    ScriptReader reader(context.Commands, "", [&](bool isContinued) {
        auto line = terminal.Next(isContinued ? std::string(prompt.size() - 2, '.') + "> " : prompt,
                                  context.GivenUp);
        // What there is of the command is dropped.
        if (!line && isContinued && context.GivenUp()) throw BadCommand("interrupted");
        return line;
    });
    while (!context.Ended) {
        const bool goesOn = DoNext(context, reader);
        if (interrupt.IsFinal() || (!goesOn && !interrupt.HasCome())) return;
        interrupt.Forget();
    }
}

}  // namespace hexmire::program
