#pragma once

#include <hexmire/hexmire.h>

#include "Peer.h"

#include <cstdint>
#include <optional>

namespace hexmire::program {

/// The equipment of the demonstration: goes on line, obeys a remote command, reports an event, and
/// leaves one request unanswered on purpose.
class DemoEquipment {
public:
    static constexpr const char* kModel = "HXM-200";
    static constexpr const char* kUnansweredRequest = "S2F17";

    /// Takes the peer's primaries and secondaries. The peer outlives this object.
    explicit DemoEquipment(Peer& peer);

    /// Reports the collection event 4001 with one report of two values; false when it was not sent.
    bool ReportEvent();
    /// ACKC6 of the host's acknowledge; none before it has come.
    [[nodiscard]] std::optional<std::int32_t> Acknowledge() const noexcept { return acknowledge_; }

private:
    void Answer(const SECSTransPtr& trans);

    Peer& peer_;
    std::optional<std::int32_t> acknowledge_;
};

/// A child of a list by its position or name; throws Failure when the dictionary in use shapes the
/// message in another way.
[[nodiscard]] SECSItemPtr PartOf(const SECSItemPtr& list, const Variant& which);

/// A value of one item as a number: its first element when it holds several; none without a value.
[[nodiscard]] std::optional<std::int32_t> NumberIn(const SECSItemPtr& item);

}  // namespace hexmire::program
