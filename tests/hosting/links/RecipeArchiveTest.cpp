// Process programs kept in files as they pass.
#include <hexmire/hosting/links/RecipeArchive.h>

#include "HeldFiles.h"
#include "RecordsRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>

namespace hexmire::test {
namespace {

using namespace std::string_literals;
using fakes::TempFolder;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

using ByteVector = std::vector<std::uint8_t>;
using HeaderArray = std::array<std::uint8_t, 10>;

/// An item of one length byte, or two for what needs them.
void AddItem(ByteVector& body, std::uint8_t format, const std::string& value) {
    const bool isLong = value.size() > 255;
    body.push_back(static_cast<std::uint8_t>(format * 4 + (isLong ? 2 : 1)));
    if (isLong) body.push_back(static_cast<std::uint8_t>(value.size() >> 8U));
    body.push_back(static_cast<std::uint8_t>(value.size()));
    body.insert(body.end(), value.begin(), value.end());
}

ByteVector RecipeBody(const std::string& id, const std::string& value) {
    constexpr std::uint8_t kAscii = 16;
    constexpr std::uint8_t kBinary = 8;
    ByteVector body{0x01, 0x02};
    AddItem(body, kAscii, id);
    AddItem(body, kBinary, value);
    return body;
}

class RecipeArchiveTest : public RecordsRig {
protected:
    RecipeArchiveTest() {
        settings_.Trace = false;
        settings_.RecipeFileEnabled = true;
        settings_.RecipeSendPath = folder_ / "sent";
        settings_.RecipeRecvPath = folder_ / "received";
    }
    void Send(std::uint8_t function, const ByteVector& body) {
        driver_->SendMessage(Header(7, function, ++systemBytes_),
                             Variant::Bytes(body),
                             static_cast<std::int32_t>(body.size()));
    }
    void Receive(std::uint8_t function, const ByteVector& body) {
        ByteVector frame = Bytes("00000000 0005 0700 0000 00000000");
        frame[2] = static_cast<std::uint8_t>((body.size() + 10) >> 8U);
        frame[3] = static_cast<std::uint8_t>(body.size() + 10);
        frame[7] = function;
        frame[13] = static_cast<std::uint8_t>(++systemBytes_);
        frame.insert(frame.end(), body.begin(), body.end());
        peer_.Send(HexText(frame));
    }
    /// Runs the loop until so many were stored.
    bool Stored(std::uint64_t count) {
        return rig_.RunUntil([&] { return driver_->Statistics().RecipesStored == count; });
    }
    [[nodiscard]] std::vector<std::string> NamesIn(const std::string& name) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_ / name))
            names.push_back(entry.path().filename());
        return names;
    }

    std::uint32_t systemBytes_ = 100;
};

TEST_F(RecipeArchiveTest, WhatIsSentAndReceivedGoesToItsFolder) {
    Connect();
    Send(3, RecipeBody("S3", "sent by 3"));
    Send(6, RecipeBody("S6", "sent by 6"));
    Receive(3, RecipeBody("R3", "received by 3"));
    Receive(6, RecipeBody("R6", "a\0b"s));
    ASSERT_TRUE(Stored(4));
    EXPECT_THAT(NamesIn("sent"), UnorderedElementsAre("S3", "S6"));
    EXPECT_THAT(NamesIn("received"), UnorderedElementsAre("R3", "R6"));
    EXPECT_EQ(TempFolder::Read(folder_ / "sent/S3"), "sent by 3");
    EXPECT_EQ(TempFolder::Read(folder_ / "sent/S6"), "sent by 6");
    EXPECT_EQ(TempFolder::Read(folder_ / "received/R3"), "received by 3");
    EXPECT_EQ(TempFolder::Read(folder_ / "received/R6"), "a\0b"s);
}

TEST_F(RecipeArchiveTest, ALaterOneReplacesTheFile) {
    Connect();
    Receive(3, RecipeBody("P", "the first version"));
    Receive(3, RecipeBody("P", "second"));
    ASSERT_TRUE(Stored(2));
    EXPECT_EQ(TempFolder::Read(folder_ / "received/P"), "second");
}

TEST_F(RecipeArchiveTest, OtherMessagesAndAnswersWithoutOneLeaveNothing) {
    Connect();
    const ByteVector body = RecipeBody("P", "x");
    for (const std::uint8_t function : std::initializer_list<std::uint8_t>{1, 4, 5, 23, 25, 26})
        Receive(function, body);
    Receive(6, {});
    Receive(6, {0x01, 0x00});
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Message") == 8; }));
    Receive(3, body);
    ASSERT_TRUE(Stored(1));
    EXPECT_FALSE(events_.Has("Error"));
}

TEST_F(RecipeArchiveTest, AMessageThatIsNotSentIsNotStored) {
    Make();
    Send(3, RecipeBody("P", "x"));
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3040"); }));
    Destroy();
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(RecipeArchiveTest, OnOffAndFoldersCountAtOnce) {
    Connect();
    driver_->RecipeFileEnabled(false);
    Receive(3, RecipeBody("off", "x"));
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Message") == 1; }));
    driver_->RecipeFileEnabled(true);
    driver_->RecipeRecvPath(folder_ / "in");
    driver_->RecipeSendPath(folder_.Path() + "\\out\\");
    Receive(3, RecipeBody("on", "x"));
    Send(3, RecipeBody("on", "y"));
    ASSERT_TRUE(Stored(2));
    EXPECT_THAT(NamesIn("in"), ElementsAre("on"));
    EXPECT_THAT(NamesIn("out"), ElementsAre("on"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "received"));
}

struct Attack {
    std::string Id;
    std::string Name;
};

TEST_F(RecipeArchiveTest, NoIdentifierLeavesTheFolder) {
    const Attack attacks[] = {
        {"", "%empty"},
        {".", "%2E"},
        {"..", "%2E%2E"},
        {"/", "%2F"},
        {"../../etc/passwd", "%2E.%2F..%2Fetc%2Fpasswd"},
        {"/etc/passwd", "%2Fetc%2Fpasswd"},
        {"..\\..\\up", "%2E.%5C..%5Cup"},
        {"C:\\x", "C%3A%5Cx"},
        {"a\0/../b"s, "a%00%2F..%2Fb"},
        {".hexmire-1-1.tmp", "%2Ehexmire-1-1.tmp"},
        {"x.tmp", "x.tmp"},
        {"a.", "a%2E"},
        {"a ", "a%20"},
        {"nul", "%6Eul"},
        {"\xE9t\xE9", "%E9t%E9"},
        {"line\r\nbreak", "line%0D%0Abreak"},
        {"%2F", "%252F"},
        {std::string(300, 'A'), std::string(122, 'A') + "%~"},
        {std::string(300, '/'), "%2F%2F"},
    };
    Connect();
    std::vector<std::string> wanted;
    for (const Attack& attack : attacks) {
        SCOPED_TRACE(attack.Name);
        Receive(3, RecipeBody(attack.Id, "x"));
        wanted.push_back(attack.Name);
        ASSERT_TRUE(Stored(wanted.size()));
    }
    std::vector<std::string> names = NamesIn("received");
    for (std::string& name : names) {
        EXPECT_LE(name.size(), 140U);
        const std::size_t hash = name.find("%~");
        if (hash != std::string::npos) name.resize(name[0] == 'A' ? hash + 2 : 6);
    }
    EXPECT_THAT(names, testing::UnorderedElementsAreArray(wanted));
    EXPECT_THAT(NamesIn("."), ElementsAre("received")) << "nothing beside the folder";
}

TEST_F(RecipeArchiveTest, EachFailureIsToldAndTheMessageGoesOn) {
    folder_.Write("file", "");
    settings_.RecipeSendPath = folder_ / "file";
    settings_.RecipeRecvPath = "/dev/full";
    Connect();
    Receive(3, RecipeBody("P/1", "x"));
    Receive(3, RecipeBody("P/1", "x"));
    Send(3, RecipeBody("P2", "x"));
    EXPECT_EQ(peer_.Read(kFrame + 9).substr(0, 9), "00 00 00 ");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3081") == 3; }));
    EXPECT_EQ(events_.Count("Message"), 2U);
    EXPECT_EQ(events_.Count("Sent"), 1U);
    const std::string received = "Recipe not stored: /dev/full/P%2F1: Not a directory (20)";
    const std::string sent =
        "Recipe not stored: " + (folder_ / "file/P2") + ": Not a directory (20)";
    EXPECT_THAT(events_.Texts, UnorderedElementsAre(received, received, sent));
    EXPECT_EQ(driver_->Statistics().RecipesNotStored, 3U);
    EXPECT_TRUE(driver_->LinkStatus());
}

TEST_F(RecipeArchiveTest, AMissingFolderSettingIsTold) {
    settings_.RecipeSendPath = settings_.RecipeRecvPath = "";
    Connect();
    Receive(3, RecipeBody("P", "x"));
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3081") == 1; }));
    Send(3, RecipeBody("P", "x"));
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3081") == 2; }));
    EXPECT_THAT(events_.Texts,
                ElementsAre("Recipe not stored: P: no folder is set in RecipeRecvPath",
                            "Recipe not stored: P: no folder is set in RecipeSendPath"));
}

TEST_F(RecipeArchiveTest, AMessageOfAnotherShapeIsTold) {
    Connect();
    Receive(3, {0x41, 0x01, 0x50});
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3081") == 1; }));
    EXPECT_EQ(events_.Texts.at(0), "Recipe not stored: S7F3 is no list of PPID and PPBODY");
    EXPECT_EQ(events_.Count("Message"), 1U);
}

TEST(RecipeArchive, WhatWaitsForASlowDiskIsBounded) {
    LinkRig rig;
    const auto held = std::make_shared<HeldFiles>();
    held->Hold();
    LinkStatistics statistics;
    std::vector<std::string> failures;
    link::FileWorker worker(rig.Loop);
    link::RecipeArchive archive(
        worker, {.Files = held, .Now = nullptr}, statistics, [&](const std::string& what) {
            failures.push_back(what);
        });
    LinkSettings settings;
    settings.RecipeFileEnabled = true;
    settings.RecipeRecvPath = "/in";
    archive.Configure(settings);
    ByteVector body = Bytes("0102 410150 23F00000");  // L,2 {A "P", B[15 728 640]}
    body.resize(body.size() + 0xF00000);
    const HeaderArray header{0, 5, 7, 3};
    for (int count = 0; count < 5; ++count)
        archive.Take(link::TraceDirection::Received, header, body);
    EXPECT_THAT(failures, ElementsAre("/in/P: too much waits for the disk"));
    held->Release();
    EXPECT_TRUE(rig.RunUntil([&] { return statistics.RecipesStored == 4; }));
    archive.Take(link::TraceDirection::Received, header, body);
    EXPECT_TRUE(rig.RunUntil([&] { return statistics.RecipesStored == 5; }));
    EXPECT_EQ(statistics.RecipesNotStored, 1U);
}

TEST(RecipeArchive, RecipesWithoutContentCountTooWhileTheyWait) {
    LinkRig rig;
    const auto held = std::make_shared<HeldFiles>();
    held->Hold();
    LinkStatistics statistics;
    std::uint64_t refused = 0;
    link::FileWorker worker(rig.Loop);
    link::RecipeArchive archive(
        worker, {.Files = held, .Now = nullptr}, statistics, [&](const std::string&) {
            ++refused;
        });
    LinkSettings settings;
    settings.RecipeFileEnabled = true;
    settings.RecipeRecvPath = "/in";
    archive.Configure(settings);
    const ByteVector body = Bytes("0102 410150 2100");  // L,2 {A "P", B[0]}
    const HeaderArray header{0, 5, 7, 3};
    constexpr std::uint64_t kMoreThanFit = 64 * 1024 * 1024 / 512;
    for (std::uint64_t count = 0; count < kMoreThanFit; ++count)
        archive.Take(link::TraceDirection::Received, header, body);
    EXPECT_GT(refused, 0U);
    held->Release();
    EXPECT_TRUE(rig.RunUntil([&] { return statistics.RecipesStored == kMoreThanFit - refused; }));
}

TEST_F(RecipeArchiveTest, WhatWaitsIsStoredWhenTheDriverIsDestroyed) {
    Connect();
    for (int count = 0; count < 20; ++count)
        Receive(3, RecipeBody("P" + std::to_string(count), "x"));
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Message") == 20; }));
    Destroy();
    EXPECT_EQ(NamesIn("received").size(), 20U);
}

}  // namespace
}  // namespace hexmire::test
