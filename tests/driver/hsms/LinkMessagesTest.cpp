// Data messages over an HSMS link: order of events, system bytes, bounds, refusals and their texts.
#include "Selected.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

std::size_t Occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// --- sending -------------------------------------------------------------------------------------

TEST(HsmsSend, TheHeaderIsThatOfTheWireAndTheDirectionBitIsCleared) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    // As the control builds it: R-bit set, E-bit and block number in bytes 4 and 5.
    const auto header = HexToBytes("8005 8101 8001 0000004D");
    rig.Take();
    rig.Machine().Send(header, {}, rig.Now());
    EXPECT_EQ(rig.Do("consumed 0"), "tx S1F1W 0005 0000004D; Sent S1F1W 0005 0000004D");
}

TEST(HsmsSend, SentIsRaisedOnceWhenTheLastByteIsTaken) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("block");
    EXPECT_EQ(rig.Do("send S1F1W 0005 00000001 0100"), "tx S1F1W 0005 00000001 0100");
    EXPECT_EQ(rig.Do("written 15"), "");
    EXPECT_EQ(rig.Do("written 1"), "Sent S1F1W 0005 00000001 0100");
}

TEST(HsmsSend, AReplyThatComesBeforeTheWriteIsReportedIsPrecededBySent) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("block");
    rig.Do("send S6F1 0005 00000001");
    rig.Do("send S1F1W 0005 00000002");
    rig.Do("send S1F3W 0005 00000003");
    EXPECT_EQ(rig.Do("rx-early S1F2 0005 00000002"),
              "Sent S6F1 0005 00000001; Sent S1F1W 0005 00000002; Received S1F2 0005 00000002");
    EXPECT_EQ(rig.Statistics().EarlyReplies, 1U);
    EXPECT_EQ(rig.Do("written 28"), "") << "they have been told of";
    EXPECT_EQ(rig.Do("written 14"), "Sent S1F3W 0005 00000003");
}

TEST(HsmsSend, SendsWithoutASessionAreRefusedWithTheirHeader) {
    HsmsRig rig(HsmsRig::Settings());
    EXPECT_EQ(rig.Do("send S1F1W 0005 00000001"), "Error 3040");
    EXPECT_EQ(rig.LastText, "Send while not selected hdr=00058101000000000001");
    EXPECT_EQ(rig.Statistics().SendsWhileNotSelected, 1U);
}

TEST(HsmsSend, AMessageBeyondTheLimitIsRefused) {
    LinkSettings settings = HsmsRig::Settings();
    settings.MaxMessageBytes = 4;
    HsmsRig rig(settings);
    Select(rig);
    EXPECT_EQ(rig.Do("send S1F1W 0005 00000001 4102AABB"),
              "tx S1F1W 0005 00000001 4102AABB; Sent S1F1W 0005 00000001 4102AABB");
    EXPECT_EQ(rig.Do("send S1F1W 0005 00000002 4103AABBCC"), "Error 3029");
    EXPECT_EQ(rig.LastText, "Message too long hdr=00058101000000000002");
}

TEST(HsmsSend, TheQueueIsBoundedInMessagesAndInBytes) {
    LinkSettings settings = HsmsRig::Settings();
    settings.MaxQueuedMessages = 3;
    settings.MaxQueuedBytes = 60;
    HsmsRig rig(settings);
    Select(rig);
    rig.Do("block");
    for (const char* message : {"1", "2", "3"}) {
        EXPECT_EQ(rig.Do(std::string("send S6F1 0005 0000000") + message).substr(0, 2), "tx");
    }
    EXPECT_EQ(rig.Do("send S6F1 0005 00000004"), "Error 3071");
    rig.Do("written 14");
    EXPECT_EQ(rig.Do("send S6F1 0005 00000005 410AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA"),
              "Error 3071")
        << "too many bytes";
    EXPECT_EQ(rig.Do("send S6F1 0005 00000006").substr(0, 2), "tx");
    EXPECT_EQ(rig.Statistics().SendsRefusedByQueue, 2U);
}

TEST(HsmsSend, QueuedMessagesThatNeverWentOutAreToldBeforeTheDisconnect) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.FullTexts = true;
    rig.Do("block");
    rig.Do("send S6F1 0005 00000001");
    rig.Do("send S6F3W 0005 00000002 0100");
    EXPECT_EQ(rig.Do("fin"),
              "Error 3073 \"Queued message aborted by disconnect hdr=00050601000000000001\"; "
              "Error 3073 \"Queued message aborted by disconnect hdr=00058603000000000002\"; "
              "Disconnect 3054 \"Connection closed by peer: 10.0.0.2:5000\"; close");
}

TEST(HsmsSend, DeselectTakesBackWhatHasNotBegunAndFinishesTheFrameThatHas) {
    HsmsRig rig(HsmsRig::Settings(2, false));
    rig.Do("open");
    rig.Do("connected");
    rig.Do("rx SelectReq FFFF 000000FF");
    rig.Do("block");
    rig.Do("send S6F1 0005 00000001");
    rig.Do("send S6F1 0005 00000002");
    rig.Do("written 5");
    EXPECT_EQ(rig.Do("rx DeselectReq 0005 00000009").substr(0, 22), "Error 3073; Error 3073");
    std::array<std::span<const std::uint8_t>, 8> views;
    EXPECT_EQ(rig.Machine().Output(views), 2U);
    EXPECT_EQ(views[0].size(), 9U);
    EXPECT_EQ(FrameNotation(views[1]), "DeselectRsp 0005 00000009");
}

TEST(HsmsSend, AHeaderOfTheWrongSizeIsAnInternalError) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Machine().Send(HexToBytes("0005"), {}, rig.Now());
    EXPECT_EQ(rig.Do("consumed 0"), "Error 3099");
    EXPECT_EQ(rig.Statistics().MalformedSends, 1U);
}

// --- receiving -----------------------------------------------------------------------------------

TEST(HsmsReceive, TheSessionIsComparedInAllSixteenBits) {
    LinkSettings settings = HsmsRig::Settings();
    settings.DeviceID = 0x7FFF;
    HsmsRig rig(settings);
    Select(rig);
    EXPECT_EQ(rig.Do("rx S1F1W FFFF 00000001"), "Error 3020");
    EXPECT_EQ(rig.LastText, "Unknown device or session ID: 65535 hdr=FFFF8101000000000001");
    EXPECT_EQ(rig.Do("rx S1F1W 7FFF 00000001"), "Received S1F1W 7FFF 00000001");
}

TEST(HsmsReceive, TheDeviceIDCountsFromTheNextMessageOn) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    LinkSettings settings = HsmsRig::Settings();
    settings.DeviceID = 6;
    rig.Configure(settings);
    EXPECT_EQ(rig.Do("rx S1F1W 0006 00000001"), "Received S1F1W 0006 00000001");
}

TEST(HsmsReceive, AHostileBodyIsDroppedAndTold) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    EXPECT_EQ(rig.Do("rx S6F11W 0005 00000001 03FFFFFF"), "Error 3090");
    EXPECT_EQ(rig.LastText,
              "Hostile body refused: lists claim more items than can be there "
              "hdr=0005860B000000000001");
    EXPECT_EQ(rig.Do("rx LinktestReq FFFF 00000002"), "tx LinktestRsp FFFF 00000002");
}

TEST(HsmsReceive, AHostileReplyEndsNoTransaction) {
    LinkSettings settings = HsmsRig::Settings();
    settings.SystemBytesCheck = true;
    HsmsRig rig(settings);
    Select(rig);
    rig.Do("send S1F1W 0005 00000001");
    rig.Do("rx S1F2 0005 00000001 03FFFFFF");
    EXPECT_EQ(rig.Do("rx S1F2 0005 00000001"), "Received S1F2 0005 00000001");
    EXPECT_EQ(rig.Statistics().RepliesWithoutTransaction, 0U);
}

TEST(HsmsReceive, RepliesWithoutTransactionAreCountedAndDelivered) {
    LinkSettings settings = HsmsRig::Settings();
    settings.SystemBytesCheck = true;
    HsmsRig rig(settings);
    Select(rig);
    rig.Do("send S1F1W 0005 00000001");
    EXPECT_EQ(rig.Do("rx S1F2 0005 00000002"), "Received S1F2 0005 00000002");
    EXPECT_EQ(rig.Statistics().RepliesWithoutTransaction, 1U);
}

TEST(HsmsReceive, T3ForgetsInSilence) {
    LinkSettings settings = HsmsRig::Settings();
    settings.SystemBytesCheck = true;
    settings.LinktestInterval = std::chrono::milliseconds(0);
    HsmsRig rig(settings);
    Select(rig);
    rig.Do("send S1F1W 0005 00000001");
    EXPECT_EQ(rig.Do("advance 45000"), "");
    EXPECT_EQ(rig.Do("rx S1F2 0005 00000001"), "Received S1F2 0005 00000001");
    EXPECT_EQ(rig.Statistics().RepliesWithoutTransaction, 1U);
}

TEST(HsmsReceive, ARejectEndsTheTransactionThatItNames) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("send S1F1W 0005 00000001");
    EXPECT_EQ(rig.Do("rx RejectReq.4 0005 00000001"), "Error 3033");
    EXPECT_EQ(rig.LastText, "Reject.req received: reason 4 hdr=00050004000700000001");
    EXPECT_EQ(rig.Statistics().RejectsWithoutTransaction, 0U);
    rig.Do("rx RejectReq.4 0005 00000001");
    EXPECT_EQ(rig.Statistics().RejectsWithoutTransaction, 1U);
}

TEST(HsmsReceive, HighSystemBytesGoUpUnderASubstituteAndTheReplyGoesOutWithTheOriginal) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    EXPECT_EQ(rig.Do("rx S6F11W 0005 FFFFFFF0 0100"), "Received S6F11W 0005 40000000 0100");
    EXPECT_EQ(rig.Do("send S6F12 0005 40000000 210100"),
              "tx S6F12 0005 FFFFFFF0 210100; Sent S6F12 0005 40000000 210100");
    EXPECT_EQ(rig.Do("send S6F12 0005 40000000 210100").substr(0, 22), "tx S6F12 0005 40000000")
        << "there is only one reply";
}

TEST(HsmsReceive, TransactionsEndWithTheSession) {
    LinkSettings settings = HsmsRig::Settings(2, false);
    settings.SystemBytesCheck = true;
    for (const char* end : {"rx SeparateReq 0005 00000002", "rx DeselectReq 0005 00000002"}) {
        HsmsRig rig(settings);
        rig.Do("open");
        rig.Do("connected");
        rig.Do("rx SelectReq FFFF 00000001");
        rig.Do("send S1F1W 0005 00000007");
        rig.Do(end);
        rig.Do("rx SelectReq FFFF 00000003");
        EXPECT_EQ(rig.Do("rx S1F2 0005 00000007"), "Received S1F2 0005 00000007");
        EXPECT_EQ(rig.Statistics().RepliesWithoutTransaction, 1U) << end;
    }
}

TEST(HsmsReceive, SubstitutesEndWithTheSession) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    rig.Do("connected");
    rig.Do("rx SelectReq FFFF 00000001");
    rig.Do("rx S6F11W 0005 FFFFFFF0");
    rig.Do("fin");
    rig.Do("connected");
    rig.Do("rx SelectReq FFFF 00000001");
    EXPECT_EQ(rig.Do("send S6F12 0005 40000000").substr(0, 22), "tx S6F12 0005 40000000");
}

// --- back-pressure and limits --------------------------------------------------------------------

TEST(HsmsBackPressure, ReadingStopsUntilHalfOfTheBacklogIsConsumed) {
    LinkSettings settings = HsmsRig::Settings();
    settings.MaxWaitingMessages = 4;
    HsmsRig rig(settings);
    Select(rig);
    rig.Consumes = false;
    for (int count = 1; count < 4; ++count) {
        EXPECT_EQ(rig.Do("rx S6F1 0005 00000001"), "Received S6F1 0005 00000001");
    }
    rig.Do("fire Linktest");
    EXPECT_EQ(rig.Do("rx S6F1 0005 00000001"), "Received S6F1 0005 00000001; pause; Error 3072");
    EXPECT_EQ(rig.Timers(), "") << "nothing supervises a peer that we do not listen to";
    EXPECT_EQ(rig.Do("advance 1000000"), "");
    EXPECT_EQ(rig.Do("consumed 1"), "");
    EXPECT_EQ(rig.Do("consumed 1"), "resume");
    EXPECT_EQ(rig.Timers(), "T6:5000 Linktest:30000");
}

TEST(HsmsBackPressure, ABacklogOutlivesItsConnection) {
    LinkSettings settings = HsmsRig::Settings(4, false);
    settings.MaxWaitingMessages = 1;
    HsmsRig rig(settings);
    rig.Do("open");
    rig.Do("connected");
    rig.Do("rx SelectReq FFFF 00000001");
    rig.Consumes = false;
    rig.Do("rx S6F1 0005 00000001");
    rig.Do("reset");
    EXPECT_EQ(rig.Do("connected"), "adopt; pause; Error 3072");
    EXPECT_EQ(rig.Do("consumed 1"), "resume");
}

TEST(HsmsBackPressure, APeerThatAsksAndDoesNotReadIsNotReadEither) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("block");
    std::string done;
    int asked = 0;
    while (done.find("pause") == std::string::npos && asked < 5'000) {
        done = rig.Do("rx LinktestReq FFFF 00000001");
        ++asked;
    }
    EXPECT_EQ(asked, 1'024);
    EXPECT_EQ(rig.Do("unblock"), "resume");
}

TEST(HsmsErrors, AFloodOfBadFramesIsFiftyErrorsAndASummary) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    std::string all;
    for (int count = 0; count < 130; ++count) {
        all += rig.Do("rx S1F1W 0009 00000001") + ";";
    }
    EXPECT_EQ(Occurrences(all, "Error 3020"), 50U);
    EXPECT_EQ(rig.Statistics().ErrorsLeftOut, 80U);
    EXPECT_EQ(rig.Do("advance 1000"), "Error 3020");
    EXPECT_EQ(rig.LastText, "Unknown device or session ID: 80 more left out");
    EXPECT_EQ(rig.Do("rx S1F1W 0009 00000001"), "Error 3020");
}

TEST(HsmsErrors, LostMessagesAreAllTold) {
    HsmsRig rig(HsmsRig::Settings());
    std::string all;
    for (int count = 0; count < 200; ++count) {
        all += rig.Do("send S1F1W 0005 00000001") + ";";
    }
    EXPECT_EQ(Occurrences(all, "Error 3040"), 200U);
}

TEST(HsmsErrors, TheHeaderIsTheLastTokenWhereAMessageIsConcerned) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    for (const char* line : {"rx S1F1W 0009 00000001",
                             "rx S1F1W 0005 00000001 03FFFFFF",
                             "rx SelectRsp FFFF 00000001",
                             "rx DeselectReq FFFF 00000001",
                             "rx RejectReq.1 FFFF 00000001",
                             "rx-bytes 0000000B FFFF 0000 0005 00000001 00"}) {
        rig.Do(line);
        const std::size_t token = rig.LastText.rfind(" hdr=");
        ASSERT_NE(token, std::string::npos) << rig.LastText;
        EXPECT_EQ(rig.LastText.size() - token, 25U) << rig.LastText;
        EXPECT_EQ(rig.LastText.find_first_not_of("0123456789ABCDEF", token + 5), std::string::npos);
    }
}

}  // namespace
}  // namespace hexmire::test
