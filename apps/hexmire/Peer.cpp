#include "Peer.h"

#include "Failure.h"

#include <algorithm>
#include <utility>

namespace hexmire::program {

using namespace std::chrono_literals;

namespace {

constexpr std::size_t kKept = 10'000;
constexpr std::size_t kKeptBytes = 4 << 20;  // In memory they take many times as much.

Platform Adapted(Platform platform, const std::function<void(Platform&)>& adapt) {
    adapt(platform);
    return platform;
}

}  // namespace

Peer::Peer(EventLoop& loop, EventOutput& output, const LinkOptions& options, Role role)
    : Peer(loop, output, options, role, [](Platform&) {}) {}

Peer::Peer(EventLoop& loop,
           EventOutput& output,
           const LinkOptions& options,
           Role role,
           const std::function<void(Platform&)>& adapt)
    : loop_(loop), output_(output), control_(Adapted(loop.Platform(PlatformFor(options)), adapt)) {
    TakeEvents();
    Configure(control_, options, role);
}

void Peer::TakeEvents() {
    HexmireEvents& events = control_.Events();
    events.Connect = [this] {
        connected_ = true;
        output_.Connect();
        if (OnConnect) OnConnect();
    };
    events.Disconnect = [this](std::int32_t code, const std::string& text) {
        connected_ = false;
        waiting_.clear();
        waitingBytes_ = 0;
        output_.Disconnect(code, text);
        if (OnDisconnect) OnDisconnect(code);
        if (reopening_)
            loop_.Post([this] {
                if (std::exchange(reopening_, false)) StartOpening();
            });
    };
    events.Error = [this](std::int32_t code, const std::string& text, std::int32_t line) {
        ++errors_;
        lastError_ = std::to_string(code) + ' ' + text;
        output_.Error(code, text, line);
        if (OnError) OnError(code, text);
    };
    events.ReceivedPrimary = [this](const SECSTransPtr& trans, std::int32_t, const std::string&) {
        Keep(*trans->Primary());
        output_.Message(ReceivedPrimary(*trans));
        Take(trans);
    };
    events.ReceivedSecondary = [this](const SECSTransPtr& trans, std::int32_t, const std::string&) {
        Keep(*trans->Secondary());
        output_.Message(ReceivedSecondary(*trans));
        if (OnSecondary) OnSecondary(trans);
    };
}

void Peer::LoadDictionary(const std::string& path) {
    constexpr std::int32_t kNotParsed = 2001;
    control_.SECSDictionaryFile(path);
    const std::uint64_t before = errors_;
    control_.LoadXMLDictionary();
    if (errors_ != before && control_.ErrorCode() == kNotParsed)
        throw Failure("cannot read the dictionary " + path);
}

void Peer::Reopen() {
    if (!control_.PortOpened()) return;
    reopening_ = connected_;
    control_.ClosePort();
}

void Peer::StartOpening() {
    lastError_.clear();
    if (!control_.PortOpened()) control_.OpenPort();
}

bool Peer::Open(const std::function<bool()>& givenUp, std::chrono::nanoseconds timeout) {
    StartOpening();
    // A port that cannot be opened is closed at once, and the loop tells why soon after.
    const auto refused = [this] { return !control_.PortOpened() && !lastError_.empty(); };
    loop_.RunUntil([&] { return connected_ || refused() || givenUp(); }, timeout);
    return connected_;
}

bool Peer::Send(const SECSTransPtr& trans) {
    const std::uint64_t before = errors_;
    const bool goesOut = CanSend();
    trans->Send();
    if (errors_ != before) return false;
    if (goesOut) output_.Message(SentPrimary(*trans));
    return true;
}

bool Peer::Reply(const SECSTransPtr& trans) {
    const std::uint64_t before = errors_;
    const bool goesOut = CanSend();
    trans->Reply();
    if (errors_ != before) return false;
    if (goesOut) output_.Message(SentSecondary(*trans));
    return true;
}

void Peer::Close() {
    if (!control_.PortOpened()) return;
    control_.ClosePort();
    loop_.RunUntil([this] { return !connected_; }, 5s);
}

void Peer::Take(const SECSTransPtr& primary) {
    if (OnPrimary && !IsHeld(*primary->Primary())) return OnPrimary(primary);
    if (primary->ReplyExpected() && keepsWaiting_) KeepWaiting(primary);
}

void Peer::KeepWaiting(const SECSTransPtr& primary) {
    // Two digits and a blank a byte.
    waiting_.push_back({.Trans = primary, .Bytes = primary->Primary()->RawHex().size() / 3});
    waitingBytes_ += waiting_.back().Bytes;
    while (waiting_.size() > kKept || (waitingBytes_ > kKeptBytes && waiting_.size() > 1))
        TakeFrom(waiting_.begin());
}

SECSTransPtr Peer::TakeFrom(const WaitingPlace& place) {
    SECSTransPtr trans = std::move(place->Trans);
    waitingBytes_ -= place->Bytes;
    waiting_.erase(place);
    return trans;
}

void Peer::Hold(std::int32_t stream, std::int32_t function, bool isHeld) {
    held_[{stream, function}] = isHeld;
}

void Peer::HoldAll(bool isHeld) {
    held_.clear();
    allHeld_ = isHeld;
}

bool Peer::IsHeld(const SECSMessage& message) const {
    const auto found = held_.find({message.Stream(), message.Func()});
    return found == held_.end() ? allHeld_ : found->second;
}

SECSTransPtr Peer::TakeWaiting(std::int32_t stream, std::int32_t function) {
    const auto found = std::ranges::find_if(waiting_, [&](const Waiting& one) {
        const SECSMessage& primary = *one.Trans->Primary();
        return primary.Stream() == stream && (function == 0 || function == primary.Func() + 1);
    });
    return found == waiting_.end() ? nullptr : TakeFrom(found);
}

SECSTransPtr Peer::TakeWaiting() { return waiting_.empty() ? nullptr : TakeFrom(waiting_.begin()); }

void Peer::Keep(const SECSMessage& message) {
    if (received_.size() == kKept) received_.pop_front();
    received_.push_back({.Stream = message.Stream(), .Function = message.Func()});
}

bool Peer::TakeReceived(std::int32_t stream, std::int32_t function) {
    const auto found = std::find_if(received_.begin(), received_.end(), [&](const Received& one) {
        return one.Stream == stream && one.Function == function;
    });
    if (found == received_.end()) return false;
    received_.erase(found);
    return true;
}

}  // namespace hexmire::program
