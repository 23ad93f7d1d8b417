// What the shell tells its records, and what becomes of it.
#include <hexmire/hosting/links/LinkRecords.h>

#include "HeldFiles.h"
#include "RecordsRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

namespace hexmire::test {
namespace {

using link::ConnectionEnd;
using link::LinkError;
using testing::ElementsAre;

/// No operation of a disk finds memory.
class NoMemory final : public IRecordFiles {
public:
    std::string Append(const std::string&, std::string_view, std::string_view) override {
        throw std::bad_alloc();
    }
    std::string Store(const std::string&, const std::string&, std::string_view) override {
        throw std::bad_alloc();
    }
};

class LinkRecordsTest : public testing::Test {
protected:
    LinkRecordsTest() {
        settings_.Trace = true;
        settings_.SECSILogPath = "/logs/";
    }
    void Make() {
        const link::RecordSite site{.Files = files_, .Now = [] { return LocalMoment(5, 1, 2, 3); }};
        records_ = std::make_unique<link::LinkRecords>(
            rig_.Loop,
            site,
            statistics_,
            settings_,
            [this](LinkError code, const std::string& what) {
                failures_.push_back(std::to_string(static_cast<std::int32_t>(code)) + " " + what);
            });
    }
    /// The trace without its times.
    [[nodiscard]] std::vector<std::string> Lines() {
        records_->Finish();
        std::vector<std::string> lines;
        const auto files = held_->Files();
        if (files.empty()) return lines;
        const std::string& text = files.begin()->second;
        for (std::size_t begin = 0; begin < text.size();) {
            const std::size_t end = text.find("\r\n", begin);
            lines.push_back(text.substr(begin + 27, end - begin - 27));
            begin = end + 2;
        }
        return lines;
    }

    LinkRig rig_;
    LinkSettings settings_;
    LinkStatistics statistics_;
    std::shared_ptr<HeldFiles> held_ = std::make_shared<HeldFiles>();
    std::shared_ptr<IRecordFiles> files_ = held_;
    std::vector<std::string> failures_;
    std::unique_ptr<link::LinkRecords> records_;
};

TEST_F(LinkRecordsTest, OnlyWhatTheSystemTookIsShownAsSent) {
    Make();
    const auto first = Bytes("010203");
    const auto second = Bytes("04050607");
    const std::span<const std::uint8_t> views[] = {first, second};
    records_->OnSent(views, 5);
    records_->OnSent(views, 0);
    records_->OnSent(views, 7);
    EXPECT_THAT(
        Lines(),
        ElementsAre(
            "Send 3: 01 02 03", "Send 2: 04 05", "Send 3: 01 02 03", "Send 4: 04 05 06 07"));
}

TEST_F(LinkRecordsTest, AnEndIsPutDownToWhatWasSeenOfThisConnection) {
    Make();
    const link::Endpoints ends{.LocalAddress = "10.0.0.1",
                               .LocalPort = 1,
                               .RemoteAddress = "::1",
                               .RemotePort = 2,
                               .IsCaller = true};
    records_->OnConnection(ends);
    records_->OnEndSeen(ConnectionEnd::ByPeer, "closed by the peer");
    records_->OnClosed();
    records_->OnClosed();
    records_->OnConnection(ends);
    records_->OnConnection(ends);
    records_->OnClosed();
    EXPECT_THAT(Lines(),
                ElementsAre("Note connected: [::1]:2 to 10.0.0.1:1",
                            "Note disconnected: closed by the peer",
                            "Note connected: [::1]:2 to 10.0.0.1:1",
                            "Note disconnected: closed by this side",
                            "Note connected: [::1]:2 to 10.0.0.1:1",
                            "Note disconnected: closed by this side"));
}

TEST_F(LinkRecordsTest, MemoryThatEndsAtTheDiskIsAFailureLikeAnyOther) {
    files_ = std::make_shared<NoMemory>();
    settings_.RecipeFileEnabled = true;
    settings_.RecipeRecvPath = "/in";
    Make();
    records_->OnReceived(Bytes("05"));
    records_->OnEvent(
        link::RaiseReceived{.Header = {0, 5, 7, 3}, .Body = Bytes("0102 410150 410161")});
    records_->Flush();
    ASSERT_TRUE(rig_.RunUntil([&] { return failures_.size() == 2; }));
    EXPECT_THAT(failures_,
                testing::UnorderedElementsAre("3080 /logs/SECSI_serial-COM1_2024-03-05.log: failed",
                                              "3081 /in/P: failed"));
}

TEST_F(LinkRecordsTest, NothingIsToldAfterTheEnd) {
    held_->Fail("full");
    Make();
    records_->OnReceived(Bytes("05"));
    records_->Finish();
    records_->OnReceived(Bytes("06"));
    records_->Flush();
    rig_.RunFor(std::chrono::milliseconds(2));
    EXPECT_TRUE(failures_.empty());
    EXPECT_EQ(held_->Writes(), 1);
}

}  // namespace
}  // namespace hexmire::test
