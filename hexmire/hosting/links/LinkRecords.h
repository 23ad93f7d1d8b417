#pragma once

#include <hexmire/driver/ILinkMachine.h>
#include <hexmire/hosting/links/ByteTrace.h>
#include <hexmire/hosting/links/Capture.h>
#include <hexmire/hosting/links/RecipeArchive.h>

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace asio {
class io_context;
}

namespace hexmire::link {

/// What a link leaves on disk: byte trace, capture and recipes. The shell tells it what happens;
/// the files are written on a thread of their own, as a disk that is slow or full must not hold up
/// the link. No member throws; failures are told by errors, later, when the worker is done.
class LinkRecords {
public:
    using Failed = std::function<void(LinkError code, const std::string& details)>;

    /// The loop and the statistics outlive the records.
    LinkRecords(asio::io_context& loop,
                const RecordSite& site,
                LinkStatistics& statistics,
                const LinkSettings& settings,
                const Failed& failed);

    /// Settings that count at once.
    void Configure(const LinkSettings& settings) noexcept;
    /// A connection is being sought after these settings.
    void OnAttempt(const LinkSettings& settings) noexcept;
    void OnAttemptFailed(std::string_view what, std::string_view reason) noexcept;
    /// The live connection; one that was live before has ended.
    void OnConnection(const Endpoints& ends) noexcept;
    /// What the end of the connection will be put down to. Nothing: we have closed it.
    void OnEndSeen(ConnectionEnd end, std::string_view reason) noexcept;
    void OnClosed() noexcept;

    void OnReceived(std::span<const std::uint8_t> bytes) noexcept;
    /// The first `written` bytes of what the views show.
    void OnSent(std::span<const std::span<const std::uint8_t>> views, std::size_t written) noexcept;
    /// An event for the control.
    void OnEvent(const Action& event) noexcept;

    /// The turn of the loop is over.
    void Flush() noexcept;
    /// Waits until everything is written, a few seconds at most; nothing is told any more.
    void Finish() noexcept;

private:
    template <class Work>
    void Guard(Work&& work) noexcept;
    [[nodiscard]] bool TakesBytes() const noexcept { return trace_.IsOn() || capture_.IsOn(); }
    void Take(TraceDirection direction, std::span<const std::uint8_t> bytes);
    void End();

    LinkStatistics& statistics_;
    FileWorker worker_;
    ByteTrace trace_;
    Capture capture_;
    RecipeArchive recipes_;
    bool isConnected_ = false;
    ConnectionEnd end_ = ConnectionEnd::ByUs;
    std::string endReason_;
};

}  // namespace hexmire::link
