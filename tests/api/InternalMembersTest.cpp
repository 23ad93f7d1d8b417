// What only the library uses stays out of a host's reach. The public header alone is included here;
// the headers below detail/ are not installed.
#include <hexmire/control/Hexmire.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace hexmire {
namespace {

// --- SECSItem ---------------------------------------------------------------------------------

template <class T>
concept SetsItemIndex = requires(T& item) {
    item.ItemIndex(std::int32_t{1});
};
template <class T>
concept SetsLength = requires(T& object) {
    object.Length(std::int32_t{1});
};
template <class T, class Parent>
concept SetsParent = requires(T& object, std::shared_ptr<Parent> parent) {
    object.Parent(parent);
};
template <class T>
concept SetsRaw = requires(T& object) {
    object.Raw(Variant());
};
template <class T>
concept ReadsAllItems = requires(T& object) {
    object.AllItems();
};
template <class T, class Entry>
concept SetsAllItems = requires(T& object, std::vector<std::shared_ptr<Entry>> entries) {
    object.AllItems(entries);
};
template <class T>
concept TearsDown = requires(T& object) {
    object.TearDown();
};
template <class T>
concept SetsItemCount = requires(T& object) {
    object.ItemCount(std::int32_t{1});
};

static_assert(!SetsItemIndex<SECSItem>);
static_assert(!SetsLength<SECSItem>);
static_assert(!SetsParent<SECSItem, SECSItem>);
static_assert(!SetsRaw<SECSItem>);
static_assert(!ReadsAllItems<SECSItem>);
static_assert(!SetsAllItems<SECSItem, SECSItem>);
static_assert(!TearsDown<SECSItem>);
static_assert(!SetsItemCount<SECSItem>);

// --- SECSMessage ------------------------------------------------------------------------------

template <class T>
concept SetsRawHex = requires(T& message) {
    message.RawHex(std::string());
};
template <class T>
concept Builds = requires(T& message, std::vector<std::uint8_t>& bytes) {
    message.Build(bytes);
}
|| requires(T& message) { message.Build(); };
template <class T>
concept Parses = requires(T& message, std::vector<std::uint8_t>& bytes) {
    message.Parse(bytes);
};
template <class T>
concept RendersItself = requires(T& message) {
    message.ToSML(true);
}
|| requires(T& message) { message.ToSML(); };
template <class T>
concept SetsRoot = requires(T& message) {
    message.Root(SECSItemPtr());
};

static_assert(!SetsLength<SECSMessage>);
static_assert(!SetsRawHex<SECSMessage>);
static_assert(!Builds<SECSMessage>);
static_assert(!Parses<SECSMessage>);
static_assert(!RendersItself<SECSMessage>);
static_assert(!SetsRoot<SECSMessage>);
static_assert(SetsRaw<SECSMessage>);  // A message's Raw is a property; an item's is not.

// --- SECSTrans --------------------------------------------------------------------------------

template <class T>
concept SetsIndex = requires(T& trans) {
    trans.Index(std::int32_t{1});
};
template <class T>
concept SetsInProgress = requires(T& trans) {
    trans.InProgress(true);
};
template <class T>
concept SetsPrimary = requires(T& trans) {
    trans.Primary(SECSMessagePtr());
};
template <class T>
concept SetsSecondary = requires(T& trans) {
    trans.Secondary(SECSMessagePtr());
};
template <class T>
concept ReadsParent = requires(T& object) {
    object.Parent();
};
template <class T>
concept SetsSystemBytes = requires(T& trans) {
    trans.SystemBytes(std::int32_t{1});
};
template <class T>
concept ReadsT3Timer = requires(T& trans) {
    trans.T3Timer();
};
template <class T>
concept SetsT3Timer = requires(T& trans) {
    trans.T3Timer(std::int32_t{1});
};
template <class T>
concept ReadsT3Start = requires(T& trans) {
    trans.T3Start();
};
template <class T>
concept SetsT3Start = requires(T& trans) {
    trans.T3Start(true);
};
template <class T>
concept ReadsT3Counter = requires(T& trans) {
    trans.T3Counter();
};
template <class T>
concept SetsT3Counter = requires(T& trans) {
    trans.T3Counter(std::int32_t{1});
};

static_assert(!SetsIndex<SECSTrans>);
static_assert(!SetsInProgress<SECSTrans>);
static_assert(!SetsPrimary<SECSTrans>);
static_assert(!SetsSecondary<SECSTrans>);
static_assert(!ReadsParent<SECSTrans>);
static_assert(!SetsParent<SECSTrans, SECSDictionary>);
static_assert(!SetsSystemBytes<SECSTrans>);
static_assert(!ReadsT3Timer<SECSTrans> && !SetsT3Timer<SECSTrans>);
static_assert(!ReadsT3Start<SECSTrans> && !SetsT3Start<SECSTrans>);
static_assert(!ReadsT3Counter<SECSTrans> && !SetsT3Counter<SECSTrans>);
static_assert(ReadsParent<SECSItem>);  // An item shows its parent, a transaction does not.

// --- SECSDictionary ---------------------------------------------------------------------------

template <class T>
concept SetsTransCount = requires(T& dictionary) {
    dictionary.TransCount(std::int32_t{1});
};
template <class T>
concept Adds = requires(T& dictionary, SECSTransPtr entry) {
    dictionary.Add(entry);
};
template <class T>
concept Removes = requires(T& dictionary) {
    dictionary.Remove(std::int32_t{1});
};

static_assert(!ReadsAllItems<SECSDictionary>);
static_assert(!SetsAllItems<SECSDictionary, SECSTrans>);
static_assert(!TearsDown<SECSDictionary>);
static_assert(!SetsTransCount<SECSDictionary>);
static_assert(!Adds<SECSDictionary> && !Removes<SECSDictionary>);

// --- Hexmire ----------------------------------------------------------------------------------

template <class T>
concept ShowsTransInUse = requires(T& control) {
    control.SECSTransInUse();
};
template <class T>
concept TriggersErrors = requires(T& control) {
    control.TriggerError(std::int32_t{1}, std::string(), std::int32_t{0});
};
template <class T>
concept SendsS9F7 = requires(T& control) {
    control.SendS9F7(1, 1, 1);
};
template <class T>
concept ShowsLog = requires(T& control) {
    control.Log();
};
template <class T>
concept ShowsDriver = requires(T& control) {
    control.Driver();
};
template <class T>
concept SetsErrorCode = requires(T& control) {
    control.ErrorCode(std::int32_t{1});
};
template <class T>
concept SetsConnected = requires(T& control) {
    control.Connected(true);
};
template <class T>
concept SetsPortOpened = requires(T& control) {
    control.PortOpened(true);
};
template <class T>
concept SetsCurrentBaud = requires(T& control) {
    control.CurrentBaud(std::int32_t{1});
};
template <class T>
concept SetsCurrentMode = requires(T& control) {
    control.CurrentHSMSConnectionType(1);
};
template <class T>
concept SetsDictionary = requires(T& control) {
    control.SECSDictionary(SECSDictionaryPtr());
};

static_assert(!ShowsTransInUse<Hexmire>);
static_assert(!TriggersErrors<Hexmire>);
static_assert(!SendsS9F7<Hexmire>);
static_assert(!ShowsLog<Hexmire>);
static_assert(!ShowsDriver<Hexmire>);
static_assert(!SetsErrorCode<Hexmire>);
static_assert(!SetsConnected<Hexmire> && !SetsPortOpened<Hexmire>);
static_assert(!SetsCurrentBaud<Hexmire> && !SetsCurrentMode<Hexmire>);
static_assert(!SetsDictionary<Hexmire>);

// --- Making and copying objects ----------------------------------------------------------------

template <class T>
concept MakesKeys = requires {
    T();
}
|| requires { T{}; };
static_assert(!std::is_default_constructible_v<PassKey>);
static_assert(!MakesKeys<PassKey>);

template <class T>
inline constexpr bool kSharedOnly =
    !std::is_default_constructible_v<T> && !std::is_constructible_v<T, SiteRef> &&
    !std::is_copy_constructible_v<T> && !std::is_move_constructible_v<T> &&
    !std::is_copy_assignable_v<T> && !std::is_move_assignable_v<T>;
static_assert(kSharedOnly<SECSItem>);
static_assert(kSharedOnly<SECSMessage>);
static_assert(kSharedOnly<SECSTrans>);
static_assert(kSharedOnly<SECSDictionary>);
static_assert(kSharedOnly<Hexmire>);

// --- The access classes are unknown here --------------------------------------------------------

template <class T>
concept Complete = requires {
    sizeof(T);
};
static_assert(!Complete<detail::SECSItemAccess>);
static_assert(!Complete<detail::SECSMessageAccess>);
static_assert(!Complete<detail::SECSTransAccess>);
static_assert(!Complete<detail::SECSDictionaryAccess>);
static_assert(!Complete<detail::HexmireAccess>);
static_assert(!Complete<detail::Control>);

static_assert(!Complete<detail::ObjectMaker>);

TEST(InternalMembers, AreOutOfAHostsReach) {
    // Proved above at compile time; the public face of the same names still works.
    const SECSItemPtr item = New<SECSItem>();
    EXPECT_EQ(item->ItemIndex(), 1);
    EXPECT_EQ(item->Length(), 0);
    EXPECT_EQ(item->Parent(), nullptr);
    EXPECT_TRUE(item->Raw().IsEmpty());
}

}  // namespace
}  // namespace hexmire
