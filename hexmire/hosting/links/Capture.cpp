#include <hexmire/driver/trace/PcapNg.h>
#include <hexmire/hosting/links/Capture.h>
#include <hexmire/hosting/links/RecordPath.h>

#include <asio/ip/address.hpp>

#include <algorithm>
#include <utility>

namespace hexmire::link {

namespace {

CaptureEnd EndOf(const std::string& address, std::uint16_t port) {
    CaptureEnd end;
    end.Port = port;
    asio::error_code error;
    const auto parsed = asio::ip::make_address(address, error);
    if (error) return end;
    end.IsIPv6 = parsed.is_v6();
    const auto copy = [&end](const auto& bytes) {
        std::copy(bytes.begin(), bytes.end(), end.Address.begin());
    };
    end.IsIPv6 ? copy(parsed.to_v6().to_bytes()) : copy(parsed.to_v4().to_bytes());
    return end;
}

}  // namespace

Capture::Capture(FileWorker& worker,
                 RecordSite site,
                 LinkStatistics& statistics,
                 DailyRecord::Failed failed,
                 std::string folder)
    : site_(std::move(site)),
      record_(worker,
              site_.Files,
              {.Extension = ".pcapng"},
              statistics.TraceEntriesLost,
              std::move(failed)),
      folder_(std::move(folder)) {}

template <class Packets>
void Capture::Add(Packets&& packets) {
    const auto now = site_.Now();
    bytes_.clear();
    packets(now);
    record_.Add(bytes_, clock_.At(now).Date);
}

void Capture::Name(const LinkSettings& settings) {
    std::string name = TracePortName(settings);
    if (!IsOn() || name == name_) return;
    name_ = std::move(name);
    std::string start;
    AppendPcapNgStart(start, name_);
    record_.Place(PathIn(folder_, "SECSI_" + name_), std::move(start));
}

void Capture::Open(const Endpoints& ends, std::string_view comment) {
    if (!IsOn() || ends.RemotePort == 0) return;
    connection_.emplace(EndOf(ends.LocalAddress, ends.LocalPort),
                        EndOf(ends.RemoteAddress, ends.RemotePort),
                        ends.IsCaller);
    Add([&](auto now) { connection_->AppendOpening(bytes_, now, comment); });
}

void Capture::Bytes(TraceDirection direction, std::span<const std::uint8_t> bytes) {
    if (!connection_) return;
    Add([&](auto now) { connection_->AppendBytes(bytes_, now, direction, bytes); });
}

void Capture::End(ConnectionEnd end, std::string_view comment) {
    if (!connection_) return;
    Add([&](auto now) { connection_->AppendEnd(bytes_, now, end, comment); });
    connection_.reset();
}

}  // namespace hexmire::link
