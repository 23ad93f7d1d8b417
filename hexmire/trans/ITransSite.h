#pragma once

#include <hexmire/core/IMessageSite.h>
#include <hexmire/platform/SECSIService.h>

#include <cstdint>
#include <memory>

namespace hexmire {

class SECSDictionary;

/// What transactions need of the control that made them.
class ITransSite : public IMessageSite {
public:
    [[nodiscard]] Service Serves() const noexcept final { return Service::Transactions; }

    /// The transport driver; none after the control's teardown.
    [[nodiscard]] virtual std::shared_ptr<SECSIService> Driver() noexcept = 0;
    [[nodiscard]] virtual std::int32_t DeviceID() const noexcept = 0;
    /// Reply time-out in seconds.
    [[nodiscard]] virtual std::int32_t T3Timeout() const noexcept = 0;
    [[nodiscard]] virtual std::int32_t ConnectionPortType() const noexcept = 0;
    /// True in the host role, false for an equipment.
    [[nodiscard]] virtual bool ConnectionHost() const noexcept = 0;
    /// The table of transactions that wait for a reply; none after the control's teardown.
    [[nodiscard]] virtual std::shared_ptr<SECSDictionary> SECSTransInUse() noexcept = 0;
};

}  // namespace hexmire
