#pragma once

#include <hexmire/core/SECSMessage.h>
#include <hexmire/support/PassKey.h>
#include <hexmire/support/Variant.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace hexmire {

class SECSDictionary;

namespace detail {
class SECSTransAccess;
}

/// One SECS-II transaction: a primary message, its expected secondary, the header facts that go
/// with them, and the supervision of the reply (SEMI E5, transactions; SEMI E4 and E37, T3).
///
/// The same class serves as a template in a dictionary, as a working copy that may be sent or
/// replied, and as an entry of the control's table of transactions in use. Errors go to the
/// control's `Error` event. Single-threaded; call from the loop thread.
class SECSTrans : public std::enable_shared_from_this<SECSTrans> {
public:
    SECSTrans(PassKey key, SiteRef site);
    /// One that has a message already; the other one, or both, is made.
    SECSTrans(PassKey key, SiteRef site, SECSMessagePtr primary, SECSMessagePtr secondary);
    SECSTrans(const SECSTrans&) = delete;
    SECSTrans& operator=(const SECSTrans&) = delete;
    ~SECSTrans();

    // Free slots of the host: stored and copied, never interpreted.
    [[nodiscard]] Variant ActionOnError() const { return actionOnError_; }
    void ActionOnError(Variant value) noexcept;
    [[nodiscard]] Variant ActionOnSuccess() const { return actionOnSuccess_; }
    void ActionOnSuccess(Variant value) noexcept;
    [[nodiscard]] Variant Tag() const { return tag_; }
    void Tag(Variant value) noexcept;

    /// True: Send takes new system bytes from the counter of the process; false: it uses
    /// SystemBytes.
    [[nodiscard]] bool AutoSystemBytes() const noexcept { return autoSystemBytes_; }
    void AutoSystemBytes(bool value) noexcept { autoSystemBytes_ = value; }

    [[nodiscard]] std::string Description() const;
    void Description(std::string_view value);

    /// Device ID of the header, [0..32767]; error 1047 outside. The control's at first.
    [[nodiscard]] std::int32_t DeviceID() const noexcept { return deviceId_; }
    void DeviceID(std::int32_t value);

    /// 1-based position in the dictionary that holds this transaction; 0 outside one.
    [[nodiscard]] std::int32_t Index() const noexcept;

    /// True from Send until the reply has come.
    [[nodiscard]] bool InProgress() const noexcept { return inProgress_; }

    [[nodiscard]] std::string Name() const;
    void Name(std::string_view value);

    /// The messages: always the same objects, edited in place.
    [[nodiscard]] SECSMessagePtr Primary() const noexcept { return primary_; }
    [[nodiscard]] SECSMessagePtr Secondary() const noexcept { return secondary_; }

    /// True: the primary goes out with the W-bit and waits for its reply.
    [[nodiscard]] bool ReplyExpected() const noexcept { return replyExpected_; }
    void ReplyExpected(bool value) noexcept { replyExpected_ = value; }

    /// System bytes of the last Send, or those of the received primary.
    [[nodiscard]] std::int32_t SystemBytes() const noexcept { return systemBytes_; }

    /// Takes this transaction out of the dictionary or table that holds it; error 1079 when none
    /// does. Always Empty.
    Variant Delete();

    /// Sends the secondary as the answer to the received primary. Errors 2008, 2009. Always Empty.
    Variant Reply();

    /// Sends the primary and, when a reply is expected, enters this transaction into the table of
    /// transactions in use. Errors 2008 no message, 2009 not a working copy. Always Empty.
    Variant Send();

private:
    friend class detail::SECSTransAccess;

    void TellKeyChange() const noexcept;

    SECSMessagePtr primary_;
    SECSMessagePtr secondary_;
    std::weak_ptr<SECSDictionary> parent_;
    Variant actionOnError_;
    Variant actionOnSuccess_;
    Variant tag_;
    std::string description_;
    std::string name_;
    SiteRef site_;
    std::int32_t deviceId_ = 0;
    std::int32_t index_ = 0;
    std::int32_t systemBytes_ = 0;
    std::int32_t t3Timer_ = 0;
    std::int32_t t3Counter_ = 0;
    bool autoSystemBytes_ = true;
    bool inProgress_ = false;
    bool replyExpected_ = true;
    bool t3Start_ = false;
};

using SECSTransPtr = std::shared_ptr<SECSTrans>;

template <>
[[nodiscard]] std::shared_ptr<SECSTrans> New<SECSTrans>();

}  // namespace hexmire
