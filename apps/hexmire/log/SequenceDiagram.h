#pragma once

#include "log/Pairing.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace hexmire::program {

enum class LogSide : std::uint8_t {
    Unknown,  ///< equipment when a sent message bears the R-bit, host otherwise
    Host,
    Equipment,
};

/// The exchange as a picture: two lifelines, an arrow for each message, brackets from primaries to
/// their replies. Rows are as high as each other; a pause of a second or more is written between
/// them. SVG without scripts and without anything from elsewhere.
class SequenceDiagram {
public:
    /// Messages beyond the limit are counted, not drawn.
    SequenceDiagram(LogSide side, std::size_t limit) : side_(side), limit_(limit) {}

    /// Gives the tag by which the message can be paired: -1 when it is not drawn.
    [[nodiscard]] std::int64_t Add(const LogEntry& entry);
    void Pair(const PairingResult& result);
    void SetUnfinished(const LogEntry& header);

    /// `title` in UTF-8; what is not is replaced.
    void Write(std::ostream& out, const std::string& title) const;

    [[nodiscard]] std::size_t Drawn() const noexcept { return rows_.size(); }
    [[nodiscard]] std::int64_t Seen() const noexcept { return seen_; }

private:
    static constexpr int kLanes = 4;

    struct Row {
        LogEntry Head{};
        std::int64_t Reply = -1;  ///< row of what ended its waiting
        std::optional<PairingResult> End{};
        std::int64_t Primary = -1;  ///< row of what it ends the waiting of
        bool Unfinished = false;
    };
    /// A row with the place that it got.
    struct Placed {
        const Row* Message = nullptr;
        int Y = 0;
        bool NewDay = false;
        LogTime Pause = 0;  ///< before it, when it is worth a line
    };

    [[nodiscard]] bool FromHost(const Row& row) const;
    [[nodiscard]] std::vector<Placed> Place() const;
    /// Of each row's bracket, 0 next to the lifeline.
    [[nodiscard]] std::vector<int> Lanes() const;
    void WriteHead(std::ostream& out, const std::string& title, int end) const;
    void WriteBreaks(std::ostream& out, const Placed& placed) const;
    void WriteArrow(std::ostream& out, const Placed& placed) const;
    void WriteBracket(std::ostream& out, const Placed& from, const Placed& to, int lane) const;
    [[nodiscard]] std::string NoteOf(const Row& row) const;

    LogSide side_;
    std::size_t limit_;
    bool equipmentSeen_ = false;
    std::int64_t seen_ = 0;
    std::vector<Row> rows_;
};

}  // namespace hexmire::program
