#include <hexmire/trans/TransFactory.h>

#include "../fakes/Messages.h"
#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::AddItem;
using fakes::TransHost;
using ModGeneral::CreateNewTrans;
using Reports = TransHost::Reports;

const char* const kNoTrans =
    "(ModGeneral-CreateNewTrans) Object variable or With block variable not set";
const char* const kNoMessage =
    "(ModGeneral-CreateSECSMessage) Object variable or With block variable not set";

/// A template with every field set.
SECSTransPtr Template(const SECSDictionaryPtr& dictionary) {
    SECSTransPtr trans = dictionary->AddNewTrans(1);
    trans->ActionOnError("on error");
    trans->ActionOnSuccess(17);
    trans->Tag(true);
    trans->AutoSystemBytes(false);
    trans->ReplyExpected(false);
    trans->Description("described");
    trans->Name("S1F3");
    trans->DeviceID(99);
    Access::SystemBytes(*trans, 1234);
    trans->Primary()->Stream(1);
    trans->Primary()->Func(3);
    trans->Primary()->Name("request");
    trans->Secondary()->Stream(1);
    trans->Secondary()->Func(4);
    AddItem(AddItem(trans->Primary()->Root(), FormatList), FormatU4, 7);
    AddItem(trans->Secondary()->Root(), FormatAscii, "answer");
    return trans;
}

TEST(CopyOfATemplate, TakesEveryStatedField) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr source = Template(dictionary);
    const SECSTransPtr target = host.Make<SECSTrans>();
    CreateNewTrans(target, source);
    EXPECT_EQ(target->ActionOnError(), Variant("on error"));
    EXPECT_EQ(target->ActionOnSuccess(), Variant(17));
    EXPECT_EQ(target->Tag(), Variant(true));
    EXPECT_FALSE(target->AutoSystemBytes());
    EXPECT_FALSE(target->ReplyExpected());
    EXPECT_EQ(target->Description(), "described");
    EXPECT_EQ(target->Name(), "S1F3");
    EXPECT_EQ(target->SystemBytes(), 1234);
    EXPECT_EQ(target->Primary()->Stream(), 1);
    EXPECT_EQ(target->Primary()->Func(), 3);
    EXPECT_EQ(target->Primary()->Name(), "request");
    EXPECT_EQ(target->Secondary()->Func(), 4);
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(CopyOfATemplate, TakesTheFlagsAndNumbersInEitherDirection) {
    TransHost host;
    for (const bool value : {true, false}) {
        const SECSTransPtr source = host.MakeTrans(1, 1);
        const SECSTransPtr target = host.MakeTrans(1, 1);
        source->AutoSystemBytes(value);
        source->ReplyExpected(!value);
        target->AutoSystemBytes(!value);
        target->ReplyExpected(value);
        Access::SystemBytes(*target, 44);
        CreateNewTrans(target, source);
        EXPECT_EQ(target->AutoSystemBytes(), value);
        EXPECT_EQ(target->ReplyExpected(), !value);
        EXPECT_EQ(target->SystemBytes(), 0);
    }
}

TEST(CopyOfATemplate, KeepsItsDeviceIdWhenTheControlsChangesBeforeItIsSent) {
    TransHost host;
    host.DeviceId = 42;
    const SECSTransPtr target = host.Make<SECSTrans>();
    CreateNewTrans(target, Template(host.Make<SECSDictionary>()));
    host.DeviceId = 43;
    target->Send();
    EXPECT_EQ(host.Record.Sent.at(0).Header[1], 42);
}

TEST(CopyOfATemplate, OntoAFilledTransactionStandsBehindTheOldBody) {
    TransHost host;
    const SECSTransPtr target = host.MakeTrans(1, 1);
    AddItem(target->Primary()->Root(), FormatU1, 1);
    CreateNewTrans(target, Template(host.Make<SECSDictionary>()));
    EXPECT_EQ(target->Primary()->Root()->ItemCount(), 2);
    EXPECT_EQ(target->Secondary()->Root()->ItemCount(), 1);
    EXPECT_EQ(fakes::HexOf(EncodeBody(*target->Primary())), "A5 01 01");
}

TEST(CopyOfATemplate, OfItselfGetsEachBodyTwice) {
    TransHost host;
    const SECSTransPtr trans = Template(host.Make<SECSDictionary>());
    CreateNewTrans(trans, trans);
    EXPECT_EQ(Access::Parent(*trans), nullptr);
    EXPECT_EQ(trans->DeviceID(), 0);
    EXPECT_EQ(trans->Primary()->Root()->ItemCount(), 2);
    EXPECT_EQ(trans->Secondary()->Root()->ItemCount(), 2);
    EXPECT_EQ(trans->Name(), "S1F3");
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(CopyOfATemplate, TakesTheControlsPresentDeviceId) {
    TransHost host;
    const SECSTransPtr source = Template(host.Make<SECSDictionary>());
    const SECSTransPtr target = host.Make<SECSTrans>();
    host.DeviceId = 42;
    CreateNewTrans(target, source);
    EXPECT_EQ(target->DeviceID(), 42);
    EXPECT_EQ(source->DeviceID(), 99);
}

TEST(CopyOfATemplate, HasNoParentAndKeepsItsOwnIndexProgressAndTimers) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr source = Template(dictionary);
    Access::InProgress(*source, true);
    Access::T3Start(*source, true);
    Access::T3Timer(*source, 2);
    Access::T3Counter(*source, 3);
    const SECSTransPtr target = host.Make<SECSTrans>();
    host.T3 = 7;
    CreateNewTrans(target, source);
    EXPECT_EQ(Access::Parent(*target), nullptr);
    EXPECT_EQ(Access::StoredIndex(*target), 0);
    EXPECT_FALSE(target->InProgress());
    EXPECT_FALSE(Access::T3Start(*target));
    EXPECT_EQ(Access::T3Timer(*target), 45);
    EXPECT_EQ(Access::T3Counter(*target), 0);
}

TEST(CopyOfATemplate, ClearsTheTargetsParent) {
    TransHost host;
    const SECSTransPtr source = Template(host.Make<SECSDictionary>());
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr target = dictionary->AddNewTrans(1);
    CreateNewTrans(target, source);
    EXPECT_EQ(Access::Parent(*target), nullptr);
    EXPECT_EQ(target->Index(), 0);
    EXPECT_EQ(dictionary->TransCount(), 1);
}

TEST(CopyOfATemplate, LeavesWhatTheTemplateHasEmpty) {
    TransHost host;
    const SECSTransPtr source = host.MakeTrans(1, 1);
    const SECSTransPtr target = host.MakeTrans(2, 2);
    target->ActionOnError(1);
    target->ActionOnSuccess(2);
    target->Tag(3);
    target->Description("kept");
    target->Name("lost");
    CreateNewTrans(target, source);
    EXPECT_EQ(target->ActionOnError(), Variant(1));
    EXPECT_EQ(target->ActionOnSuccess(), Variant(2));
    EXPECT_EQ(target->Tag(), Variant(3));
    EXPECT_EQ(target->Description(), "kept");
    EXPECT_EQ(target->Name(), "");
}

TEST(CopyOfATemplate, TakesNullAndEmptyTextSlotsForTheyAreNotEmpty) {
    TransHost host;
    const SECSTransPtr source = host.MakeTrans(1, 1);
    source->ActionOnError(Variant::Null());
    source->ActionOnSuccess("");
    source->Tag(std::shared_ptr<SECSItem>());
    const SECSTransPtr target = host.MakeTrans(1, 1);
    target->ActionOnError(1);
    target->ActionOnSuccess(1);
    target->Tag(1);
    CreateNewTrans(target, source);
    EXPECT_TRUE(target->ActionOnError().IsNull());
    EXPECT_EQ(target->ActionOnSuccess(), Variant(""));
    EXPECT_TRUE(target->Tag().IsNothing());
}

TEST(CopyOfATemplate, SharesAnObjectInAFreeSlot) {
    TransHost host;
    const SECSTransPtr source = host.MakeTrans(1, 1);
    const SECSItemPtr item = host.Make<SECSItem>();
    source->Tag(item);
    const SECSTransPtr target = host.MakeTrans(1, 1);
    CreateNewTrans(target, source);
    EXPECT_EQ(target->Tag().Object<SECSItem>(), item);
}

TEST(CopyOfATemplate, FillsTheTargetsOwnMessagesDeeply) {
    TransHost host;
    const SECSTransPtr source = Template(host.Make<SECSDictionary>());
    const SECSTransPtr target = host.Make<SECSTrans>();
    const SECSMessagePtr primary = target->Primary();
    CreateNewTrans(target, source);
    EXPECT_EQ(target->Primary(), primary);
    EXPECT_NE(target->Primary(), source->Primary());
    primary->Item(1)->Item(1)->Value(8);
    target->Secondary()->Item(1)->Delete();
    EXPECT_EQ(source->Primary()->Item(1)->Item(1)->Value(), Variant(7));
    EXPECT_EQ(source->Secondary()->Root()->ItemCount(), 1);
    EXPECT_EQ(fakes::HexOf(EncodeBody(*primary)), "01 01 B1 04 00 00 00 08");
}

TEST(CopyOfATemplate, MayBeSentAndTheTemplateStaysAsItIs) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr source = Template(dictionary);
    source->ReplyExpected(true);
    const SECSTransPtr target = host.Make<SECSTrans>();
    CreateNewTrans(target, source);
    target->Send();
    EXPECT_EQ(host.Record.Sent.size(), 1U);
    EXPECT_EQ(host.Table->SECSTrans(1), target);
    EXPECT_FALSE(source->InProgress());
    EXPECT_EQ(source->Index(), 1);
    EXPECT_EQ(source->Primary()->Length(), 0);
}

TEST(CopyOfATemplate, WorksFromAWaitingEntry) {
    TransHost host;
    const SECSTransPtr waiting = host.MakeTrans(1, 1);
    waiting->Send();
    const SECSTransPtr target = host.Make<SECSTrans>();
    CreateNewTrans(target, waiting);
    EXPECT_EQ(target->SystemBytes(), 1);
    EXPECT_FALSE(target->InProgress());
    EXPECT_EQ(Access::Parent(*target), nullptr);
    EXPECT_EQ(host.Table->TransCount(), 1);
}

TEST(CopyOfATemplate, NeedsBothTransactions) {
    TransHost host;
    CreateNewTrans(host.MakeTrans(1, 1), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{91, kNoTrans, 0}}));
    CreateNewTrans(nullptr, host.MakeTrans(1, 1));
    EXPECT_EQ(host.Take(), (Reports{{91, kNoTrans, 0}}));
}

TEST(CopyOfATemplate, GoesOnWithTheSecondaryWhenThePrimaryIsMissing) {
    TransHost host;
    const SECSTransPtr source = host.MakeTrans(1, 1);
    source->Secondary()->Stream(33);
    Access::Primary(*source, nullptr);
    const SECSTransPtr target = host.MakeTrans(2, 3);
    CreateNewTrans(target, source);
    EXPECT_EQ(host.Take(), (Reports{{91, kNoMessage, 0}}));
    EXPECT_EQ(target->Primary()->Stream(), 2);
    EXPECT_EQ(target->Secondary()->Stream(), 33);
}

}  // namespace
}  // namespace hexmire
