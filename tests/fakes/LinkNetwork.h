#pragma once

#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/driver/hsms/LinkMachine.h>

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace hexmire::test {

/// Two HSMS link machines, end 0 the host and end 1 the equipment, and a network between them in
/// simulated time: TCP handshakes, bytes, FIN and RST travel with a delay for each direction and in
/// the order of their connection. Each end sends a primary in every turn of its clock while it is
/// connected and answers those of the other end.
class LinkNetwork {
public:
    using Milliseconds = std::chrono::milliseconds;

    /// What one end has seen and done; system bytes name the messages.
    struct Record {
        bool Connected = false;
        int Connects = 0;
        std::vector<std::string> Errors;     ///< "3054", with Disconnects as "D3054"
        std::set<std::uint32_t> Accepted;    ///< handed to the machine, not refused at once
        std::map<std::uint32_t, int> Sent;   ///< SecsMsgSend, and how often
        std::set<std::uint32_t> Aborted;     ///< Error 3073
        std::map<std::uint32_t, int> Taken;  ///< messages of the other end, and how often
        std::set<std::uint32_t> Broken;      ///< sent before a Disconnect: may be lost with it
    };

    LinkNetwork(const LinkSettings& host, const LinkSettings& equipment);
    LinkNetwork(const LinkNetwork&) = delete;
    LinkNetwork& operator=(const LinkNetwork&) = delete;

    std::array<Milliseconds, 2> Delay{Milliseconds(1), Milliseconds(1)};  ///< from that end
    /// A network that is down loses every handshake, and keeps the bytes until it is up.
    bool Down = false;

    void Open(int end);
    void Close(int end);
    /// The next packet or timer; the clock goes on to it.
    void Step();
    void RunFor(Milliseconds duration);
    /// Every connection is reset; `seenBy` tells which ends learn of it at once.
    void ResetAll(std::array<bool, 2> seenBy = {true, true});
    void Restore();

    [[nodiscard]] const Record& Seen(int end) const { return ends_[Index(end)]->Seen; }
    [[nodiscard]] const LinkStatistics& Statistics(int end) const {
        return ends_[Index(end)]->Statistics;
    }
    [[nodiscard]] std::string State(int end) const {
        return std::string(ends_[Index(end)]->Machine.StateName());
    }
    /// Both ends are selected on one and the same connection, and there is no other.
    [[nodiscard]] bool IsOneLink() const;
    /// The end that has opened the live connection of `end`; -1: there is none.
    [[nodiscard]] int Opener(int end) const;
    [[nodiscard]] link::TimePoint Now() const { return now_; }

private:
    enum class Kind : std::uint8_t { Syn, SynAck, Refused, Ack, Data, Fin, Reset };
    struct Packet {
        link::TimePoint Time;
        std::uint64_t Order;
        Kind What;
        int Tcp;
        int To;
        std::vector<std::uint8_t> Bytes;
    };
    /// The packet, or the timer of an end, that comes next.
    struct Due {
        link::TimePoint Time = link::TimePoint::max();
        std::size_t Packet = 0;
        int End = -1;
        link::TimerId Timer{};
    };
    struct Side {
        bool Open = false;
        bool FinSent = false;
        std::vector<std::uint8_t> Inbox;  // before the connection is adopted
        bool Ended = false;               // FIN or RST before that
    };
    struct Tcp {
        int Opener = 0;
        std::array<Side, 2> Sides;
        std::array<link::TimePoint, 2> LastArrival;
    };
    struct End {
        End(const LinkSettings& settings, std::uint32_t seed)
            : Machine(settings, Statistics, seed) {}
        LinkStatistics Statistics;
        hsms::LinkMachine Machine;
        std::map<link::TimerId, link::TimePoint> Timers;
        bool Listening = false;
        int Attempt = -1;
        int Candidate = -1;
        int Held = -1;
        int Live = -1;
        std::uint32_t NextMessage = 0;
        Record Seen;
    };

    [[nodiscard]] Due Next() const;
    [[nodiscard]] static std::size_t Index(int value) { return static_cast<std::size_t>(value); }
    Tcp& At(int tcp) { return connections_[Index(tcp)]; }
    void Transmit(Kind kind, int tcp, int from, std::vector<std::uint8_t> bytes = {});
    void Deliver(Packet packet);
    void DeliverToOpener(const Packet& packet);
    void DeliverToListener(const Packet& packet);
    void TellConnected(int end, int tcp);
    void TellEnd(int end, int tcp, bool reset);
    void CloseSocket(int end, int& tcp);
    void BeginReading(int end);
    void Settle(int end);
    void Perform(int end, const link::Action& action);
    void Talk(int end);
    void Answer(int end, const link::RaiseReceived& message);
    void Hand(int end, const hsms::FrameHeader& header);

    std::array<std::unique_ptr<End>, 2> ends_;
    std::deque<Tcp> connections_;
    std::vector<Packet> packets_;
    std::uint64_t order_ = 0;
    link::TimePoint now_{std::chrono::hours(1)};
};

}  // namespace hexmire::test
