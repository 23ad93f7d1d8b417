#pragma once

#include <hexmire/driver/secs1/LinkMachine.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::test {

/// Host and equipment, two SECS-I machines on one line, in simulated time. Bytes take the time that
/// they take at the line's speed, timers expire when they are due, and one byte of the traffic may
/// go wrong on its way.
class LinePair {
public:
    enum class Damage : std::uint8_t { None, Lost, Doubled, Changed, Late };
    /// What happens to the byte of that number, counted from 0 over both directions in the order of
    /// sending.
    struct Fault {
        Damage What = Damage::None;
        std::size_t Byte = 0;
        std::uint8_t Mask = 0xFF;           ///< Changed: the bits that are turned over
        std::chrono::milliseconds Delay{};  ///< Late: so much, and everything behind it with it
    };
    struct Message {
        secs1::BlockHeader Header;
        std::vector<std::uint8_t> Body;
    };
    /// What one end has done and seen.
    struct Record {
        std::vector<Message> Offered;  ///< given to the machine
        std::vector<Message> Sent;
        std::vector<Message> Received;
        std::vector<std::string> Errors;  ///< "3010 text"
    };

    /// Both ends with these settings, apart from the role; connected, nothing sent yet. Serial:
    /// BaudRate is the line's speed. TCP: bytes take no time, each write a millisecond.
    explicit LinePair(const LinkSettings& settings);
    LinePair(LinkSettings settings, const Fault& fault);

    /// A message of one of the ends: "S1F1W 000A 00000001 BODY".
    void Send(bool fromHost, std::string_view notation);
    void Send(bool fromHost,
              const secs1::BlockHeader& header,
              const std::vector<std::uint8_t>& body);
    /// Runs until nothing is under way and no timer runs; false when that takes longer.
    [[nodiscard]] bool Run(std::chrono::milliseconds limit = std::chrono::hours(1));

    [[nodiscard]] const Record& Host() const { return ends_[0].Seen; }
    [[nodiscard]] const Record& Equipment() const { return ends_[1].Seen; }
    [[nodiscard]] const LinkStatistics& HostCounts() const { return ends_[0].Counts; }
    [[nodiscard]] const LinkStatistics& EquipmentCounts() const { return ends_[1].Counts; }
    /// Bytes on the line so far, both directions.
    [[nodiscard]] std::size_t Bytes() const { return bytes_; }
    [[nodiscard]] std::chrono::nanoseconds Elapsed() const { return now_ - start_; }

    bool OneByOne = false;  ///< each byte arrives by itself, not each write
    bool Echo = true;       ///< each end answers primaries with W-bit with their own body

private:
    struct End {
        LinkStatistics Counts;
        std::optional<secs1::LinkMachine> Machine;
        std::map<link::TimerId, link::TimePoint> Timers;
        link::TimePoint Free;  ///< when its side of the line has carried everything
        Record Seen;
    };
    struct Arrival {
        std::size_t At;
        std::vector<std::uint8_t> Bytes;
    };

    void Settle(std::size_t index);
    void Perform(std::size_t index, const link::Action& action);
    void Take(std::size_t index, const link::RaiseReceived& received);
    bool Write(std::size_t index);
    void Carry(std::size_t from, std::span<const std::uint8_t> bytes);
    bool Step(link::TimePoint end);

    Fault fault_;
    std::chrono::nanoseconds character_{};
    std::chrono::nanoseconds latency_{};
    link::TimePoint start_;
    link::TimePoint now_;
    std::size_t bytes_ = 0;
    std::multimap<link::TimePoint, Arrival> arrivals_;
    std::vector<End> ends_;
};

}  // namespace hexmire::test
