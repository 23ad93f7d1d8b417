#include "../hosting/TempFolder.h"
#include "Template.h"
#include <gtest/gtest.h>

#include <string>

namespace hexmire::program {
namespace {

/// The shipped dictionary in a control.
class Template : public testing::Test {
protected:
    Template() {
        control_.Events().Error = [this](std::int32_t code, const std::string& text, std::int32_t) {
            errors_ += std::to_string(code) + ' ' + text + '\n';
        };
        control_.SECSDictionaryFile(HEXMIRE_SOURCE_DIR "/dictionaries/Default.xml");
        control_.LoadXMLDictionary();
    }

    SECSTransPtr Prepared(const std::string& name) {
        const SECSTransPtr trans = control_.NewSECSTransaction(name);
        PrepareSending(*trans);
        return trans;
    }
    static std::string Primary(const SECSTransPtr& trans) {
        return RenderSml(*trans->Primary(), trans->ReplyExpected());
    }

    EventLoop loop_;
    Hexmire control_{loop_.Platform({.MessageLog = false})};
    std::string errors_;
};

TEST_F(Template, TheShippedDictionaryLoadsWithoutReport) {
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(control_.SECSDictionary()->TransCount(), 268);
}

TEST_F(Template, ItSendsTwentyFourPrimariesWithoutTheWBit) {
    int unanswered = 0;
    for (const SECSTransPtr& entry : *control_.SECSDictionary()) {
        const SECSTransPtr trans = Prepared(entry->Name());
        EXPECT_EQ(trans->ReplyExpected(), HasReply(*entry)) << entry->Name();
        if (!trans->ReplyExpected()) ++unanswered;
    }
    EXPECT_EQ(unanswered, 24);
    EXPECT_EQ(Primary(Prepared("S9F13")), "S9F13\r\n< L \r\n  < A >\r\n  < A >\r\n >\r\n.");
}

TEST_F(Template, AReplyWithoutBodyIsAReply) {
    const SECSTransPtr trans = Prepared("S4F23");
    EXPECT_EQ(trans->Secondary()->Root()->ItemCount(), 0);
    EXPECT_TRUE(trans->ReplyExpected());
}

TEST_F(Template, ListsThatRepeatAreSentEmptyWhenNobodyFilledThem) {
    EXPECT_EQ(Primary(Prepared("S1F3")), "S1F3 W\r\n< L  >\r\n.");
    EXPECT_EQ(Primary(Prepared("S6F11")),
              "S6F11 W\r\n< L \r\n  < U4 >\r\n  < U4 >\r\n  < L    >\r\n >\r\n.");
}

TEST_F(Template, AFilledElementStaysAndListsInItAreLookedAtThemselves) {
    const SECSTransPtr trans = control_.NewSECSTransaction("S6F11");
    const SECSItemPtr report = trans->Primary()->Item(1)->Item(3)->Item(1);
    report->Item("RPTID")->Value(7);
    PrepareSending(*trans);
    EXPECT_EQ(Primary(trans),
              "S6F11 W\r\n< L \r\n  < U4 >\r\n  < U4 >\r\n  < L \r\n    < L \r\n"
              "      < U4 7 >\r\n      < L        >\r\n     >\r\n   >\r\n >\r\n.");
}

TEST_F(Template, AValueDeepInsideKeepsEveryElementAroundIt) {
    const SECSTransPtr trans = control_.NewSECSTransaction("S6F11");
    trans->Primary()->Item(1)->Item(3)->Item(1)->Item(2)->Item(1)->Value("x");
    PrepareSending(*trans);
    EXPECT_NE(Primary(trans).find("< V x >"), std::string::npos) << Primary(trans);
}

TEST_F(Template, AListThatIsFixedKeepsItsItems) {
    EXPECT_EQ(Primary(Prepared("S1F13")), "S1F13 W\r\n< L \r\n  < A >\r\n  < A >\r\n >\r\n.");
}

TEST_F(Template, OnlyTheDescriptionThatSaysAnyNumberMarksAListThatRepeats) {
    const SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr list = message->Root()->AddNew(1);
    list->Format(FormatList);
    list->AddNew(1);
    for (const char* description : {"", "any of two", "Any number of X", "not any number of X"}) {
        list->Description(description);
        DropExamples(*message);
        EXPECT_EQ(list->ItemCount(), 1) << description;
    }
    list->Description("any number of X");
    DropExamples(*message);
    EXPECT_EQ(list->ItemCount(), 0);
}

TEST_F(Template, ASecondaryWithNameDescriptionOrBodyIsAReply) {
    const SECSTransPtr trans = control_.NewSECSTransaction();
    SECSMessage& secondary = *trans->Secondary();
    EXPECT_FALSE(HasReply(*trans));
    secondary.Name("S1F2");
    EXPECT_TRUE(HasReply(*trans));
    secondary.Name("");
    secondary.Description("x");
    EXPECT_TRUE(HasReply(*trans));
    secondary.Description("");
    secondary.Root()->AddNew(1);
    EXPECT_TRUE(HasReply(*trans));
}

TEST_F(Template, EveryPreparedMessageEncodesAndDecodesWithoutReport) {
    for (const SECSTransPtr& entry : *control_.SECSDictionary()) {
        const SECSTransPtr trans = Prepared(entry->Name());
        DropExamples(*trans->Secondary());
        for (const auto& message : {trans->Primary(), trans->Secondary()})
            EXPECT_TRUE(DecodeBody(EncodeBody(*message)).Ok) << entry->Name();
    }
    EXPECT_EQ(errors_, "");
}

}  // namespace
}  // namespace hexmire::program
