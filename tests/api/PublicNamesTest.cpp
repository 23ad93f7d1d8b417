// The names that hosts are written against. This file stops compiling when a public name, overload,
// type or enumerator value changes; docs/public-names.md lists the same names.
#include <hexmire/control/Hexmire.h>
#include <hexmire/core/ItemFormat.h>
#include <hexmire/sml.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace hexmire {
namespace {

using std::int32_t;
using std::string;
using std::string_view;

/// Takes the overload of exactly this type; without it nothing compiles.
template <class Signature>
consteval bool Has(Signature /*member*/) {
    return true;
}
template <class Class, class Type>
consteval bool Get(Type (Class::* /*getter*/)() const) {
    return true;
}
/// A property that is read and set: two overloads of one name.
template <class Class, class Type, class Argument = Type>
consteval bool Property(Type (Class::* /*getter*/)() const, void (Class::* /*setter*/)(Argument)) {
    return true;
}

// --- SECSItem ---------------------------------------------------------------------------------

static_assert(std::is_same_v<SECSItemPtr, std::shared_ptr<SECSItem>>);
static_assert(Has<SnapshotIterator<SECSItem> (SECSItem::*)() const>(&SECSItem::begin));
static_assert(Has<std::default_sentinel_t (SECSItem::*)() const>(&SECSItem::end));
static_assert(Property<SECSItem, string, string_view>(&SECSItem::Description,
                                                      &SECSItem::Description));
static_assert(Property<SECSItem, int32_t>(&SECSItem::Format, &SECSItem::Format));
static_assert(Get<SECSItem, int32_t>(&SECSItem::ItemIndex));
static_assert(Has<SECSItemPtr (SECSItem::*)(const Variant&) const>(&SECSItem::Item));
static_assert(Has<SECSItemPtr (SECSItem::*)(int32_t) const>(&SECSItem::Item));
static_assert(Has<SECSItemPtr (SECSItem::*)(std::size_t) const>(&SECSItem::Item));
static_assert(Has<SECSItemPtr (SECSItem::*)(const char*) const>(&SECSItem::Item));
static_assert(Has<SECSItemPtr (SECSItem::*)(const string&) const>(&SECSItem::Item));
static_assert(Has<SECSItemPtr (SECSItem::*)(string_view) const>(&SECSItem::Item));
static_assert(Get<SECSItem, int32_t>(&SECSItem::ItemCount));
static_assert(Get<SECSItem, int32_t>(&SECSItem::Length));
static_assert(Property<SECSItem, string, string_view>(&SECSItem::Name, &SECSItem::Name));
static_assert(Property<SECSItem, int32_t>(&SECSItem::NLB, &SECSItem::NLB));
static_assert(Get<SECSItem, SECSItemPtr>(&SECSItem::Parent));
static_assert(Get<SECSItem, Variant>(&SECSItem::Raw));
static_assert(Property<SECSItem, Variant>(&SECSItem::Value, &SECSItem::Value));
static_assert(Has<SECSItemPtr (SECSItem::*)(int32_t)>(&SECSItem::AddNew));
static_assert(Has<Variant (SECSItem::*)()>(&SECSItem::Delete));
static_assert(Has<Variant (SECSItem::*)()>(&SECSItem::Duplicate));

// --- SECSMessage ------------------------------------------------------------------------------

static_assert(std::is_same_v<SECSMessagePtr, std::shared_ptr<SECSMessage>>);
static_assert(Property<SECSMessage, int32_t>(&SECSMessage::Stream, &SECSMessage::Stream));
static_assert(Get<SECSMessage, SECSItemPtr>(&SECSMessage::Root));
static_assert(Get<SECSMessage, string>(&SECSMessage::RawHex));
static_assert(Property<SECSMessage, Variant>(&SECSMessage::Raw, &SECSMessage::Raw));
static_assert(Property<SECSMessage, string, string_view>(&SECSMessage::Name, &SECSMessage::Name));
static_assert(Get<SECSMessage, int32_t>(&SECSMessage::Length));
static_assert(Has<SECSItemPtr (SECSMessage::*)(const Variant&) const>(&SECSMessage::Item));
static_assert(Has<SECSItemPtr (SECSMessage::*)(int32_t) const>(&SECSMessage::Item));
static_assert(Has<SECSItemPtr (SECSMessage::*)(const char*) const>(&SECSMessage::Item));
static_assert(Has<SECSItemPtr (SECSMessage::*)(const string&) const>(&SECSMessage::Item));
static_assert(Has<SECSItemPtr (SECSMessage::*)(string_view) const>(&SECSMessage::Item));
static_assert(Property<SECSMessage, int32_t>(&SECSMessage::Func, &SECSMessage::Func));
static_assert(Property<SECSMessage, string, string_view>(&SECSMessage::Description,
                                                         &SECSMessage::Description));

// --- SECSTrans --------------------------------------------------------------------------------

static_assert(std::is_same_v<SECSTransPtr, std::shared_ptr<SECSTrans>>);
static_assert(Property<SECSTrans, Variant>(&SECSTrans::ActionOnError, &SECSTrans::ActionOnError));
static_assert(Property<SECSTrans, Variant>(&SECSTrans::ActionOnSuccess,
                                           &SECSTrans::ActionOnSuccess));
static_assert(Property<SECSTrans, bool>(&SECSTrans::AutoSystemBytes, &SECSTrans::AutoSystemBytes));
static_assert(Property<SECSTrans, string, string_view>(&SECSTrans::Description,
                                                       &SECSTrans::Description));
static_assert(Property<SECSTrans, int32_t>(&SECSTrans::DeviceID, &SECSTrans::DeviceID));
static_assert(Get<SECSTrans, int32_t>(&SECSTrans::Index));
static_assert(Get<SECSTrans, bool>(&SECSTrans::InProgress));
static_assert(Property<SECSTrans, string, string_view>(&SECSTrans::Name, &SECSTrans::Name));
static_assert(Get<SECSTrans, SECSMessagePtr>(&SECSTrans::Primary));
static_assert(Property<SECSTrans, bool>(&SECSTrans::ReplyExpected, &SECSTrans::ReplyExpected));
static_assert(Get<SECSTrans, SECSMessagePtr>(&SECSTrans::Secondary));
static_assert(Property<SECSTrans, Variant>(&SECSTrans::Tag, &SECSTrans::Tag));
static_assert(Has<Variant (SECSTrans::*)()>(&SECSTrans::Delete));
static_assert(Has<Variant (SECSTrans::*)()>(&SECSTrans::Reply));
static_assert(Has<Variant (SECSTrans::*)()>(&SECSTrans::Send));
static_assert(Get<SECSTrans, int32_t>(&SECSTrans::SystemBytes));

// --- SECSDictionary ---------------------------------------------------------------------------

static_assert(std::is_same_v<SECSDictionaryPtr, std::shared_ptr<SECSDictionary>>);
static_assert(Has<SnapshotIterator<SECSTrans> (SECSDictionary::*)() const>(&SECSDictionary::begin));
static_assert(Has<std::default_sentinel_t (SECSDictionary::*)() const>(&SECSDictionary::end));
static_assert(Property<SECSDictionary, string, string_view>(&SECSDictionary::Description,
                                                            &SECSDictionary::Description));
static_assert(
    Has<SECSTransPtr (SECSDictionary::*)(const Variant&) const>(&SECSDictionary::SECSTrans));
static_assert(Has<SECSTransPtr (SECSDictionary::*)(int32_t) const>(&SECSDictionary::SECSTrans));
static_assert(Has<SECSTransPtr (SECSDictionary::*)(const char*) const>(&SECSDictionary::SECSTrans));
static_assert(
    Has<SECSTransPtr (SECSDictionary::*)(const string&) const>(&SECSDictionary::SECSTrans));
static_assert(Has<SECSTransPtr (SECSDictionary::*)(string_view) const>(&SECSDictionary::SECSTrans));
static_assert(Get<SECSDictionary, int32_t>(&SECSDictionary::TransCount));
static_assert(Has<SECSTransPtr (SECSDictionary::*)(int32_t)>(&SECSDictionary::AddNewTrans));

// --- Hexmire: settings ------------------------------------------------------------------------

static_assert(Property<Hexmire, int32_t>(&Hexmire::BaudRate, &Hexmire::BaudRate));
static_assert(Property<Hexmire, bool>(&Hexmire::ConnectionHost, &Hexmire::ConnectionHost));
static_assert(Property<Hexmire, int32_t>(&Hexmire::ConnectionPortType,
                                         &Hexmire::ConnectionPortType));
static_assert(Property<Hexmire, int32_t>(&Hexmire::ConnectionRetryLimit,
                                         &Hexmire::ConnectionRetryLimit));
static_assert(Property<Hexmire, int32_t>(&Hexmire::DeviceID, &Hexmire::DeviceID));
static_assert(Property<Hexmire, bool>(&Hexmire::DuplicateBlockCheck,
                                      &Hexmire::DuplicateBlockCheck));
static_assert(Property<Hexmire, int32_t>(&Hexmire::HSMSConnectionType,
                                         &Hexmire::HSMSConnectionType));
static_assert(Property<Hexmire, bool>(&Hexmire::InterleaveCheck, &Hexmire::InterleaveCheck));
static_assert(Property<Hexmire, string, const string&>(&Hexmire::LocalIPAddress,
                                                       &Hexmire::LocalIPAddress));
static_assert(Property<Hexmire, int32_t>(&Hexmire::LocalIPPort, &Hexmire::LocalIPPort));
static_assert(Property<Hexmire, bool>(&Hexmire::TraceEnabled, &Hexmire::TraceEnabled));
static_assert(Property<Hexmire, string, const string&>(&Hexmire::RemoteIPAddress,
                                                       &Hexmire::RemoteIPAddress));
static_assert(Property<Hexmire, int32_t>(&Hexmire::RemoteIPPort, &Hexmire::RemoteIPPort));
static_assert(Property<Hexmire, string, const string&>(&Hexmire::SECSDictionaryFile,
                                                       &Hexmire::SECSDictionaryFile));
static_assert(Property<Hexmire, string, const string&>(&Hexmire::SECSLogFile,
                                                       &Hexmire::SECSLogFile));
static_assert(Property<Hexmire, string, const string&>(&Hexmire::SerialPort, &Hexmire::SerialPort));
static_assert(Property<Hexmire, bool>(&Hexmire::SystemBytesCheck, &Hexmire::SystemBytesCheck));
static_assert(Property<Hexmire, float>(&Hexmire::T1Timeout, &Hexmire::T1Timeout));
static_assert(Property<Hexmire, float>(&Hexmire::T2Timeout, &Hexmire::T2Timeout));
static_assert(Property<Hexmire, int32_t>(&Hexmire::T3Timeout, &Hexmire::T3Timeout));
static_assert(Property<Hexmire, int32_t>(&Hexmire::T4Timeout, &Hexmire::T4Timeout));
static_assert(Property<Hexmire, int32_t>(&Hexmire::T5Timeout, &Hexmire::T5Timeout));
static_assert(Property<Hexmire, int32_t>(&Hexmire::T6Timeout, &Hexmire::T6Timeout));
static_assert(Property<Hexmire, int32_t>(&Hexmire::T7Timeout, &Hexmire::T7Timeout));
static_assert(Property<Hexmire, int32_t>(&Hexmire::T8Timeout, &Hexmire::T8Timeout));
static_assert(Property<Hexmire, int32_t>(&Hexmire::TimeOutRetry, &Hexmire::TimeOutRetry));
static_assert(Property<Hexmire, bool>(&Hexmire::RecipeFileEnabled, &Hexmire::RecipeFileEnabled));
static_assert(Property<Hexmire, string, const string&>(&Hexmire::RecipeSendPath,
                                                       &Hexmire::RecipeSendPath));
static_assert(Property<Hexmire, string, const string&>(&Hexmire::RecipeRecvPath,
                                                       &Hexmire::RecipeRecvPath));
static_assert(Property<Hexmire, string, const string&>(&Hexmire::SECSILogPath,
                                                       &Hexmire::SECSILogPath));

// --- Hexmire: status, operations, events -------------------------------------------------------

static_assert(Has<bool (Hexmire::*)()>(&Hexmire::Connected));
static_assert(Has<bool (Hexmire::*)()>(&Hexmire::PortOpened));
static_assert(Has<int32_t (Hexmire::*)()>(&Hexmire::CurrentBaud));
static_assert(Has<int32_t (Hexmire::*)()>(&Hexmire::CurrentHSMSConnectionType));
static_assert(Get<Hexmire, int32_t>(&Hexmire::ErrorCode));
static_assert(Get<Hexmire, SECSDictionaryPtr>(&Hexmire::SECSDictionary));
static_assert(Has<void (Hexmire::*)()>(&Hexmire::OpenPort));
static_assert(Has<void (Hexmire::*)()>(&Hexmire::ClosePort));
static_assert(Has<void (Hexmire::*)()>(&Hexmire::ControlTerminate));
static_assert(Has<void (Hexmire::*)()>(&Hexmire::LoadXMLDictionary));
static_assert(Has<SECSTransPtr (Hexmire::*)()>(&Hexmire::NewSECSTransaction));
static_assert(Has<SECSTransPtr (Hexmire::*)(const Variant&)>(&Hexmire::NewSECSTransaction));
static_assert(Has<SECSTransPtr (Hexmire::*)(int32_t)>(&Hexmire::NewSECSTransaction));
static_assert(Has<SECSTransPtr (Hexmire::*)(const char*)>(&Hexmire::NewSECSTransaction));
static_assert(Has<SECSTransPtr (Hexmire::*)(const string&)>(&Hexmire::NewSECSTransaction));
static_assert(Has<SECSTransPtr (Hexmire::*)(string_view)>(&Hexmire::NewSECSTransaction));
static_assert(Has<HexmireEvents& (Hexmire::*)()>(&Hexmire::Events));
static_assert(Has<void (Hexmire::*)()>(&Hexmire::InitProperties));
static_assert(Get<Hexmire, int32_t>(&Hexmire::Width));
static_assert(Get<Hexmire, int32_t>(&Hexmire::Height));
static_assert(Has<void (Hexmire::*)(int32_t, int32_t)>(&Hexmire::Resize));
static_assert(Get<Hexmire, string>(&Hexmire::Caption));

static_assert(std::is_same_v<decltype(HexmireEvents::Connect), std::function<void()>>);
static_assert(std::is_same_v<decltype(HexmireEvents::Disconnect),
                             std::function<void(int32_t, const string&)>>);
static_assert(std::is_same_v<decltype(HexmireEvents::Error),
                             std::function<void(int32_t, const string&, int32_t)>>);
using Received = std::function<void(const SECSTransPtr&, int32_t, const string&)>;
static_assert(std::is_same_v<decltype(HexmireEvents::ReceivedPrimary), Received>);
static_assert(std::is_same_v<decltype(HexmireEvents::ReceivedSecondary), Received>);
static_assert(std::is_same_v<decltype(HexmireEvents::ByteMonitor),
                             std::function<void(bool, int32_t, const Variant&, const string&)>>);

static_assert(std::is_constructible_v<Hexmire, const Platform&>);

// --- Enumerations -----------------------------------------------------------------------------

static_assert(std::is_same_v<std::underlying_type_t<enmItemFormat>, int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<enmBaudRate>, int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<enmPortType>, int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<enmConnectionMode>, int32_t>);
// Unscoped: the properties are plain 32-bit integers and take illegal codes too.
static_assert(std::is_convertible_v<enmItemFormat, int32_t>);
static_assert(std::is_convertible_v<enmBaudRate, int32_t>);
static_assert(std::is_convertible_v<enmPortType, int32_t>);
static_assert(std::is_convertible_v<enmConnectionMode, int32_t>);

static_assert(FormatList == 0 && FormatBinary == 8 && FormatBoolean == 9 && FormatAscii == 16);
static_assert(FormatI8 == 24 && FormatI1 == 25 && FormatI2 == 26 && FormatI4 == 28);
static_assert(FormatF8 == 32 && FormatF4 == 36);
static_assert(FormatU8 == 40 && FormatU1 == 41 && FormatU2 == 42 && FormatU4 == 44);
static_assert(FormatVar == 63);
static_assert(BaudRate150 == 150 && BaudRate300 == 300 && BaudRate1200 == 1200);
static_assert(BaudRate2400 == 2400 && BaudRate4800 == 4800 && BaudRate9600 == 9600);
static_assert(BaudRate19200 == 19200);
static_assert(PortTypeRS232 == 1 && PortTypeHSMS == 2 && PortTypeTCPIP == 3);
static_assert(PortTypeHSMS_SS == 4);
static_assert(ConnectionModeActive == 1 && ConnectionModePassive == 2);
static_assert(ConnectionModeAlternating == 3);

// --- Toolkit ----------------------------------------------------------------------------------

static_assert(Has<string (*)(const SECSMessage&, bool)>(&RenderSml));
static_assert(Has<std::vector<std::uint8_t> (*)(SECSMessage&)>(&EncodeBody));
static_assert(Has<Variant (*)(SECSMessage&)>(&EncodedBody));
static_assert(Has<DecodedBody (*)(std::span<const std::uint8_t>)>(&DecodeBody));
static_assert(Has<DecodedBody (*)(const Variant&)>(&DecodeSharedBody));
static_assert(std::is_same_v<decltype(DecodedBody::Message), SECSMessagePtr>);
static_assert(std::is_same_v<decltype(DecodedBody::Ok), bool>);
static_assert(Has<SECSItemPtr (*)()>(&New<SECSItem>));
static_assert(Has<SECSMessagePtr (*)()>(&New<SECSMessage>));
static_assert(Has<SECSTransPtr (*)()>(&New<SECSTrans>));
static_assert(Has<SECSDictionaryPtr (*)()>(&New<SECSDictionary>));

TEST(PublicNames, ReadAndWriteAsHostsDo) {
    const SECSMessagePtr message = New<SECSMessage>();
    message->Stream(1);
    const SECSItemPtr item = message->Root()->AddNew(1);
    item->Format(FormatAscii);
    item->Name("name");
    item->Value("text");
    EXPECT_EQ(message->Item("NAME")->Value(), Variant("text"));
    EXPECT_EQ(message->Item(1)->Format(), FormatAscii);
    int seen = 0;
    for (const SECSItemPtr& child : *message->Root())
        seen += child == item ? 1 : 100;
    EXPECT_EQ(seen, 1);
}

}  // namespace
}  // namespace hexmire
