#include <hexmire/hosting/RecordFiles.h>
#include <hexmire/hosting/links/LinkRecords.h>

#include <algorithm>
#include <chrono>
#include <utility>
#include <variant>

namespace hexmire::link {

using namespace std::chrono_literals;

namespace {

/// What a disk that does not answer may cost a driver that is destroyed.
constexpr auto kPatience = 5s;

std::string EndText(const std::string& address, std::uint16_t port) {
    const bool isIPv6 = address.find(':') != std::string::npos;
    return (isIPv6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

std::string ConnectionText(const Endpoints& ends) {
    if (ends.RemotePort == 0) return "connected: " + ends.RemoteAddress;
    const std::string local = EndText(ends.LocalAddress, ends.LocalPort);
    const std::string remote = EndText(ends.RemoteAddress, ends.RemotePort);
    return "connected: " + (ends.IsCaller ? remote + " to " + local : local + " to " + remote);
}

std::string CodeText(LinkError code, const std::string& text) {
    return std::to_string(static_cast<std::int32_t>(code)) + (text.empty() ? "" : " ") + text;
}

}  // namespace

RecordSite RecordSite::System() {
    return {.Files = std::make_shared<RecordFiles>(),
            .Now = [] { return std::chrono::system_clock::now(); }};
}

LinkRecords::LinkRecords(asio::io_context& loop,
                         const RecordSite& site,
                         LinkStatistics& statistics,
                         const LinkSettings& settings,
                         const Failed& failed)
    : statistics_(statistics),
      worker_(loop),
      trace_(worker_,
             site,
             statistics,
             [failed](const std::string& what) { failed(LinkError::TraceFailed, what); }),
      capture_(
          worker_,
          site,
          statistics,
          [failed](const std::string& what) { failed(LinkError::TraceFailed, what); },
          settings.CaptureFolder),
      recipes_(worker_, site, statistics, [failed](const std::string& what) {
          failed(LinkError::RecipeFailed, what);
      }) {
    Configure(settings);
}

/// What is missing for want of memory is missing; the link is not concerned.
template <class Work>
void LinkRecords::Guard(Work&& work) noexcept {
    try {
        work();
    } catch (...) {
        ++statistics_.TraceEntriesLost;
    }
}

void LinkRecords::Configure(const LinkSettings& settings) noexcept {
    Guard([&] {
        trace_.Configure(settings);
        recipes_.Configure(settings);
    });
}

void LinkRecords::OnAttempt(const LinkSettings& settings) noexcept {
    Guard([&] {
        trace_.Name(settings);
        capture_.Name(settings);
    });
}

void LinkRecords::OnAttemptFailed(std::string_view what, std::string_view reason) noexcept {
    if (!trace_.IsOn()) return;
    Guard([&] { trace_.Note(std::string(what) + " failed: " + std::string(reason)); });
}

void LinkRecords::OnConnection(const Endpoints& ends) noexcept {
    Guard([&] {
        End();
        isConnected_ = true;
        if (!TakesBytes()) return;
        const std::string text = ConnectionText(ends);
        trace_.Note(text);
        capture_.Open(ends, text);
    });
}

void LinkRecords::OnEndSeen(ConnectionEnd end, std::string_view reason) noexcept {
    Guard([&] {
        endReason_ = reason;
        end_ = end;
    });
}

void LinkRecords::OnClosed() noexcept {
    Guard([this] { End(); });
}

void LinkRecords::End() {
    const ConnectionEnd end = std::exchange(end_, ConnectionEnd::ByUs);
    const std::string reason = std::exchange(endReason_, {});
    if (!std::exchange(isConnected_, false) || !TakesBytes()) return;
    const std::string text = "disconnected: " + (reason.empty() ? "closed by this side" : reason);
    trace_.Note(text);
    capture_.End(end, text);
}

void LinkRecords::OnReceived(std::span<const std::uint8_t> bytes) noexcept {
    if (!TakesBytes()) return;
    Guard([&] { Take(TraceDirection::Received, bytes); });
}

void LinkRecords::OnSent(std::span<const std::span<const std::uint8_t>> views,
                         std::size_t written) noexcept {
    if (!TakesBytes()) return;
    Guard([&] {
        for (const auto view : views) {
            const std::size_t count = std::min(view.size(), written);
            if (count > 0) Take(TraceDirection::Sent, view.first(count));
            written -= count;
        }
    });
}

void LinkRecords::Take(TraceDirection direction, std::span<const std::uint8_t> bytes) {
    trace_.Bytes(direction, bytes);
    capture_.Bytes(direction, bytes);
}

void LinkRecords::OnEvent(const Action& event) noexcept {
    Guard([&] {
        if (const auto* sent = std::get_if<RaiseSent>(&event)) {
            const std::span bytes(sent->Bytes);
            recipes_.Take(TraceDirection::Sent, sent->Header, bytes.subspan(sent->BodyOffset));
        } else if (const auto* received = std::get_if<RaiseReceived>(&event)) {
            recipes_.Take(TraceDirection::Received, received->Header, received->Body);
        } else if (!trace_.IsOn()) {
            return;
        } else if (const auto* error = std::get_if<RaiseError>(&event)) {
            trace_.Note("Error " + CodeText(error->Code, error->Text));
        } else if (const auto* end = std::get_if<RaiseDisconnect>(&event)) {
            trace_.Note("Disconnect " + CodeText(end->Code, end->Text));
        }
    });
}

void LinkRecords::Flush() noexcept {
    Guard([this] {
        trace_.Flush();
        capture_.Flush();
    });
}

void LinkRecords::Finish() noexcept {
    Guard([this] {
        trace_.HandOver();
        capture_.HandOver();
    });
    (void)worker_.Finish(kPatience);
}

}  // namespace hexmire::link
