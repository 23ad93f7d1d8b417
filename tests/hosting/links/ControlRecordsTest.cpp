// The properties of the control that concern files, over a real link.
#include <hexmire/hexmire.h>

#include "../../fakes/CaptureReader.h"
#include "../TempFolder.h"
#include "LinkRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using fakes::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr auto kBound = 30s;  // Only ends a test that fails.

constexpr const char* kDictionary =
    "<D><Trans Name='S7F3' Desc=''><Primary Stream='7' Func='3' Name='' Desc=''><Root/></Primary>"
    "<Secondary Stream='7' Func='4' Name='' Desc=''><Root/></Secondary></Trans>"
    "<Trans Name='S7F5' Desc=''><Primary Stream='7' Func='5' Name='' Desc=''><Root/></Primary>"
    "<Secondary Stream='7' Func='6' Name='' Desc=''><Root/></Secondary></Trans></D>";

void AddRecipe(const SECSMessagePtr& message, const char* id, const char* body) {
    const SECSItemPtr list = message->Root()->AddNew(1);
    list->Format(FormatList);
    for (int index = 1; index <= 2; ++index) {
        const SECSItemPtr item = list->AddNew(index);
        item->Format(FormatAscii);
        item->Value(index == 1 ? id : body);
    }
}

class ControlRecords : public testing::Test {
protected:
    void SetUp() override {
        const std::string dictionary = folder_.Write("d.xml", kDictionary);
        for (auto* control : {&host_, &equipment_}) {
            PlatformOptions options;
            options.MessageLog = false;
            options.ApplicationFolder = folder_.Path();
            options.Link.CaptureFolder = folder_ / "captures";
            *control = std::make_unique<Hexmire>(loop_.Platform(options));
            (*control)->ConnectionPortType(PortTypeHSMS_SS);
            (*control)->LocalIPAddress("127.0.0.1");
            (*control)->RemoteIPAddress("127.0.0.1");
            (*control)->LocalIPPort(port_);
            (*control)->RemoteIPPort(port_);
            (*control)->SECSDictionaryFile(dictionary);
            (*control)->LoadXMLDictionary();
            (*control)->Events().Error =
                [this](std::int32_t code, const std::string& text, std::int32_t) {
                    errors_.push_back(std::to_string(code) + " " + text);
                };
        }
        equipment_->HSMSConnectionType(ConnectionModePassive);
        equipment_->ConnectionHost(false);
        equipment_->Events().ReceivedPrimary =
            [](const SECSTransPtr& trans, std::int32_t, const std::string&) {
                if (trans->Name() == "S7F5") AddRecipe(trans->Secondary(), "UP", "uploaded");
                trans->Reply();
            };
        host_->Events().ReceivedSecondary =
            [this](const SECSTransPtr&, std::int32_t, const std::string&) { ++replies_; };
    }
    void Exchange() {
        bool connected = false;
        host_->Events().Connect = [&] { connected = true; };
        equipment_->OpenPort();
        host_->OpenPort();
        ASSERT_TRUE(loop_.RunUntil([&] { return connected; }, kBound));
        for (const char* name : {"S7F3", "S7F5"}) {
            const SECSTransPtr trans = host_->NewSECSTransaction(name);
            trans->ReplyExpected(true);
            if (trans->Name() == "S7F3") AddRecipe(trans->Primary(), "DOWN", "downloaded");
            trans->Send();
        }
        ASSERT_TRUE(loop_.RunUntil([&] { return replies_ == 2; }, kBound));
    }
    /// Ends both controls, after which everything is written.
    void End() {
        host_.reset();
        equipment_.reset();
    }
    [[nodiscard]] std::vector<std::string> NamesIn(const std::string& name) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_ / name))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    TempFolder folder_;
    EventLoop loop_;
    const std::int32_t port_ = LinkRig().FreePort();
    std::unique_ptr<Hexmire> host_;
    std::unique_ptr<Hexmire> equipment_;
    std::vector<std::string> errors_;
    int replies_ = 0;
};

TEST_F(ControlRecords, RecipesGoToTheFoldersOfTheControl) {
    host_->RecipeFileEnabled(true);
    host_->RecipeSendPath(folder_ / "host-sent");
    host_->RecipeRecvPath(folder_ / "host-received");
    equipment_->RecipeFileEnabled(true);
    equipment_->RecipeSendPath(folder_ / "equipment-sent");
    equipment_->RecipeRecvPath(folder_ / "equipment-received");
    Exchange();
    End();
    EXPECT_EQ(TempFolder::Read(folder_ / "host-sent/DOWN"), "downloaded");
    EXPECT_EQ(TempFolder::Read(folder_ / "host-received/UP"), "uploaded");
    EXPECT_EQ(TempFolder::Read(folder_ / "equipment-sent/UP"), "uploaded");
    EXPECT_EQ(TempFolder::Read(folder_ / "equipment-received/DOWN"), "downloaded");
    EXPECT_THAT(errors_, testing::IsEmpty());
}

TEST_F(ControlRecords, RecipesAreNotKeptUnlessTheyAreWanted) {
    host_->RecipeSendPath(folder_ / "sent");
    host_->RecipeRecvPath(folder_ / "received");
    Exchange();
    End();
    EXPECT_FALSE(std::filesystem::exists(folder_ / "sent"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "received"));
}

TEST_F(ControlRecords, TheTraceGoesToTheLogFolderOfTheApplicationOrToTheOneThatIsSet) {
    host_->TraceEnabled(true);
    equipment_->TraceEnabled(true);
    equipment_->SECSILogPath(folder_ / "traces");
    Exchange();
    End();
    const std::string port = std::to_string(port_) + "-device-0_";
    const auto logs = NamesIn("Log");
    const auto traces = NamesIn("traces");
    ASSERT_EQ(logs.size(), 1U);
    ASSERT_EQ(traces.size(), 1U);
    EXPECT_THAT(logs[0], testing::StartsWith("SECSI_to-127.0.0.1-" + port));
    EXPECT_THAT(traces[0], testing::StartsWith("SECSI_at-127.0.0.1-" + port));
    // S7F5 W from one side to the other.
    const char* question = " 00 00 00 0A 00 00 87 05 00 00 ";
    EXPECT_THAT(TempFolder::Read(folder_ / ("Log/" + logs[0])), HasSubstr(question));
    EXPECT_THAT(TempFolder::Read(folder_ / ("traces/" + traces[0])), HasSubstr("00 00 87 05 00"));
}

TEST_F(ControlRecords, TurningTheTraceOffCountsAtOnce) {
    host_->TraceEnabled(true);
    host_->TraceEnabled(false);
    Exchange();
    End();
    EXPECT_FALSE(std::filesystem::exists(folder_ / "Log"));
}

TEST_F(ControlRecords, EachPortHasACaptureOfItsOwn) {
    Exchange();
    End();
    EXPECT_THAT(errors_, testing::IsEmpty());
    const auto names = NamesIn("captures");
    ASSERT_EQ(names.size(), 2U);
    EXPECT_THAT(names[0], testing::StartsWith("SECSI_at-"));
    EXPECT_THAT(names[1], testing::StartsWith("SECSI_to-"));
    for (const std::string& name : names) {
        const auto lines = fakes::ShowCapture(TempFolder::Read(folder_ / ("captures/" + name)));
        EXPECT_THAT(lines.front(), HasSubstr(" S 0 0 | connected: 127.0.0.1:"));
        EXPECT_THAT(lines, testing::Contains(HasSubstr("64 6F 77 6E 6C 6F 61 64 65 64")));
    }
}

TEST_F(ControlRecords, ATraceFolderThatIsNoneIsToldByAnErrorOfTheControl) {
    host_->TraceEnabled(true);
    host_->SECSILogPath("/proc/none");
    Exchange();
    ASSERT_TRUE(loop_.RunUntil([&] { return !errors_.empty(); }, kBound));
    EXPECT_THAT(errors_,
                ElementsAre(testing::StartsWith(
                    "3080 Trace file cannot be written: /proc/none/SECSI_to-127.0.0.1-")));
    EXPECT_EQ(host_->ErrorCode(), 3080);
}

}  // namespace
}  // namespace hexmire::test
