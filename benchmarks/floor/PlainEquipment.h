#pragma once

#include "Sockets.h"

#include <cstdint>
#include <list>
#include <thread>
#include <vector>

namespace hexmire::bench {

/// An HSMS-SS equipment with blocking sockets that does nothing but answer, for any number of
/// callers: it selects, answers S1F1 and S1F13 with fixed bytes, S2F101 with its own body and every
/// other primary that wants a reply with B[1] 0. Each caller is served by a thread of its own,
/// which waits in recv and nowhere else.
class PlainEquipment {
public:
    /// Listens on so many ports of the loopback interface, one behind the other.
    explicit PlainEquipment(std::uint16_t ports = 1);
    PlainEquipment(const PlainEquipment&) = delete;
    PlainEquipment& operator=(const PlainEquipment&) = delete;
    ~PlainEquipment();

    /// The first of the ports.
    [[nodiscard]] std::uint16_t Port() const { return LocalPort(listeners_.front()); }

private:
    struct Caller {
        Socket Connection;
        std::thread Server;
    };
    void Serve();
    void Admit(const Socket& listener);

    std::vector<Socket> listeners_;
    std::list<Caller> callers_;  ///< touched by thread_ alone while it runs; kept to the end
    Socket wakeUp_;
    std::thread thread_;
};

}  // namespace hexmire::bench
