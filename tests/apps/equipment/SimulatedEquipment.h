#pragma once

#include <hexmire/sml.h>

#include "equipment/Answers.h"
#include "equipment/ClockText.h"
#include "equipment/ModelFile.h"
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace hexmire::program {

/// One request after the other with the answers that they get, as SML items. An answer may be
/// "abort", "malformed" or "unknown" instead.
struct Exchange {
    const char* Message;  ///< "S1F3 <L <U4 1001>>"
    const char* Answer;   ///< "<L <A '...'>>"
};

/// The built-in equipment at a time that stands still: 2026-03-05 14:07:09.25 local time.
class SimulatedEquipment : public testing::Test {
protected:
    static SECSMessagePtr Parsed(const std::string& sml) {
        const ParsedSml parsed = ParseSml(sml + " .");
        EXPECT_EQ(parsed.Error, "") << sml;
        return parsed.Message;
    }

    static std::string Sml(const Datum& datum) {
        const auto message = New<SECSMessage>();
        SetBody(*message, datum);
        return RenderSml(*message, false);
    }
    static std::string Sml(const std::string& item) {
        return item.empty() ? "" : Sml(BodyOf(*Parsed("S1F1 " + item)).value());
    }

    std::string AnswerTo(const std::string& message) {
        const SECSMessagePtr primary = Parsed(message);
        const EquipmentAnswer answer =
            program::AnswerTo(equipment_, primary->Stream(), primary->Func(), BodyOf(*primary));
        switch (answer.What) {
            case EquipmentAnswer::Kind::Abort:
                return "abort";
            case EquipmentAnswer::Kind::Malformed:
                return "malformed";
            case EquipmentAnswer::Kind::Unknown:
                return "unknown";
            default:
                return Sml(answer.Body);
        }
    }

    void Expect(const std::vector<Exchange>& exchanges) {
        for (const Exchange& exchange : exchanges) {
            const std::string expected = exchange.Answer;
            EXPECT_EQ(AnswerTo(exchange.Message),
                      expected.starts_with('<') ? Sml(expected) : expected)
                << exchange.Message;
        }
    }

    /// What the equipment wants to send, as "S6F11" and the item.
    std::vector<std::string> Sent() {
        std::vector<std::string> sent;
        for (const OutgoingPrimary& primary : equipment_.TakeOutgoing())
            sent.push_back("S" + std::to_string(primary.Stream) + "F" +
                           std::to_string(primary.Function) + " " + Sml(primary.Body));
        return sent;
    }
    static std::vector<std::string> Messages(
        const std::vector<std::pair<const char*, const char*>>& messages) {
        std::vector<std::string> texts;
        for (const auto& [name, item] : messages)
            texts.push_back(std::string(name) + " " + Sml(std::string(item)));
        return texts;
    }

    static Equipment::TimePoint Standstill() { return *TimeFromClockText("2026030514070925"); }

    Equipment equipment_{BuiltInModel(), &Standstill};
};

}  // namespace hexmire::program
