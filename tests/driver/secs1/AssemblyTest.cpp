// What becomes of each received block: the checks in their order, then the assembly of messages
// (SEMI E4, message protocol).
#include "Steps.h"

namespace hexmire::test {
namespace {

struct Script {
    const char* Name;
    void (*Change)(LinkSettings&);
    Steps What;
};

void AsIs(LinkSettings&) {}
void NoDuplicateCheck(LinkSettings& settings) { settings.DuplicateBlockCheck = false; }
void WithInterleaveCheck(LinkSettings& settings) { settings.InterleaveCheck = true; }

/// Two messages of the peer, by their blocks: "#1 AA".
std::string A(const std::string& block) { return "S6F11W 800A 00000007 " + block; }
std::string B(const std::string& block) { return "S6F13W 800A 00000008 " + block; }

std::string Fault(const std::string& code, const std::string& text, const std::string& block) {
    std::string hex;
    for (const std::uint8_t byte : secs1::EncodeHeader(ParseBlock(block).Header)) {
        hex += Hex(byte, 2);
    }
    return "Error " + code + " \"" + text + " hdr=" + hex + "\"";
}
std::string OutOfSequence(const std::string& block) {
    return Fault("3023", "Block number out of sequence", block);
}
std::string NotFirst(const std::string& block) {
    return Fault("3024", "Not a valid first block", block);
}
std::string Duplicate(const std::string& block) {
    return Fault("3022", "Duplicate block dropped", block);
}
std::string Changed(const std::string& block) {
    return Fault("3025", "Header changed inside a message", block);
}
std::string Interleaved(const std::string& block) {
    return Fault("3026", "Interleaved message", block);
}

void Play(const Script& script, bool host) {
    SCOPED_TRACE(script.Name);
    LinkSettings settings = Secs1Rig::Settings(3, host);
    script.Change(settings);
    ConnectedRig rig(settings);
    rig.FullTexts = true;
    ExpectSteps(rig, script.What);
}

void Play(const std::vector<Script>& scripts, bool host = true) {
    for (const Script& script : scripts) {
        Play(script, host);
    }
}

TEST(Secs1Assembly, DirectionAndDevice) {
    const std::string own = "S1F1W 000A 00000001 #1E";
    const std::string ownForeign = "S1F1W 000B 00000001 #1E";
    const std::string foreign = "S6F11W 800B 00000007 #2E BB";
    const std::string none = "S1F1W 7FFF 00000001 #1E";
    Play({{"our own direction, whatever the device",
           AsIs,
           {Take(own, Fault("3021", "R-bit wrong", own)),
            Take(ownForeign, Fault("3021", "R-bit wrong", ownForeign)),
            Take(none, Fault("3021", "R-bit wrong", none))}},
          {"any direction, where that is ignored",
           [](LinkSettings& settings) { settings.IgnoreDirection = true; },
           {Complete(own, own),
            Take(ownForeign, Fault("3020", "Unknown device or session ID", ownForeign))}},
          {"a foreign device leaves unfinished messages alone",
           AsIs,
           {Accept(A("#1 AA")),
            Take(foreign, Fault("3020", "Unknown device or session ID", foreign)),
            Complete(A("#2E CC"), A("#2E AACC"))}}});
    const std::string fromEquipment = "S1F1W 800A 00000001 #1E";
    Play({{"the equipment takes what comes from the host",
           AsIs,
           {Take(fromEquipment, Fault("3021", "R-bit wrong", fromEquipment)), Complete(own, own)}}},
         false);
}

TEST(Secs1Assembly, Duplicates) {
    const std::string foreign = "S6F11W 800B 00000007 #1E 01";
    const std::string own = "S6F11W 000A 00000007 #1E 01";
    Play({{"the same header again, whatever the data",
           AsIs,
           {Complete(A("#1E 01"), A("#1E 01")),
            Take(A("#1E 01"), Duplicate(A("#1E"))),
            Take(A("#1E 02"), Duplicate(A("#1E"))),
            Take(A("#1E 03FFFFFF"), Duplicate(A("#1E")))}},
          {"only the block just before counts",
           AsIs,
           {Complete(A("#1E 01"), A("#1E 01")),
            Complete(B("#1E 02"), B("#1E 02")),
            Complete(A("#1E 01"), A("#1E 01"))}},
          {"blocks that are not for us do not count",
           AsIs,
           {Complete(A("#1E 01"), A("#1E 01")),
            Take(foreign, Fault("3020", "Unknown device or session ID", foreign)),
            Take(own, Fault("3021", "R-bit wrong", own)),
            Take(A("#1E 01"), Duplicate(A("#1E")))}},
          {"in the middle of a message",
           AsIs,
           {Accept(A("#1 01")),
            Take(A("#1 01"), Duplicate(A("#1"))),
            Accept(A("#2 02")),
            Take(A("#2 02"), Duplicate(A("#2"))),
            Complete(A("#3E 03"), A("#3E 010203")),
            Take(A("#3E 03"), Duplicate(A("#3E")))}},
          {"a block that was dropped for its number",
           AsIs,
           {Take(A("#5 01"), NotFirst(A("#5"))), Take(A("#5 01"), Duplicate(A("#5")))}},
          {"each field tells blocks apart",
           AsIs,
           {Complete(A("#1E"), A("#1E")),
            Complete("S6F11 800A 00000007 #1E", "S6F11 800A 00000007 #1E"),
            Complete("S6F13 800A 00000007 #1E", "S6F13 800A 00000007 #1E"),
            Complete("S5F13 800A 00000007 #1E", "S5F13 800A 00000007 #1E"),
            Complete("S5F13 800A 00000006 #1E", "S5F13 800A 00000006 #1E"),
            Accept("S5F13 800A 00000006 #1")}},
          {"without the check a message is delivered twice",
           NoDuplicateCheck,
           {Complete(A("#1E 01"), A("#1E 01")), Complete(A("#1E 01"), A("#1E 01"))}},
          {"without the check a block of a message breaks it",
           NoDuplicateCheck,
           {Accept(A("#1 01")),
            Accept(A("#2 02")),
            Take(A("#2 02"), OutOfSequence(A("#2"))),
            Take(A("#3E 03"), NotFirst(A("#3E")))}},
          {"without the check a first block begins anew",
           NoDuplicateCheck,
           {Accept(A("#1 01")),
            Take(A("#1 02"), OutOfSequence(A("#1")) + "; Block " + A("#1 02")),
            Complete(A("#2E 03"), A("#2E 0203"))}}});
}

TEST(Secs1Assembly, Sequence) {
    Play(
        {{"bodies are joined in order, pieces of any size",
          AsIs,
          {Accept(A("#1")),
           Accept(A("#2 AA")),
           Accept(A("#3")),
           Accept(A("#4 BBCC")),
           Complete(A("#5E"), A("#5E AABBCC"))}},
         {"a gap gives the message up; the rest of it is told",
          AsIs,
          {Accept(A("#1 01")),
           Take(A("#3 03"), OutOfSequence(A("#3"))),
           Take(A("#2E 02"), NotFirst(A("#2E")))}},
         {"a last block too early is a gap as well",
          AsIs,
          {Accept(A("#1 01")), Take(A("#3E 03"), OutOfSequence(A("#3E")))}},
         {"back to the first block",
          AsIs,
          {Accept(A("#1 01")),
           Accept(A("#2 02")),
           Take(A("#1 03"), OutOfSequence(A("#1")) + "; Block " + A("#1 03")),
           Complete(A("#2E 04"), A("#2E 0304"))}},
         {"a message of one block inside itself",
          AsIs,
          {Accept(A("#1 01")),
           Take(A("#1E 02"),
                OutOfSequence(A("#1E")) + "; Block " + A("#1E 02") + "; Received " + A("#1E 02"))}},
         {"a first block has number 1",
          AsIs,
          {Take(A("#2 01"), NotFirst(A("#2"))),
           Take(A("#3E 01"), NotFirst(A("#3E"))),
           Take(A("#32767E 01"), NotFirst(A("#32767E")))}},
         {"or number 0, by peers that count from there",
          AsIs,
          {Accept(A("#0 01")),
           Accept(A("#1 02")),
           Complete(A("#2E 03"), A("#2E 010203")),
           Complete(B("#0E 04"), B("#0E 04")),
           Accept(B("#0 05")),
           Take(B("#2 05"), OutOfSequence(B("#2")))}}});
}

TEST(Secs1Assembly, HeaderChangedInsideAMessage) {
    for (const char* other : {"S6F13W 800A 00000007 ",
                              "S7F11W 800A 00000007 ",
                              "S6F11 800A 00000007 ",
                              "S6F12 800A 00000007 "}) {
        const std::string changed = other;
        Play({{"a first block begins its own message",
               AsIs,
               {Accept(A("#1 01")),
                Take(changed + "#1 02", Changed(changed + "#1") + "; Block " + changed + "#1 02"),
                Complete(changed + "#2E 03", changed + "#2E 0203"),
                Take(A("#2E 04"), NotFirst(A("#2E")))}},
              {"another block is dropped without a second word",
               WithInterleaveCheck,
               {Accept(A("#1 01")),
                Take(changed + "#2 02", Changed(changed + "#2")),
                Take(A("#2E 03"), NotFirst(A("#2E")))}}});
    }
    Play({{"the device is looked at first",
           [](LinkSettings& settings) { settings.IgnoreDirection = true; },
           {Accept(A("#1 01")),
            Take("S6F11W 000A 00000007 #2E 02", Changed("S6F11W 000A 00000007 #2E")),
            Take(A("#2E 02"), NotFirst(A("#2E")))}}});
}

TEST(Secs1Assembly, InterleavedMessages) {
    Play({{"each is put together by itself",
           AsIs,
           {Accept(A("#1 A1")),
            Accept(B("#1 B1")),
            Accept(A("#2 A2")),
            Complete("S1F1W 800A 00000009 #1E", "S1F1W 800A 00000009 #1E"),
            Complete(B("#2E B2"), B("#2E B1B2")),
            Complete(A("#3E A3"), A("#3E A1A2A3"))}},
          {"with the check the first one is given up",
           WithInterleaveCheck,
           {Accept(A("#1 A1")),
            Accept(A("#2 A2")),
            Take(B("#1 B1"), Interleaved(A("#2")) + "; Block " + B("#1 B1")),
            Complete(B("#2E B2"), B("#2E B1B2")),
            Take(A("#3E A3"), NotFirst(A("#3E")))}},
          {"with the check, for a message of one block too",
           WithInterleaveCheck,
           {Accept(A("#1 A1")),
            Take(B("#1E B1"),
                 Interleaved(A("#1")) + "; Block " + B("#1E B1") + "; Received " + B("#1E B1"))}},
          {"with the check a stray block gives nothing up",
           WithInterleaveCheck,
           {Accept(A("#1 A1")),
            Take(B("#2 B2"), NotFirst(B("#2"))),
            Complete(A("#2E A2"), A("#2E A1A2"))}}});
}

TEST(Secs1Assembly, BodiesThatAreRefused) {
    const std::string tooMany = "\"Hostile body refused: lists claim more items than can be there";
    Play({{"a hostile one is refused before its block is told",
           AsIs,
           {Take(A("#1E 03FFFFFF"), "Error 3090 " + tooMany + " hdr=800A860B800100000007\""),
            Complete(B("#1E 0100"), B("#1E 0100"))}},
          {"in several blocks, at the last one",
           AsIs,
           {Accept(A("#1 03")),
            Accept(A("#2 FFFF")),
            Take(A("#3E FF"), "Error 3090 " + tooMany + " hdr=800A860B800300000007\""),
            Take(A("#4E"), NotFirst(A("#4E")))}},
          {"lists in lists, one more than allowed",
           [](LinkSettings& settings) { settings.MaxListDepth = 2; },
           {Complete(A("#1E 01010100"), A("#1E 01010100")),
            Take(B("#1E 010101010100"),
                 "Error 3090 \"Hostile body refused: lists nested too deep "
                 "hdr=800A860D800100000008\"")}},
          {"longer than the limit",
           [](LinkSettings& settings) { settings.MaxMessageBytes = 300; },
           {Accept(A("#1 *244")),
            Take(A("#2 *57"), Fault("3029", "Message too long", A("#2"))),
            Take(A("#3E"), NotFirst(A("#3E"))),
            Accept(B("#1 *244")),
            Accept(B("#2 *56")),
            Take(B("#3E"), "Block " + B("#3E") + "; Received " + B("#3E (300 bytes)"))}}});
}

TEST(Secs1Assembly, SixtyFourUnfinishedMessagesAtMost) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.FullTexts = true;
    const auto block = [](unsigned number, const std::string& rest) {
        return "S6F11W 800A " + Hex(number, 8) + " " + rest;
    };
    for (unsigned number = 1; number <= 64; ++number) {
        ExpectSteps(rig, {Accept(block(number, "#1 01"))});
    }
    ExpectSteps(rig, {Complete(block(0x100, "#1E 02"), block(0x100, "#1E 02"))});
    const std::string oldest = Fault("3028", "Too many open messages", block(1, "#1"));
    ExpectSteps(rig,
                {Take(block(65, "#1 01"), oldest + "; Block " + block(65, "#1 01")),
                 Complete(block(2, "#2E 02"), block(2, "#2E 0102")),
                 Take(block(1, "#2E 02"), NotFirst(block(1, "#2E"))),
                 Accept(block(66, "#1 01"))});
    EXPECT_EQ(rig.Statistics().MessagesCrowdedOut, 1U);
}

TEST(Secs1Assembly, SixtyFourMegabytesOfUnfinishedMessagesAtMost) {
    const LinkSettings settings = Secs1Rig::Settings();
    LinkStatistics counts;
    link::OpenTransactions transactions;
    link::SystemBytesMap systemBytes;
    secs1::Assembly assembly(settings, counts, transactions, systemBytes);
    std::vector<secs1::AssemblyOutput> told;
    std::vector<std::uint8_t> block(secs1::kMaxLength);
    const auto give = [&](std::uint32_t message, std::uint16_t number) {
        const auto header = secs1::EncodeHeader({.ToHost = true,
                                                 .DeviceID = 10,
                                                 .Stream = 7,
                                                 .Function = 3,
                                                 .IsLast = false,
                                                 .Number = number,
                                                 .SystemBytes = message});
        std::copy(header.begin(), header.end(), block.begin());
        assembly.OnBlock(block, link::TimePoint{});
        assembly.TakeOutput(told);
        return std::count_if(told.begin(), told.end(), [](const secs1::AssemblyOutput& one) {
            return std::holds_alternative<secs1::MessageFault>(one);
        });
    };
    const std::size_t most = secs1::Assembly::kMaxOpenBytes / secs1::kMaxDataBytes;
    constexpr std::size_t kEach = 5'000;
    for (std::size_t index = 0; index < most; ++index) {
        ASSERT_EQ(give(static_cast<std::uint32_t>(index / kEach),
                       static_cast<std::uint16_t>(index % kEach + 1)),
                  0)
            << index;
    }
    EXPECT_EQ(assembly.OpenBytes(), most * secs1::kMaxDataBytes);
    const auto last = static_cast<std::uint32_t>(most / kEach);
    EXPECT_EQ(give(last, static_cast<std::uint16_t>(most % kEach + 1)), 1);
    const auto& fault = std::get<secs1::MessageFault>(told.front());
    EXPECT_EQ(fault.Code, link::LinkError::TooManyOpenMessages);
    EXPECT_EQ(secs1::DecodeHeader(fault.Header).SystemBytes, 0U) << "the oldest";
    EXPECT_EQ(assembly.OpenBytes(), (most + 1 - kEach) * secs1::kMaxDataBytes);
    EXPECT_EQ(give(0, 5'001), 1) << "nothing is left of it";
}

}  // namespace
}  // namespace hexmire::test
