#include <hexmire/driver/PortMachine.h>

namespace hexmire::link {

PortMachine::PortMachine(LinkSettings settings, LinkStatistics& statistics, std::uint32_t seed)
    : settings_(std::move(settings)),
      statistics_(statistics),
      output_(statistics_),
      connector_(settings_, output_, statistics_, seed) {}

void PortMachine::Open(TimePoint now) {
    output_.Now(now);
    if (open_) return;
    if (const auto fault = CheckLinkSettings(settings_)) {
        return Raise(static_cast<LinkError>(fault->Code), fault->Text);
    }
    open_ = true;
    connector_.Open();
    OnOpen();
}

void PortMachine::Close(TimePoint now) {
    output_.Now(now);
    if (!open_) return;
    open_ = false;
    OnClose();
}

void PortMachine::Configure(const LinkSettings& settings, TimePoint now) {
    output_.Now(now);
    if (open_) {
        if (const auto fault = CheckLinkSettings(settings)) {
            return Raise(static_cast<LinkError>(fault->Code), fault->Text);
        }
    }
    const bool moved = settings.HSMSConnectionMode != settings_.HSMSConnectionMode ||
                       settings.LocalIPAddress != settings_.LocalIPAddress ||
                       settings.LocalIPPort != settings_.LocalIPPort;
    settings_ = settings;
    if (moved) OnMoved();
}

void PortMachine::Report(LinkError code, std::string text, TimePoint now) {
    output_.Now(now);
    Raise(code, std::move(text));
}

void PortMachine::OnListening(TimePoint now) {
    output_.Now(now);
    connector_.OnListening();
}

void PortMachine::OnAcceptFailed(const SystemFailure& failure, TimePoint now) {
    output_.Now(now);
    connector_.OnAcceptFailed(failure);
}

}  // namespace hexmire::link
