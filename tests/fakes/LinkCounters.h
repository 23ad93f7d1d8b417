#pragma once

#include <hexmire/driver/LinkStatistics.h>

#include <array>
#include <string>
#include <vector>

namespace hexmire::test {

struct NamedCounter {
    const char* Name;
    LinkStatistics::Count LinkStatistics::*Field;
};

/// Every counter of the statistics, in their order.
inline constexpr std::array kLinkCounters{
    NamedCounter{"FramesReceived", &LinkStatistics::FramesReceived},
    NamedCounter{"ShortLengths", &LinkStatistics::ShortLengths},
    NamedCounter{"LongLengths", &LinkStatistics::LongLengths},
    NamedCounter{"UnknownPTypes", &LinkStatistics::UnknownPTypes},
    NamedCounter{"UnknownSTypes", &LinkStatistics::UnknownSTypes},
    NamedCounter{"ControlFramesWithBody", &LinkStatistics::ControlFramesWithBody},
    NamedCounter{"BrokenRejects", &LinkStatistics::BrokenRejects},
    NamedCounter{"DataWhileNotSelected", &LinkStatistics::DataWhileNotSelected},
    NamedCounter{"ForeignSessionData", &LinkStatistics::ForeignSessionData},
    NamedCounter{"ForeignS9F1", &LinkStatistics::ForeignS9F1},
    NamedCounter{"HostileBodies", &LinkStatistics::HostileBodies},
    NamedCounter{"RepliesWithoutTransaction", &LinkStatistics::RepliesWithoutTransaction},
    NamedCounter{"EarlyReplies", &LinkStatistics::EarlyReplies},
    NamedCounter{"SystemBytesReplaced", &LinkStatistics::SystemBytesReplaced},
    NamedCounter{"SubstitutesForgotten", &LinkStatistics::SubstitutesForgotten},
    NamedCounter{"BlocksReceived", &LinkStatistics::BlocksReceived},
    NamedCounter{"BlocksSent", &LinkStatistics::BlocksSent},
    NamedCounter{"BlocksRetried", &LinkStatistics::BlocksRetried},
    NamedCounter{"LineNoise", &LinkStatistics::LineNoise},
    NamedCounter{"Yields", &LinkStatistics::Yields},
    NamedCounter{"ContentionsWon", &LinkStatistics::ContentionsWon},
    NamedCounter{"NaksReceived", &LinkStatistics::NaksReceived},
    NamedCounter{"WrongAnswers", &LinkStatistics::WrongAnswers},
    NamedCounter{"BadBlockLengths", &LinkStatistics::BadBlockLengths},
    NamedCounter{"BadChecksums", &LinkStatistics::BadChecksums},
    NamedCounter{"Babbles", &LinkStatistics::Babbles},
    NamedCounter{"T1Timeouts", &LinkStatistics::T1Timeouts},
    NamedCounter{"T2Timeouts", &LinkStatistics::T2Timeouts},
    NamedCounter{"WrongDirections", &LinkStatistics::WrongDirections},
    NamedCounter{"ForeignDeviceBlocks", &LinkStatistics::ForeignDeviceBlocks},
    NamedCounter{"DuplicateBlocks", &LinkStatistics::DuplicateBlocks},
    NamedCounter{"BlocksOutOfSequence", &LinkStatistics::BlocksOutOfSequence},
    NamedCounter{"BlocksWithoutMessage", &LinkStatistics::BlocksWithoutMessage},
    NamedCounter{"HeadersChanged", &LinkStatistics::HeadersChanged},
    NamedCounter{"InterleavedMessages", &LinkStatistics::InterleavedMessages},
    NamedCounter{"MessagesCrowdedOut", &LinkStatistics::MessagesCrowdedOut},
    NamedCounter{"MessagesTooLong", &LinkStatistics::MessagesTooLong},
    NamedCounter{"T4Timeouts", &LinkStatistics::T4Timeouts},
    NamedCounter{"MessagesGivenUp", &LinkStatistics::MessagesGivenUp},
    NamedCounter{"SelectsWhileSelected", &LinkStatistics::SelectsWhileSelected},
    NamedCounter{"SelectsOfForeignSession", &LinkStatistics::SelectsOfForeignSession},
    NamedCounter{"SelectsFromPassiveSide", &LinkStatistics::SelectsFromPassiveSide},
    NamedCounter{"SimultaneousSelects", &LinkStatistics::SimultaneousSelects},
    NamedCounter{"SelectsRefused", &LinkStatistics::SelectsRefused},
    NamedCounter{"DeselectsRefused", &LinkStatistics::DeselectsRefused},
    NamedCounter{"DeselectsNotSupported", &LinkStatistics::DeselectsNotSupported},
    NamedCounter{"DeselectsWhileNotSelected", &LinkStatistics::DeselectsWhileNotSelected},
    NamedCounter{"SeparatesWhileNotSelected", &LinkStatistics::SeparatesWhileNotSelected},
    NamedCounter{"ForeignSessionEnds", &LinkStatistics::ForeignSessionEnds},
    NamedCounter{"ResponsesWithoutTransaction", &LinkStatistics::ResponsesWithoutTransaction},
    NamedCounter{"RejectsReceived", &LinkStatistics::RejectsReceived},
    NamedCounter{"RejectsWithoutTransaction", &LinkStatistics::RejectsWithoutTransaction},
    NamedCounter{"LinktestsSent", &LinkStatistics::LinktestsSent},
    NamedCounter{"CrossingsResolved", &LinkStatistics::CrossingsResolved},
    NamedCounter{"ExtraConnections", &LinkStatistics::ExtraConnections},
    NamedCounter{"CallersNotAllowed", &LinkStatistics::CallersNotAllowed},
    NamedCounter{"SelfConnections", &LinkStatistics::SelfConnections},
    NamedCounter{"ConnectFailures", &LinkStatistics::ConnectFailures},
    NamedCounter{"ConnectTimeouts", &LinkStatistics::ConnectTimeouts},
    NamedCounter{"ListenFailures", &LinkStatistics::ListenFailures},
    NamedCounter{"AcceptFailures", &LinkStatistics::AcceptFailures},
    NamedCounter{"ShortT1s", &LinkStatistics::ShortT1s},
    NamedCounter{"LateReads", &LinkStatistics::LateReads},
    NamedCounter{"T6Timeouts", &LinkStatistics::T6Timeouts},
    NamedCounter{"T7Timeouts", &LinkStatistics::T7Timeouts},
    NamedCounter{"T8Timeouts", &LinkStatistics::T8Timeouts},
    NamedCounter{"FrameCapTimeouts", &LinkStatistics::FrameCapTimeouts},
    NamedCounter{"WriteStalls", &LinkStatistics::WriteStalls},
    NamedCounter{"SendsWhileNotSelected", &LinkStatistics::SendsWhileNotSelected},
    NamedCounter{"SendsTooLong", &LinkStatistics::SendsTooLong},
    NamedCounter{"SendsRefusedByQueue", &LinkStatistics::SendsRefusedByQueue},
    NamedCounter{"SendsAborted", &LinkStatistics::SendsAborted},
    NamedCounter{"MalformedSends", &LinkStatistics::MalformedSends},
    NamedCounter{"ReadingPauses", &LinkStatistics::ReadingPauses},
    NamedCounter{"ErrorsLeftOut", &LinkStatistics::ErrorsLeftOut},
    NamedCounter{"TraceEntriesLost", &LinkStatistics::TraceEntriesLost},
    NamedCounter{"RecipesStored", &LinkStatistics::RecipesStored},
    NamedCounter{"RecipesNotStored", &LinkStatistics::RecipesNotStored},
    NamedCounter{"UnexpectedEvents", &LinkStatistics::UnexpectedEvents},
    NamedCounter{"InternalFailures", &LinkStatistics::InternalFailures},
};
static_assert(sizeof(LinkStatistics) == kLinkCounters.size() * sizeof(LinkStatistics::Count),
              "a counter is missing here");

/// The counters that have moved, in their order: "name", or "name +N" when by more than one.
[[nodiscard]] inline std::vector<std::string> MovedCounters(const LinkStatistics& before,
                                                            const LinkStatistics& after) {
    std::vector<std::string> moved;
    for (const NamedCounter& counter : kLinkCounters) {
        const auto count = after.*counter.Field - before.*counter.Field;
        if (count == 0) continue;
        moved.push_back(counter.Name + (count == 1 ? "" : " +" + std::to_string(count)));
    }
    return moved;
}

}  // namespace hexmire::test
