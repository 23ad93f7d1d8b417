#pragma once

#include "equipment/EquipmentModel.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::program {

/// A primary that the equipment has to send; it expects a reply.
struct OutgoingPrimary {
    std::int32_t Stream = 0;
    std::int32_t Function = 0;
    Datum Body{};
    bool operator==(const OutgoingPrimary&) const = default;
};

enum class ControlState : std::uint8_t { EquipmentOffline = 1, HostOffline = 3, Online = 5 };

/// Reports by RPTID with their VIDs, and the reports of each event (SEMI E5, S2F33 and S2F35).
struct ReportDefinition {
    Datum Id{};
    std::vector<std::string> Variables{};
};
struct EventLink {
    std::string Event{};
    std::vector<std::string> Reports{};
};

/// The state of a simulated equipment: its model, what hosts have defined, and what it has to send.
/// It knows neither links nor transactions. Single-threaded.
class Equipment {
public:
    using TimePoint = std::chrono::system_clock::time_point;
    using Now = std::function<TimePoint()>;

    explicit Equipment(EquipmentModel model, Now now = &std::chrono::system_clock::now);

    [[nodiscard]] EquipmentModel& Model() noexcept { return model_; }
    [[nodiscard]] const EquipmentModel& Model() const noexcept { return model_; }

    // By key; none when there is no such thing.
    [[nodiscard]] Variable* FindStatusVariable(std::string_view key);
    [[nodiscard]] Variable* FindDataValue(std::string_view key);
    [[nodiscard]] Constant* FindConstant(std::string_view key);
    [[nodiscard]] CollectionEvent* FindEvent(std::string_view key);
    [[nodiscard]] Alarm* FindAlarm(std::string_view key);
    [[nodiscard]] RemoteCommand* FindCommand(std::string_view name);
    [[nodiscard]] Recipe* FindRecipe(std::string_view id);
    [[nodiscard]] ReportDefinition* FindReport(std::string_view key);
    [[nodiscard]] EventLink* FindLink(std::string_view event);

    [[nodiscard]] bool HasVariable(std::string_view key);
    /// The VID of a key that HasVariable knows.
    [[nodiscard]] Datum IdOf(std::string_view key);
    /// The present value of a status variable, data value or constant; the empty list for any other
    /// key.
    [[nodiscard]] Datum ValueOf(std::string_view key);
    [[nodiscard]] Datum ValueOf(const Variable& variable) const;
    /// Sets a kept variable or data value, or a constant, whose change is an event; false when
    /// there is none of that key and for a value that the constant cannot take.
    bool SetValue(std::string_view key, const Datum& value);

    std::vector<ReportDefinition> Reports{};
    std::vector<EventLink> Links{};
    /// True: changes of constants are refused (EAC 2), and commands (HCACK 2).
    bool Busy = false;

    [[nodiscard]] ControlState State() const noexcept { return state_; }
    void State(ControlState state);

    /// "yyyymmddhhmmsscc" in local time, as the host has set it (SEMI E5, TIME).
    [[nodiscard]] std::string TimeText() const;
    /// Sets the clock from such a text, or from "yymmddhhmmss"; false when it is no time.
    bool SetTime(std::string_view text);

    /// Sends S6F11 with the linked reports if the event is enabled; nothing for "" and while
    /// offline.
    void Fire(std::string_view event);
    /// The body of S6F11 and S6F16.
    [[nodiscard]] Datum EventReport(const Datum& event);
    [[nodiscard]] Datum ReportValues(std::string_view report);
    /// Sets or clears an alarm: S5F1 if it is enabled, then its event. Nothing when it is so
    /// already.
    void SetAlarm(Alarm& alarm, bool set);
    [[nodiscard]] Datum AlarmEntry(const Alarm& alarm) const;
    void Send(std::int32_t stream, std::int32_t function, Datum body);

    /// What is to be sent since the last call, in order.
    [[nodiscard]] std::vector<OutgoingPrimary> TakeOutgoing();

private:
    EquipmentModel model_;
    Now now_;
    std::chrono::system_clock::duration clockOffset_{};
    ControlState state_;
    std::uint32_t nextDataId_ = 1;
    std::vector<OutgoingPrimary> outgoing_;
};

}  // namespace hexmire::program
