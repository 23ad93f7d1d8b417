#pragma once

#include "log/LatencyTable.h"
#include "log/LogFilter.h"
#include "log/Pairing.h"
#include "log/SequenceDiagram.h"

#include <ostream>
#include <string>

namespace hexmire::program {

/// What is made of the exchange as a whole.
struct ExchangeOptions {
    LogFilter Filter{};  ///< for primaries; their replies are found wherever they stand
    bool Latency = false;
    bool Unanswered = false;
    bool Json = false;
    SequenceDiagram* Diagram = nullptr;  ///< none: nothing is drawn
};

/// Pairs primaries with their replies and tells of them: those without a reply as soon as that is
/// certain, the table at the end.
class ExchangeSink final : public LogSink {
public:
    /// The stream and the diagram outlive this object.
    ExchangeSink(std::ostream& out, ExchangeOptions options);

    void Begin(const LogEntry& entry) override;
    void Text(std::string_view bytes) override;
    void Pause(bool /*whole*/) override { out_.flush(); }
    void Unfinished(const LogEntry& header) override;
    void Finish() override;

    [[nodiscard]] const LatencyTable& Table() const noexcept { return table_; }

private:
    void EndErrorBody();
    void Take(const PairingResult& result);
    void Tell(const PairingResult& result);
    void TellJson(const PairingResult& result);

    std::ostream& out_;
    ExchangeOptions options_;
    Pairing pairing_;
    LatencyTable table_;
    LogTime moment_ = 0;
    bool finished_ = false;
    // The body of a message of stream 9.
    LogEntry error_;
    std::int64_t errorTag_ = -1;
    bool inErrorBody_ = false;
    std::string errorBody_;
};

}  // namespace hexmire::program
