#include <hexmire/trans/SECSTrans.h>

#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::TransHost;
using Reports = TransHost::Reports;

const Reports kRefusedDeviceId{
    {1047, "(SECSTrans-Let DeviceID) The DeviceID must be between 0 and 32767.", 0}};

TEST(Transaction, IsCreatedWithItsDefaults) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    EXPECT_TRUE(trans->ActionOnError().IsEmpty());
    EXPECT_TRUE(trans->ActionOnSuccess().IsEmpty());
    EXPECT_TRUE(trans->Tag().IsEmpty());
    EXPECT_TRUE(trans->AutoSystemBytes());
    EXPECT_TRUE(trans->ReplyExpected());
    EXPECT_FALSE(trans->InProgress());
    EXPECT_EQ(trans->Description(), "");
    EXPECT_EQ(trans->Name(), "");
    EXPECT_EQ(trans->Index(), 0);
    EXPECT_EQ(trans->SystemBytes(), 0);
    EXPECT_EQ(Access::Parent(*trans), nullptr);
    EXPECT_FALSE(Access::T3Start(*trans));
    EXPECT_EQ(Access::T3Counter(*trans), 0);
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(Transaction, BeginsWithTwoBlankMessagesOfWhichTheSecondAnswersTheFirst) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    EXPECT_EQ(trans->Primary()->Stream(), 0);
    EXPECT_EQ(trans->Primary()->Func(), 1);
    EXPECT_EQ(trans->Secondary()->Stream(), 0);
    EXPECT_EQ(trans->Secondary()->Func(), 2);
    EXPECT_EQ(trans->Primary()->Root()->ItemCount(), 0);
    EXPECT_NE(trans->Primary(), trans->Secondary());
}

TEST(Transaction, LeavesTheSecondaryAloneWhenThePrimaryChanges) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    trans->Primary()->Func(41);
    trans->Primary()->Stream(2);
    EXPECT_EQ(trans->Secondary()->Func(), 2);
    EXPECT_EQ(trans->Secondary()->Stream(), 0);
}

TEST(Transaction, TakesDeviceIdAndReplyTimeOfItsControlAtCreation) {
    TransHost host;
    host.DeviceId = 77;
    host.T3 = 12;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    host.DeviceId = 78;
    host.T3 = 13;
    EXPECT_EQ(trans->DeviceID(), 77);
    EXPECT_EQ(Access::T3Timer(*trans), 12);
    EXPECT_EQ(host.Make<SECSTrans>()->DeviceID(), 78);
    EXPECT_EQ(Access::T3Timer(*host.Make<SECSTrans>()), 13);
}

TEST(Transaction, GivesTheSameMessageObjectsEachTime) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    const SECSMessagePtr primary = trans->Primary();
    trans->Primary()->Name("edited in place");
    EXPECT_EQ(trans->Primary(), primary);
    EXPECT_EQ(primary->Name(), "edited in place");
    EXPECT_EQ(trans->Secondary(), trans->Secondary());
}

TEST(Transaction, KeepsItsMessagesForAHostThatHoldsThemLonger) {
    TransHost host;
    SECSMessagePtr primary;
    {
        const SECSTransPtr trans = host.MakeTrans(3, 17);
        primary = trans->Primary();
    }
    EXPECT_EQ(primary->Stream(), 3);
    EXPECT_EQ(primary->Func(), 17);
}

TEST(Transaction, StoresAnyValueInTheFreeSlots) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    const std::vector<Variant> values{Variant(true),
                                      Variant(std::int16_t{-1}),
                                      Variant(70000),
                                      Variant(1.5),
                                      Variant("text"),
                                      Variant(""),
                                      Variant::Null(),
                                      Variant(),
                                      Variant(std::vector<std::uint8_t>{1, 2})};
    for (const Variant& value : values) {
        trans->ActionOnError(value);
        trans->ActionOnSuccess(value);
        trans->Tag(value);
        EXPECT_EQ(trans->ActionOnError(), value);
        EXPECT_EQ(trans->ActionOnSuccess(), value);
        EXPECT_EQ(trans->Tag(), value);
    }
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(Transaction, StoresAnObjectInAFreeSlotByReference) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    const SECSItemPtr item = host.Make<SECSItem>();
    trans->Tag(item);
    item->Name("changed later");
    ASSERT_NE(trans->Tag().Object<SECSItem>(), nullptr);
    EXPECT_EQ(trans->Tag().Object<SECSItem>(), item);
    EXPECT_EQ(trans->Tag().Object<SECSItem>()->Name(), "changed later");
}

TEST(Transaction, KeepsTheFreeSlotsApart) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    trans->ActionOnError(1);
    trans->ActionOnSuccess(2);
    trans->Tag(3);
    EXPECT_EQ(trans->ActionOnError(), Variant(1));
    EXPECT_EQ(trans->ActionOnSuccess(), Variant(2));
    EXPECT_EQ(trans->Tag(), Variant(3));
}

TEST(Transaction, StoresTextsAndFlagsAsGiven) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    std::string bytes;
    for (int value = 0; value < 256; ++value)
        bytes.push_back(static_cast<char>(value));
    trans->Name(bytes);
    trans->Description("two\r\nlines");
    trans->AutoSystemBytes(false);
    trans->ReplyExpected(false);
    EXPECT_EQ(trans->Name(), bytes);
    EXPECT_EQ(trans->Description(), "two\r\nlines");
    EXPECT_FALSE(trans->AutoSystemBytes());
    EXPECT_FALSE(trans->ReplyExpected());
    trans->Name("");
    EXPECT_EQ(trans->Name(), "");
}

TEST(Transaction, AcceptsDeviceIdsOfFifteenBits) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    for (const std::int32_t value : {1, 0, 255, 256, 32766, 32767}) {
        trans->DeviceID(value);
        EXPECT_EQ(trans->DeviceID(), value);
    }
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(Transaction, RefusesOtherDeviceIdsAndKeepsTheOldOne) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    trans->DeviceID(5);
    for (const std::int32_t value : {-1,
                                     32768,
                                     65535,
                                     65536,
                                     std::numeric_limits<std::int32_t>::min(),
                                     std::numeric_limits<std::int32_t>::max()}) {
        trans->DeviceID(value);
        EXPECT_EQ(host.Take(), kRefusedDeviceId) << value;
        EXPECT_EQ(trans->DeviceID(), 5) << value;
    }
}

TEST(Transaction, ReadsIndexZeroWithoutACollection) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    Access::Index(*trans, 9);
    EXPECT_EQ(trans->Index(), 0);
    EXPECT_EQ(Access::StoredIndex(*trans), 9);
    Access::Parent(*trans, host.Table);
    EXPECT_EQ(trans->Index(), 9);
}

TEST(Transaction, DoesNotKeepItsCollectionAlive) {
    TransHost host;
    SECSTransPtr trans;
    {
        const auto dictionary = host.Make<SECSDictionary>();
        trans = dictionary->AddNewTrans(1);
        EXPECT_EQ(trans->Index(), 1);
    }
    EXPECT_EQ(Access::Parent(*trans), nullptr);
    EXPECT_EQ(trans->Index(), 0);
}

TEST(Transaction, TakesAnotherMessageInsideTheLibrary) {
    TransHost host;
    const SECSTransPtr trans = host.Make<SECSTrans>();
    const SECSMessagePtr received = host.Make<SECSMessage>();
    const std::weak_ptr<SECSMessage> old = trans->Primary();
    Access::Primary(*trans, received);
    EXPECT_EQ(trans->Primary(), received);
    EXPECT_TRUE(old.expired());
    Access::Secondary(*trans, received);
    EXPECT_EQ(trans->Secondary(), received);
    Access::Primary(*trans, trans->Primary());
    EXPECT_EQ(trans->Primary(), received);
    Access::Secondary(*trans, nullptr);
    EXPECT_EQ(trans->Secondary(), nullptr);
}

TEST(Transaction, MadeByAHostServesTheControlPublishedLast) {
    TransHost first;
    first.DeviceId = 1;
    TransHost second;
    second.DeviceId = 2;
    const SECSTransPtr trans = New<SECSTrans>();
    EXPECT_EQ(trans->DeviceID(), 2);
    trans->DeviceID(-1);
    EXPECT_EQ(first.Take(), Reports{});
    EXPECT_EQ(second.Take(), kRefusedDeviceId);
    second.End();
    trans->DeviceID(-1);
    EXPECT_EQ(first.Take(), kRefusedDeviceId);
}

TEST(Transaction, ReportsToItsMakerAndNotToTheLastControl) {
    TransHost first;
    const SECSTransPtr trans = first.Make<SECSTrans>();
    TransHost second;
    trans->DeviceID(-1);
    EXPECT_EQ(first.Take(), kRefusedDeviceId);
    EXPECT_EQ(second.Take(), Reports{});
}

TEST(Transaction, IsUsableWithoutAnyControl) {
    const SECSTransPtr trans = New<SECSTrans>();
    EXPECT_EQ(trans->DeviceID(), 0);
    EXPECT_EQ(trans->Primary()->Func(), 1);
    EXPECT_EQ(trans->Secondary()->Func(), 2);
    trans->DeviceID(40000);
    EXPECT_EQ(trans->DeviceID(), 0);
    trans->DeviceID(4);
    EXPECT_EQ(trans->DeviceID(), 4);
    EXPECT_TRUE(trans->Send().IsEmpty());
    EXPECT_TRUE(trans->Reply().IsEmpty());
    EXPECT_TRUE(trans->Delete().IsEmpty());
    EXPECT_FALSE(trans->InProgress());
}

TEST(Transaction, OutlivesItsControlInSilence) {
    SECSTransPtr trans;
    TransHost other;
    {
        TransHost host;
        trans = host.MakeTrans(1, 1);
        host.End();
        trans->DeviceID(-1);
        trans->Delete();
        trans->Send();
        trans->Reply();
        EXPECT_EQ(host.Take(), Reports{});
        EXPECT_TRUE(host.Record.Sent.empty());
        EXPECT_EQ(host.Table->TransCount(), 0);
    }
    trans->Send();
    EXPECT_EQ(other.Take(), Reports{});
    EXPECT_TRUE(other.Record.Sent.empty());
    EXPECT_EQ(trans->SystemBytes(), 0);
    EXPECT_EQ(detail::State().SystemBytesCounter, 0);
}

}  // namespace
}  // namespace hexmire
