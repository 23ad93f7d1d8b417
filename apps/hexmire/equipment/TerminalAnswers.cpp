#include "equipment/Answers.h"

/// Texts for the operator's terminals, stream 10. What came in is shown like every message.
namespace hexmire::program::answers {

namespace {

Datum Display(Equipment& equipment, const Datum& terminal) {
    constexpr std::uint8_t kAccepted = 0;
    constexpr std::uint8_t kNoSuchTerminal = 2;
    if (ByteOf(terminal) >= equipment.Model().Most.Terminals) return Binary(kNoSuchTerminal);
    equipment.Fire(equipment.Model().OwnEvents.TerminalMessage);
    return Binary(kAccepted);
}

}  // namespace

Datum DisplayLine(Equipment& equipment, const Datum& body) {
    const auto& parts = ItemsOf(body, 2);
    if (parts[1].Format == FormatList) throw IllegalData("a text is missing");
    return Display(equipment, parts[0]);
}

Datum DisplayLines(Equipment& equipment, const Datum& body) {
    const auto& parts = ItemsOf(body, 2);
    for (const Datum& line : ItemsOf(parts[1])) {
        if (line.Format == FormatList) throw IllegalData("a text is missing");
    }
    return Display(equipment, parts[0]);
}

}  // namespace hexmire::program::answers
