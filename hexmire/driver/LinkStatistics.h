#pragma once

#include <cstdint>

namespace hexmire {

/// What a driver has tolerated, refused and lost since it was made: one counter for each way. Plain
/// counts, never reset.
struct LinkStatistics {
    using Count = std::uint64_t;

    // --- frames ----------------------------------------------------------------------------------
    Count FramesReceived = 0;         ///< complete frames of any kind
    Count ShortLengths = 0;           ///< length field below 10; link closed
    Count LongLengths = 0;            ///< length field above the limit; link closed
    Count UnknownPTypes = 0;          ///< answered by Reject 2
    Count UnknownSTypes = 0;          ///< answered by Reject 1
    Count ControlFramesWithBody = 0;  ///< answered by Reject 1 (a Reject.req: dropped)
    Count BrokenRejects = 0;          ///< Reject.req with a bad PType: dropped, never answered

    // --- data ------------------------------------------------------------------------------------
    Count DataWhileNotSelected = 0;  ///< answered by Reject 4
    Count ForeignSessionData = 0;    ///< session ID is not the device ID; dropped
    Count ForeignS9F1 = 0;           ///< S9F1 with a foreign session ID, delivered all the same
    Count HostileBodies = 0;         ///< refused by the walk over the item headers
    Count RepliesWithoutTransaction = 0;  ///< with the system-bytes check on: counted and delivered
    Count EarlyReplies = 0;          ///< reply came before the write of its primary was reported
    Count SystemBytesReplaced = 0;   ///< delivered under substitute system bytes
    Count SubstitutesForgotten = 0;  ///< ways back given up, the table being full

    // --- SECS-I line -----------------------------------------------------------------------------
    Count BlocksReceived = 0;   ///< blocks that came whole and undamaged
    Count BlocksSent = 0;       ///< blocks that were acknowledged
    Count BlocksRetried = 0;    ///< attempts of a block after its first
    Count LineNoise = 0;        ///< bytes that meant nothing where they came
    Count Yields = 0;           ///< both ends wanted the line, and we gave way (host)
    Count ContentionsWon = 0;   ///< both ends wanted the line, and we went on (equipment)
    Count NaksReceived = 0;     ///< NAK after a block of ours
    Count WrongAnswers = 0;     ///< neither ACK nor NAK after a block of ours
    Count BadBlockLengths = 0;  ///< length byte outside 10 to 254; drained, answered by NAK
    Count BadChecksums = 0;     ///< drained, answered by NAK
    Count Babbles = 0;          ///< the line did not fall silent
    Count T1Timeouts = 0;       ///< block broken off; answered by NAK
    Count T2Timeouts = 0;       ///< no EOT, no ACK or no length byte

    // --- SECS-I messages -------------------------------------------------------------------------
    Count WrongDirections = 0;       ///< R-bit of our own direction; dropped
    Count ForeignDeviceBlocks = 0;   ///< device ID is not ours; dropped
    Count DuplicateBlocks = 0;       ///< dropped
    Count BlocksOutOfSequence = 0;   ///< message given up
    Count BlocksWithoutMessage = 0;  ///< neither a following nor a first block; dropped
    Count HeadersChanged = 0;        ///< message given up
    Count InterleavedMessages = 0;   ///< message given up for another one, the check being on
    Count MessagesCrowdedOut = 0;    ///< oldest unfinished message given up, too many being open
    Count MessagesTooLong = 0;       ///< unfinished message longer than the limit; given up
    Count T4Timeouts = 0;            ///< unfinished message given up
    Count MessagesGivenUp = 0;       ///< message of ours not sent, Error 3010

    // --- control transactions --------------------------------------------------------------------
    Count SelectsWhileSelected = 0;       ///< answered with status 1
    Count SelectsOfForeignSession = 0;    ///< port type 2: answered with status 4
    Count SelectsFromPassiveSide = 0;     ///< the passive side selected; accepted
    Count SimultaneousSelects = 0;        ///< both sides selected at once
    Count SelectsRefused = 0;             ///< our Select.req was answered with a bad status
    Count DeselectsRefused = 0;           ///< port type 2: our Deselect.req was, too
    Count DeselectsNotSupported = 0;      ///< port type 4: answered by Reject 1
    Count DeselectsWhileNotSelected = 0;  ///< port type 2: answered with status 1
    Count SeparatesWhileNotSelected = 0;  ///< ignored
    Count ForeignSessionEnds = 0;  ///< port type 2: Deselect or Separate of a foreign session
    Count ResponsesWithoutTransaction = 0;  ///< answered by Reject 3
    Count RejectsReceived = 0;              ///< Reject.req of any kind
    Count RejectsWithoutTransaction = 0;    ///< Reject.req that names nothing open
    Count LinktestsSent = 0;                ///< Linktest.req of ours

    // --- connections -----------------------------------------------------------------------------
    Count CrossingsResolved = 0;  ///< alternating: one of two attempts given up for the other
    Count ExtraConnections = 0;   ///< callers refused because a link is up
    Count CallersNotAllowed = 0;  ///< callers refused because they are not on the list
    Count SelfConnections = 0;    ///< connects that led back to their own socket
    Count ConnectFailures = 0;    ///< connect attempts that failed
    Count ConnectTimeouts = 0;    ///< connect attempts that took too long
    Count ListenFailures = 0;     ///< bind or listen failures, silent repetitions included
    Count AcceptFailures = 0;     ///< failed accepts
    Count ShortT1s = 0;           ///< serial ports opened with a T1 too short for their speed
    Count LateReads = 0;          ///< bytes were waiting when a timer for them expired

    // --- time-outs -------------------------------------------------------------------------------
    Count T6Timeouts = 0;
    Count T7Timeouts = 0;
    Count T8Timeouts = 0;
    Count FrameCapTimeouts = 0;
    Count WriteStalls = 0;

    // --- sends and queues ------------------------------------------------------------------------
    Count SendsWhileNotSelected = 0;  ///< refused, Error 3040
    Count SendsTooLong = 0;           ///< refused, Error 3029
    Count SendsRefusedByQueue = 0;    ///< refused, Error 3071
    Count SendsAborted = 0;           ///< queued, never went out, Error 3073
    Count MalformedSends = 0;  ///< header or body length of a send makes no sense, Error 3099
    Count ReadingPauses = 0;   ///< reading stopped until the control or the peer caught up
    Count ErrorsLeftOut = 0;   ///< errors told of in a summary only

    // --- files -----------------------------------------------------------------------------------
    Count TraceEntriesLost = 0;  ///< lines of the trace and packets of the capture not written
    Count RecipesStored = 0;     ///< process programs in their files
    Count RecipesNotStored = 0;  ///< Error 3081

    // --- the machine itself ----------------------------------------------------------------------
    Count UnexpectedEvents = 0;  ///< events that the state at the time does not expect
    Count InternalFailures = 0;  ///< Error 3099

    bool operator==(const LinkStatistics&) const = default;
};

}  // namespace hexmire
