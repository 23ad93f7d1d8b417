#include "equipment/Answers.h"

#include <algorithm>

/// Reports, their links to events, and events on and off. Each definition is taken whole or not at
/// all (SEMI E5, S2F33 to S2F38).
namespace hexmire::program::answers {

namespace {

constexpr std::uint8_t kAccepted = 0;
constexpr std::uint8_t kNoSpace = 1;  // DRACK and LRACK
constexpr std::uint8_t kInvalidFormat = 2;

/// One entry of S2F33 or S2F35: an identifier and those that it is to hold.
struct Definition {
    Datum Id;
    std::vector<std::string> Members;
};

std::vector<Definition> DefinitionsIn(const Datum& body) {
    std::vector<Definition> definitions;
    for (const Datum& entry : ItemsOf(ItemsOf(body, 2)[1])) {
        const auto& parts = ItemsOf(entry, 2);
        Definition definition{.Id = parts[0], .Members = {}};
        for (const Datum& member : ItemsOf(parts[1]))
            definition.Members.push_back(KeyOf(member));
        if (KeyOf(definition.Id).empty()) throw IllegalData("an identifier is missing");
        definitions.push_back(std::move(definition));
    }
    return definitions;
}

void DeleteReport(std::vector<ReportDefinition>& reports,
                  std::vector<EventLink>& links,
                  const std::string& key) {
    std::erase_if(reports, [&](const ReportDefinition& report) { return KeyOf(report.Id) == key; });
    for (EventLink& link : links)
        std::erase(link.Reports, key);
    std::erase_if(links, [](const EventLink& link) { return link.Reports.empty(); });
}

}  // namespace

Datum DefineReports(Equipment& equipment, const Datum& body) try {
    constexpr std::uint8_t kAlreadyDefined = 3;
    constexpr std::uint8_t kUnknownVariable = 4;
    const std::vector<Definition> definitions = DefinitionsIn(body);
    std::vector<ReportDefinition> reports;
    std::vector<EventLink> links;
    if (!definitions.empty()) {  // An empty list deletes everything.
        reports = equipment.Reports;
        links = equipment.Links;
    }
    for (const Definition& definition : definitions) {
        const std::string key = KeyOf(definition.Id);
        const bool isDefined = std::ranges::any_of(
            reports, [&](const ReportDefinition& report) { return KeyOf(report.Id) == key; });
        if (definition.Members.empty()) {
            DeleteReport(reports, links, key);
            continue;
        }
        if (isDefined) return Binary(kAlreadyDefined);
        for (const std::string& variable : definition.Members) {
            if (!equipment.HasVariable(variable)) return Binary(kUnknownVariable);
        }
        if (reports.size() >= equipment.Model().Most.Reports) return Binary(kNoSpace);
        reports.push_back({definition.Id, definition.Members});
    }
    equipment.Reports = std::move(reports);
    equipment.Links = std::move(links);
    return Binary(kAccepted);
} catch (const IllegalData&) {
    return Binary(kInvalidFormat);
}

Datum LinkReports(Equipment& equipment, const Datum& body) try {
    constexpr std::uint8_t kAlreadyLinked = 3;
    constexpr std::uint8_t kUnknownEvent = 4;
    constexpr std::uint8_t kUnknownReport = 5;
    std::vector<EventLink> links = equipment.Links;
    for (const Definition& definition : DefinitionsIn(body)) {
        const std::string event = KeyOf(definition.Id);
        if (equipment.FindEvent(event) == nullptr) return Binary(kUnknownEvent);
        if (definition.Members.empty()) {
            std::erase_if(links, [&](const EventLink& link) { return link.Event == event; });
            continue;
        }
        if (std::ranges::find(links, event, &EventLink::Event) != links.end())
            return Binary(kAlreadyLinked);
        for (const std::string& report : definition.Members) {
            if (equipment.FindReport(report) == nullptr) return Binary(kUnknownReport);
        }
        if (definition.Members.size() > equipment.Model().Most.Links) return Binary(kNoSpace);
        links.push_back({event, definition.Members});
    }
    equipment.Links = std::move(links);
    return Binary(kAccepted);
} catch (const IllegalData&) {
    return Binary(kInvalidFormat);
}

Datum EnableEvents(Equipment& equipment, const Datum& body) {
    constexpr std::uint8_t kUnknownEvent = 1;
    const auto& parts = ItemsOf(body, 2);
    if (parts[0].Format != FormatBoolean || parts[0].Value.IsEmpty() || parts[0].Value.IsArray())
        throw IllegalData("a truth value is missing");
    const bool enable = parts[0].Value.AsBoolean();
    std::vector<CollectionEvent*> events;
    for (const Datum& id : ItemsOf(parts[1])) {
        events.push_back(equipment.FindEvent(KeyOf(id)));
        if (events.back() == nullptr) return Binary(kUnknownEvent);
    }
    if (events.empty()) {  // None named: all of them.
        for (CollectionEvent& event : equipment.Model().Events)
            event.Enabled = enable;
    }
    for (CollectionEvent* event : events)
        event->Enabled = enable;
    return Binary(kAccepted);
}

Datum EventReport(Equipment& equipment, const Datum& body) {
    const CollectionEvent* event = equipment.FindEvent(KeyOf(body));
    return equipment.EventReport(event == nullptr ? body : event->Id);
}

Datum SingleReport(Equipment& equipment, const Datum& body) {
    return equipment.ReportValues(KeyOf(body));
}

}  // namespace hexmire::program::answers
