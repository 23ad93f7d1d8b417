#pragma once

#include <hexmire/driver/BodyCheck.h>
#include <hexmire/driver/ErrorLimiter.h>
#include <hexmire/driver/LinkErrors.h>
#include <hexmire/driver/LinkSettings.h>
#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/driver/OpenTransactions.h>
#include <hexmire/driver/SystemBytesMap.h>
#include <hexmire/driver/secs1/Block.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace hexmire::secs1 {

// What the assembly tells, in order. Plain values, comparable in tests.

/// A block passed all checks: header, with the system bytes that the control sees, and data.
struct BlockAccepted {
    std::vector<std::uint8_t> Bytes;
    bool operator==(const BlockAccepted&) const = default;
};
/// The block before completed this message. Header of the last block.
struct MessageComplete {
    link::HeaderBytes Header;
    std::vector<std::uint8_t> Body;
    bool operator==(const MessageComplete&) const = default;
};
/// A block or an unfinished message was dropped.
struct MessageFault {
    link::LinkError Code;
    std::string Details;
    link::HeaderBytes Header;
    bool operator==(const MessageFault&) const = default;
};
using AssemblyOutput = std::variant<BlockAccepted, MessageComplete, MessageFault>;

/// Makes messages of received blocks (SEMI E4, message protocol): direction and device, duplicates,
/// sequence, interleaving, T4. Every block given to it has been acknowledged already: what is
/// dropped here is not asked for again.
///
/// One T4 runs for each unfinished message, and only while the peer could send: between Pause and
/// Resume it stands still. The owner runs one timer for all, by NextT4.
class Assembly {
public:
    static constexpr std::size_t kMaxOpenMessages = 64;
    static constexpr std::size_t kMaxOpenBytes = std::size_t{64} * 1024 * 1024;

    /// The tables are the link's: primaries of ours that wait, and system bytes of two sizes.
    Assembly(const LinkSettings& settings,
             LinkStatistics& statistics,
             link::OpenTransactions& transactions,
             link::SystemBytesMap& systemBytes);

    /// A block that came whole and undamaged: header and data. T4 is paused.
    void OnBlock(std::span<const std::uint8_t> block, link::TimePoint now);
    /// The line is busy: T4 stands still.
    void Pause(link::TimePoint now);
    /// The line is free: T4 goes on.
    void Resume(link::TimePoint now);
    /// What is left of the T4 that expires next; none while paused or with no message unfinished.
    [[nodiscard]] std::optional<std::chrono::milliseconds> NextT4(link::TimePoint now) const;
    void OnT4(link::TimePoint now);
    /// The connection is gone.
    void Clear() noexcept;

    void TakeOutput(std::vector<AssemblyOutput>& into);
    [[nodiscard]] std::size_t OpenMessages() const noexcept { return open_.size(); }
    [[nodiscard]] std::size_t OpenBytes() const noexcept { return openBytes_; }
    /// Whether direction and device are ours.
    [[nodiscard]] bool IsForUs(const BlockHeader& header) const {
        return IsDirectionRight(header) && header.DeviceID == settings_.DeviceID;
    }

private:
    /// An unfinished message.
    struct Open {
        BlockHeader Last;           ///< of its last block, as on the line
        std::uint32_t SystemBytes;  ///< as the control sees them
        bool IsStray;               ///< a reply to nothing that we have sent
        std::vector<std::uint8_t> Body;
        std::chrono::nanoseconds Left;  ///< of T4
    };
    using OpenMessage = std::list<Open>::iterator;

    [[nodiscard]] bool IsDirectionRight(const BlockHeader& header) const {
        return header.ToHost == settings_.HostRole || settings_.IgnoreDirection;
    }
    [[nodiscard]] bool PassesRouting(const BlockHeader& header);
    [[nodiscard]] bool IsDuplicate(const BlockHeader& header, link::TimePoint now);
    [[nodiscard]] OpenMessage Find(const BlockHeader& header);
    [[nodiscard]] std::optional<OpenMessage> Begin(const BlockHeader& header,
                                                   bool quiet,
                                                   link::TimePoint now);
    [[nodiscard]] bool GiveUpOfSameSystemBytes(const BlockHeader& header);
    void MakeRoom(const BlockHeader& next);
    void Append(OpenMessage message,
                const BlockHeader& header,
                std::span<const std::uint8_t> data,
                link::TimePoint now);
    [[nodiscard]] bool Store(OpenMessage message, std::span<const std::uint8_t> data);
    void Complete(OpenMessage message, link::TimePoint now);
    [[nodiscard]] bool PassesBodyCheck(const Open& message);
    void Discard(OpenMessage message);
    void Tell(link::LinkError code, const BlockHeader& header, std::string details = {});
    void Count(LinkStatistics::Count& counter, link::LinkError code, const BlockHeader& header);

    const LinkSettings& settings_;
    LinkStatistics& statistics_;
    link::OpenTransactions& transactions_;
    link::SystemBytesMap& systemBytes_;
    link::BodyCheck bodyCheck_;
    std::vector<AssemblyOutput> output_;

    std::list<Open> open_;  // oldest first
    std::size_t openBytes_ = 0;
    std::optional<link::TimePoint> runningSince_;  // T4; none: paused
    std::optional<BlockHeader> previous_;          // last block that was no duplicate
    link::TimePoint previousTime_;
};

}  // namespace hexmire::secs1
