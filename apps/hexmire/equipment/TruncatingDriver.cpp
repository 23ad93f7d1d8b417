#include "equipment/TruncatingDriver.h"

#include <utility>

namespace hexmire::program {

namespace {

class TruncatingDriver final : public SECSIService {
public:
    TruncatingDriver(std::unique_ptr<SECSIService> driver, TruncateNext truncateNext)
        : driver_(std::move(driver)), truncateNext_(std::move(truncateNext)) {}

    void SendMessage(std::span<const std::uint8_t> header,
                     const Variant& body,
                     std::int32_t length) override {
        const auto bytes = body.View<std::uint8_t>();
        const bool isCut = std::exchange(*truncateNext_, false) && !bytes.empty();
        if (!isCut) return driver_->SendMessage(header, body, length);
        if (bytes.size() == 1) return driver_->SendMessage(header, "", 0);
        driver_->SendMessage(header, Variant::Bytes(bytes.first(bytes.size() - 1)), length - 1);
    }

    void OpenLink() override { driver_->OpenLink(); }
    void CloseLink() override { driver_->CloseLink(); }
    bool LinkStatus() override { return driver_->LinkStatus(); }
    void SerialPort(const std::string& value) override { driver_->SerialPort(value); }
    void ConnectionRetryLimit(std::int16_t value) override { driver_->ConnectionRetryLimit(value); }
    void PortType(std::int16_t value) override { driver_->PortType(value); }
    void HostRole(bool value) override { driver_->HostRole(value); }
    void BaudRate(std::int16_t value) override { driver_->BaudRate(value); }
    void T1(float value) override { driver_->T1(value); }
    void T2(float value) override { driver_->T2(value); }
    void T3(std::int16_t value) override { driver_->T3(value); }
    void T4(std::int16_t value) override { driver_->T4(value); }
    void T5(std::int16_t value) override { driver_->T5(value); }
    void T6(std::int16_t value) override { driver_->T6(value); }
    void T7(std::int16_t value) override { driver_->T7(value); }
    void T8(std::int16_t value) override { driver_->T8(value); }
    void DeviceID(std::int32_t value) override { driver_->DeviceID(value); }
    void LocalIPAddress(const std::string& value) override { driver_->LocalIPAddress(value); }
    void LocalIPPort(std::int32_t value) override { driver_->LocalIPPort(value); }
    void RemoteIPAddress(const std::string& value) override { driver_->RemoteIPAddress(value); }
    void RemoteIPPort(std::int32_t value) override { driver_->RemoteIPPort(value); }
    void InterleaveCheck(bool value) override { driver_->InterleaveCheck(value); }
    void DuplicateBlockCheck(bool value) override { driver_->DuplicateBlockCheck(value); }
    void SystemBytesCheck(bool value) override { driver_->SystemBytesCheck(value); }
    void TimeOutRetry(std::int16_t value) override { driver_->TimeOutRetry(value); }
    void HSMSConnectionMode(std::int16_t value) override { driver_->HSMSConnectionMode(value); }
    void Trace(bool value) override { driver_->Trace(value); }
    void RecipeFileEnabled(bool value) override { driver_->RecipeFileEnabled(value); }
    void RecipeSendPath(const std::string& value) override { driver_->RecipeSendPath(value); }
    void RecipeRecvPath(const std::string& value) override { driver_->RecipeRecvPath(value); }
    void SECSILogPath(const std::string& value) override { driver_->SECSILogPath(value); }

private:
    std::unique_ptr<SECSIService> driver_;
    TruncateNext truncateNext_;
};

}  // namespace

void AddTruncation(Platform& platform, TruncateNext truncateNext) {
    platform.NewDriver = [make = std::move(platform.NewDriver),
                          truncateNext = std::move(truncateNext)](SECSIServiceEvents& events) {
        return std::make_unique<TruncatingDriver>(make(events), truncateNext);
    };
}

}  // namespace hexmire::program
