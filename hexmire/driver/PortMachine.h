#pragma once

#include <hexmire/driver/Connector.h>
#include <hexmire/driver/ILinkMachine.h>
#include <hexmire/driver/LinkOutput.h>
#include <hexmire/driver/LinkStatistics.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::link {

/// What a link does with its port, whatever is spoken on it: opens and closes it, takes new
/// settings, and hands on to the connector what only that has to know.
class PortMachine : public ILinkMachine {
public:
    PortMachine(const PortMachine&) = delete;
    PortMachine& operator=(const PortMachine&) = delete;

    void Open(TimePoint now) final;
    void Close(TimePoint now) final;
    [[nodiscard]] bool IsOpen() const final { return open_; }
    [[nodiscard]] std::optional<TimePoint> LastEnd() const final { return connector_.LastEnd(); }
    void LastEnd(std::optional<TimePoint> end) final { connector_.LastEnd(end); }
    void Configure(const LinkSettings& settings, TimePoint now) final;
    void Report(LinkError code, std::string text, TimePoint now) final;

    void OnListening(TimePoint now) final;
    void OnAcceptFailed(const SystemFailure& failure, TimePoint now) final;

    void TakeActions(std::vector<Action>& into) final { output_.TakeActions(into); }

protected:
    /// `statistics` outlives the machine; `seed` spreads the attempts of an alternating link.
    PortMachine(LinkSettings settings, LinkStatistics& statistics, std::uint32_t seed);

    /// The port is open from now on.
    virtual void OnOpen() = 0;
    /// The port is closed from now on; a connection may still be ended in order.
    virtual void OnClose() = 0;
    /// There is another mode or listening address.
    virtual void OnMoved() = 0;

    void Raise(LinkError code, std::string text) { output_.Raise(code, std::move(text)); }

    LinkSettings settings_;
    LinkStatistics& statistics_;
    LinkOutput output_;
    Connector connector_;
    bool open_ = false;
};

}  // namespace hexmire::link
