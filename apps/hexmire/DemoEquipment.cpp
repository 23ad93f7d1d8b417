#include "DemoEquipment.h"

#include <hexmire/support/Conversion.h>

#include "Failure.h"

namespace hexmire::program {

SECSItemPtr PartOf(const SECSItemPtr& list, const Variant& which) {
    SECSItemPtr part = list == nullptr ? nullptr : list->Item(which);
    if (part == nullptr)
        throw Failure("the dictionary shapes a message of the demonstration in another way");
    return part;
}

std::optional<std::int32_t> NumberIn(const SECSItemPtr& item) {
    if (item == nullptr) return std::nullopt;
    const Variant value = item->Value();
    if (!value.IsArray()) return ToLong(value);
    if (value.ElementCount() == 0) return std::nullopt;
    return ToLong(value.Element(value.LowerBound()));
}

DemoEquipment::DemoEquipment(Peer& peer) : peer_(peer) {
    peer.OnPrimary = [this](const SECSTransPtr& trans) { Answer(trans); };
    peer.OnSecondary = [this](const SECSTransPtr& trans) {
        if (trans->Name() == "S6F11")
            acknowledge_ = NumberIn(PartOf(trans->Secondary()->Root(), 1));
    };
}

void DemoEquipment::Answer(const SECSTransPtr& trans) {
    const std::string name = trans->Name();
    if (name == kUnansweredRequest) return;
    const SECSItemPtr body = PartOf(trans->Secondary()->Root(), 1);
    if (name == "S1F13") {
        PartOf(body, "COMMACK")->Value(std::uint8_t{0});
        PartOf(PartOf(body, 2), "MDLN")->Value(kModel);
        PartOf(PartOf(body, 2), "SOFTREV")->Value(HEXMIRE_VERSION);
    } else if (name == "S1F1") {
        PartOf(body, "MDLN")->Value(kModel);
        PartOf(body, "SOFTREV")->Value(HEXMIRE_VERSION);
    } else if (name == "S2F41") {
        PartOf(body, "HCACK")->Value(std::uint8_t{0});
        PartOf(PartOf(body, 2), 1)->Delete();  // No parameter was refused.
    }
    peer_.Reply(trans);
}

bool DemoEquipment::ReportEvent() {
    const SECSTransPtr trans = peer_.Control().NewSECSTransaction("S6F11");
    if (trans == nullptr) return false;
    const SECSItemPtr body = PartOf(trans->Primary()->Root(), 1);
    PartOf(body, "DATAID")->Value(1);
    PartOf(body, "CEID")->Value(4001);
    const SECSItemPtr report = PartOf(PartOf(body, 3), 1);
    PartOf(report, "RPTID")->Value(10);
    const SECSItemPtr values = PartOf(report, 2);
    const SECSItemPtr lot = PartOf(values, 1);
    lot->Format(FormatAscii);
    lot->Value("LOT-0815");
    const SECSItemPtr temperature = values->AddNew(2);
    temperature->Format(FormatF4);
    temperature->Value(23.5F);
    return peer_.Send(trans);
}

}  // namespace hexmire::program
