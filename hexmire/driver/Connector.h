#pragma once

#include <hexmire/driver/ILinkMachine.h>
#include <hexmire/driver/LinkOutput.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <random>
#include <string>

namespace hexmire::link {

/// How a link gets its connection, whatever is spoken on it: listens, connects or opens the serial
/// port, keeps T5 between attempts, and decides about callers.
///
/// Alternating: it listens all the time and tries a connect from time to time; the first connection
/// that comes up is taken. When both ends connect at the same moment both keep the connection that
/// the host has opened: the host holds a caller back while its own attempt is under way, and the
/// equipment changes over to a caller as long as it has heard nothing on its own connection.
class Connector {
public:
    enum class Verdict : std::uint8_t {
        Adopted,  ///< the connection is the live one
        Refused,  ///< nothing changes
        Again,    ///< our own attempt came to nothing: begin again
    };

    /// `seed` spreads the attempts of an alternating link.
    Connector(const LinkSettings& settings,
              LinkOutput& output,
              LinkStatistics& statistics,
              std::uint32_t seed);

    // --- commands of the machine -----------------------------------------------------------------
    /// When the last attempt or connection ended, T5 counting from there; for a machine that takes
    /// over from another one.
    [[nodiscard]] std::optional<TimePoint> LastEnd() const noexcept { return lastEnd_; }
    void LastEnd(std::optional<TimePoint> end) noexcept { lastEnd_ = end; }
    /// The port is opened: failures are told anew.
    void Open() noexcept;
    /// There is no connection and one is wanted.
    void Begin();
    /// There is a connection: no more attempts.
    void StopTrying();
    void StopListening();
    /// No connection is wanted any more, or the present one is over: closes it and any attempt.
    /// True when there was one.
    bool Drop();
    /// Bytes have come in on the live connection.
    void Heard() noexcept { heard_ = true; }

    // --- inputs ----------------------------------------------------------------------------------
    void OnListening() noexcept { listenFailure_ = 0; }
    void OnListenFailed(const SystemFailure& failure);
    void OnAcceptFailed(const SystemFailure& failure);
    /// While there is no connection.
    Verdict OnConnected(const Endpoints& ends);
    /// While there is one: true when the machine has to change over to this one.
    bool OnExtraConnected(const Endpoints& ends);
    /// Whether this caller is the peer, which has called while we called it: another attempt at
    /// the connection that is up, and nobody extra.
    [[nodiscard]] bool IsCrossing(const Endpoints& ends) const;
    Verdict OnConnectFailed(const SystemFailure& failure);
    Verdict OnConnectTimeout();
    Verdict OnCrossingTimeout();
    void OnAcceptRetry();
    void RefuseSilently();
    void RefuseExtra(const Endpoints& ends);

    // --- state -----------------------------------------------------------------------------------
    [[nodiscard]] bool IsTrying() const noexcept { return connecting_; }
    [[nodiscard]] bool IsConnected() const noexcept { return connected_; }
    /// Whether this end has opened the live connection.
    [[nodiscard]] bool IsOpener() const noexcept { return opener_; }
    /// The ends of the live connection.
    [[nodiscard]] const Endpoints& Ends() const noexcept { return ends_; }
    /// "address:port" of the peer, or the name of the serial port.
    [[nodiscard]] std::string PeerText() const;
    /// Whether an OnConnectFailed of this attempt tells of something that cannot get better.
    [[nodiscard]] bool IsFirstAttempt() const noexcept { return attempts_ <= 1; }

private:
    [[nodiscard]] bool IsSerial() const noexcept;
    [[nodiscard]] bool Listens() const noexcept;
    [[nodiscard]] bool Connects() const noexcept;
    [[nodiscard]] bool IsAlternating() const noexcept { return Listens() && Connects(); }
    [[nodiscard]] std::chrono::milliseconds RestOfT5() const;
    [[nodiscard]] bool LeadsBack(const Endpoints& ends) const;
    [[nodiscard]] bool IsAllowed(const std::string& address) const;
    [[nodiscard]] std::string RemoteText() const;
    void BeginListening();
    void BeginConnect();
    Verdict AttemptEnded();
    void EndAttempt();
    Verdict AdoptHeldCaller();
    Verdict AdoptOwn(const Endpoints& ends);
    Verdict TakeCaller(const Endpoints& ends);
    void Adopt(const Endpoints& ends, bool opener);
    void SetLive(const Endpoints& ends, bool opener);

    const LinkSettings& settings_;
    LinkOutput& output_;
    LinkStatistics& statistics_;
    std::minstd_rand random_;

    std::optional<Listen> listening_;
    int listenFailure_ = 0;               // error number last told; the same one again is silent
    std::optional<TimePoint> lastEnd_;    // of an attempt or a link; T5 counts from here
    std::chrono::milliseconds spread_{};  // alternating: beyond T5
    std::uint32_t attempts_ = 0;          // since Open
    bool connecting_ = false;
    std::optional<Endpoints> held_;  // a caller that waits for the end of our own attempt
    bool connected_ = false;
    bool opener_ = false;
    bool heard_ = false;
    TimePoint upSince_;
    Endpoints ends_;
};

}  // namespace hexmire::link
