#pragma once

#include <hexmire/core/SECSItem.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace hexmire {

namespace detail {
class SECSMessageAccess;
}

/// One SECS-II message (SEMI E5): stream, function, and the tree of data items that forms its body.
/// Device ID, W-bit and system bytes belong to the transaction. Raw, RawHex and Length describe the
/// body only, as it was last encoded or received.
///
/// Rejected values are reported through the control's `Error` event and change nothing.
/// Single-threaded; call from the loop thread.
class SECSMessage {
public:
    SECSMessage(PassKey key, SiteRef site);
    SECSMessage(const SECSMessage&) = delete;
    SECSMessage& operator=(const SECSMessage&) = delete;
    /// Tears the item tree down: a branch that a host still holds is empty afterwards.
    ~SECSMessage();

    /// Stream number, [0..127]; error 1013 outside.
    [[nodiscard]] std::int32_t Stream() const noexcept { return stream_; }
    void Stream(std::int32_t value);

    /// The root item, named "Root", always a list; its first child is the body.
    [[nodiscard]] SECSItemPtr Root() const noexcept { return root_; }

    /// The body bytes as text: two upper-case digits a byte, one blank between bytes.
    [[nodiscard]] std::string RawHex() const;

    /// The body bytes as an array of Byte; Empty at first. A value set by the host is stored as it
    /// is and touches neither Length nor RawHex.
    [[nodiscard]] Variant Raw() const { return raw_; }
    void Raw(Variant value) noexcept;

    [[nodiscard]] std::string Name() const;
    void Name(std::string_view value);

    /// Number of body bytes that the last encoding made.
    [[nodiscard]] std::int32_t Length() const noexcept { return length_; }

    /// A direct child of Root by 1-based position or by name. Errors 1004, 1007, 1008, 1009 as for
    /// SECSItem::Item, a text of blanks being 1008; then none.
    [[nodiscard]] SECSItemPtr Item(const Variant& value) const;
    template <PositionInteger T>
    [[nodiscard]] SECSItemPtr Item(T position) const {
        return Item(PositionVariant(position));
    }
    [[nodiscard]] SECSItemPtr Item(std::string_view name) const;
    [[nodiscard]] SECSItemPtr Item(const std::string& name) const {
        return Item(std::string_view(name));
    }
    [[nodiscard]] SECSItemPtr Item(const char* name) const {
        return Item(std::string_view(name == nullptr ? "" : name));
    }

    /// Function number, [0..255]; error 1014 outside. 1 at first.
    [[nodiscard]] std::int32_t Func() const noexcept { return func_; }
    void Func(std::int32_t value);

    [[nodiscard]] std::string Description() const;
    void Description(std::string_view value);

private:
    friend class detail::SECSMessageAccess;

    [[nodiscard]] SECSItemPtr FindItem(const Variant& value) const;

    SECSItemPtr root_;
    std::string description_;
    std::int32_t stream_ = 0;
    std::int32_t func_ = 1;
    std::int32_t length_ = 0;
    std::string name_;
    Variant raw_;
    // The hex text is three times the body and seldom read: it is made from these bytes when asked
    // for, unless a text was set.
    Variant rawHexBytes_;
    std::string rawHex_;
    SiteRef site_;
};

using SECSMessagePtr = std::shared_ptr<SECSMessage>;

template <>
[[nodiscard]] std::shared_ptr<SECSMessage> New<SECSMessage>();

}  // namespace hexmire
