#include <hexmire/hosting/links/TransportDriver.h>
#include <hexmire/hosting/links/TransportShell.h>

#include <cmath>

namespace hexmire {

namespace {

using Milliseconds = LinkSettings::Milliseconds;

Milliseconds Seconds(std::int16_t seconds) { return std::chrono::seconds(seconds); }

/// 0.2 s has no exact binary fraction: it must not become 199 ms. What is no time at all becomes
/// one that no range contains.
Milliseconds Seconds(float seconds) {
    constexpr float kLimit = 1e6F;
    if (!(seconds >= -kLimit && seconds <= kLimit)) return Milliseconds(-1);
    return Milliseconds(std::llround(static_cast<double>(seconds) * 1000.0));
}

}  // namespace

TransportDriver::TransportDriver(asio::io_context& loop,
                                 SECSIServiceEvents& events,
                                 const LinkSettings& own)
    : TransportDriver(loop, events, own, link::RecordSite::System()) {}

TransportDriver::TransportDriver(asio::io_context& loop,
                                 SECSIServiceEvents& events,
                                 const LinkSettings& own,
                                 const link::RecordSite& site)
    : shell_(std::make_shared<Shell>(loop, events, own, site)) {}

TransportDriver::~TransportDriver() { shell_->Destroy(); }

void TransportDriver::OpenLink() { shell_->Open(); }
void TransportDriver::CloseLink() { shell_->Close(); }
bool TransportDriver::LinkStatus() { return shell_->IsOpen(); }
void TransportDriver::SendMessage(std::span<const std::uint8_t> header,
                                  const Variant& body,
                                  std::int32_t length) {
    shell_->Send(header, body, length);
}

void TransportDriver::SerialPort(const std::string& name) {
    shell_->Set(&LinkSettings::SerialPort, name);
}
void TransportDriver::ConnectionRetryLimit(std::int16_t limit) {
    shell_->Set(&LinkSettings::ConnectionRetryLimit, limit);
}
void TransportDriver::PortType(std::int16_t type) { shell_->Set(&LinkSettings::PortType, type); }
void TransportDriver::HostRole(bool host) { shell_->Set(&LinkSettings::HostRole, host); }
void TransportDriver::BaudRate(std::int16_t baud) { shell_->Set(&LinkSettings::BaudRate, baud); }
void TransportDriver::T1(float seconds) { shell_->Set(&LinkSettings::T1, Seconds(seconds)); }
void TransportDriver::T2(float seconds) { shell_->Set(&LinkSettings::T2, Seconds(seconds)); }
void TransportDriver::T3(std::int16_t seconds) { shell_->Set(&LinkSettings::T3, Seconds(seconds)); }
void TransportDriver::T4(std::int16_t seconds) { shell_->Set(&LinkSettings::T4, Seconds(seconds)); }
void TransportDriver::T5(std::int16_t seconds) { shell_->Set(&LinkSettings::T5, Seconds(seconds)); }
void TransportDriver::T6(std::int16_t seconds) { shell_->Set(&LinkSettings::T6, Seconds(seconds)); }
void TransportDriver::T7(std::int16_t seconds) { shell_->Set(&LinkSettings::T7, Seconds(seconds)); }
void TransportDriver::T8(std::int16_t seconds) { shell_->Set(&LinkSettings::T8, Seconds(seconds)); }
void TransportDriver::DeviceID(std::int32_t deviceId) {
    shell_->Set(&LinkSettings::DeviceID, deviceId);
}
void TransportDriver::LocalIPAddress(const std::string& address) {
    shell_->Set(&LinkSettings::LocalIPAddress, address);
}
void TransportDriver::LocalIPPort(std::int32_t port) {
    shell_->Set(&LinkSettings::LocalIPPort, port);
}
void TransportDriver::RemoteIPAddress(const std::string& address) {
    shell_->Set(&LinkSettings::RemoteIPAddress, address);
}
void TransportDriver::RemoteIPPort(std::int32_t port) {
    shell_->Set(&LinkSettings::RemoteIPPort, port);
}
void TransportDriver::InterleaveCheck(bool on) { shell_->Set(&LinkSettings::InterleaveCheck, on); }
void TransportDriver::DuplicateBlockCheck(bool on) {
    shell_->Set(&LinkSettings::DuplicateBlockCheck, on);
}
void TransportDriver::SystemBytesCheck(bool on) {
    shell_->Set(&LinkSettings::SystemBytesCheck, on);
}
void TransportDriver::TimeOutRetry(std::int16_t count) {
    shell_->Set(&LinkSettings::TimeOutRetry, count);
}
void TransportDriver::HSMSConnectionMode(std::int16_t mode) {
    shell_->Set(&LinkSettings::HSMSConnectionMode, mode);
}
void TransportDriver::Trace(bool on) { shell_->Set(&LinkSettings::Trace, on); }
void TransportDriver::RecipeFileEnabled(bool on) {
    shell_->Set(&LinkSettings::RecipeFileEnabled, on);
}
void TransportDriver::RecipeSendPath(const std::string& folder) {
    shell_->Set(&LinkSettings::RecipeSendPath, folder);
}
void TransportDriver::RecipeRecvPath(const std::string& folder) {
    shell_->Set(&LinkSettings::RecipeRecvPath, folder);
}
void TransportDriver::SECSILogPath(const std::string& folder) {
    shell_->Set(&LinkSettings::SECSILogPath, folder);
}

const LinkSettings& TransportDriver::Settings() const noexcept { return shell_->Settings(); }
const LinkStatistics& TransportDriver::Statistics() const noexcept { return shell_->Statistics(); }

}  // namespace hexmire
