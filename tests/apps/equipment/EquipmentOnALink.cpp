#include "EquipmentOnALink.h"

#include <chrono>

namespace hexmire::program {

using namespace std::chrono_literals;

void EquipmentOnALink::Start() {
    const auto never = [] { return false; };
    for (Peer* peer : {&equipmentSide_, &hostSide_}) {
        peer->Control().SECSDictionaryFile(HEXMIRE_SOURCE_DIR "/dictionaries/Default.xml");
        peer->Control().LoadXMLDictionary();
    }
    equipmentSide_.StartOpening();
    ASSERT_TRUE(hostSide_.Open(never, 20s));
    ASSERT_TRUE(loop_.RunUntil([&] { return equipmentSide_.IsConnected(); }, 20s));
    host_.Lines.clear();
}

}  // namespace hexmire::program
