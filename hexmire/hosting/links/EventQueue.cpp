#include <hexmire/hosting/links/EventQueue.h>
#include <hexmire/support/HexBytes.h>

#include <cstdint>
#include <span>
#include <variant>

namespace hexmire::link {

namespace {

/// Texts longer than this are given back after use: one huge message must not be paid for ever.
constexpr std::size_t kKeptTextBytes = std::size_t{256} * 1024;

void GiveBack(std::string& text) {
    if (text.capacity() > kKeptTextBytes) std::string().swap(text);
}

}  // namespace

void EventQueue::RaiseNext() {
    const Action event = std::move(events_.front());
    events_.pop_front();
    if (sink_ != nullptr) {
        std::visit([this](const auto& one) { Raise(one); }, event);
    }
}

bool EventQueue::IsInternalErrorNext() const noexcept {
    const auto* error = events_.empty() ? nullptr : std::get_if<RaiseError>(&events_.front());
    return error != nullptr && error->Code == LinkError::Internal;
}

void EventQueue::Close() noexcept {
    sink_ = nullptr;
    events_.clear();
}

void EventQueue::Raise(const RaiseConnect&) { sink_->Connect(); }

void EventQueue::Raise(const RaiseDisconnect& event) {
    sink_->Disconnect(static_cast<std::int32_t>(event.Code), event.Text);
}

void EventQueue::Raise(const RaiseError& event) {
    sink_->Error(static_cast<std::int32_t>(event.Code), event.Text);
}

void EventQueue::Raise(const RaiseSent& event) {
    messageText_.clear();
    AppendHexText(messageText_, event.Header);
    AppendHexText(messageText_, std::span(event.Bytes).subspan(event.BodyOffset));
    sink_->SecsMsgSend(messageText_);
    GiveBack(messageText_);
}

void EventQueue::Raise(const RaiseBlock& event) {
    messageText_.clear();
    AppendHexText(messageText_, event.Bytes);
    sink_->SecsBlockReceive(messageText_);
}

void EventQueue::Raise(const RaiseReceived& event) {
    ++consumed_;
    bodyText_.clear();
    AppendHexText(bodyText_, event.Body);
    if (event.IsOneBlock) {
        messageText_.clear();
        messageText_.reserve(event.Header.size() * 3 + bodyText_.size());
        AppendHexText(messageText_, event.Header);
        messageText_ += bodyText_;
        sink_->SecsBlockReceive(messageText_);
        if (sink_ == nullptr) return;
    }
    HeaderBytes header = event.Header;
    header[0] &= 0x7F;  // the direction bit of SECS-I means nothing above the driver
    if (event.IsOneBlock && header == event.Header) {
        headerText_.assign(messageText_, 0, header.size() * 3);
    } else {
        headerText_.clear();
        AppendHexText(headerText_, header);
    }
    sink_->SecsMsgReceive(headerText_, bodyText_, static_cast<std::int32_t>(event.Body.size()));
    GiveBack(messageText_);
    GiveBack(bodyText_);
}

}  // namespace hexmire::link
