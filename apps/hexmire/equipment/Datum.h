#pragma once

#include <hexmire/hexmire.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::program {

/// One data item as a plain value: what a simulated equipment keeps and answers with. Values have
/// the kinds that decoding gives.
struct Datum {
    std::int32_t Format = FormatList;
    Variant Value{};             ///< of anything but a list
    std::vector<Datum> Items{};  ///< of a list
    bool operator==(const Datum&) const = default;
};

[[nodiscard]] Datum List(std::vector<Datum> items = {});
[[nodiscard]] Datum Ascii(std::string_view text);
[[nodiscard]] Datum Binary(std::uint8_t value);
[[nodiscard]] Datum Boolean(bool value);
[[nodiscard]] Datum Unsigned1(std::uint8_t value);
[[nodiscard]] Datum Unsigned4(std::uint32_t value);

/// Levels of lists that a value may have: with the lists of S6F11 around it a link takes no more.
[[nodiscard]] std::size_t DeepestValue();

/// Number of lists inside one another in a message.
[[nodiscard]] std::size_t DepthOf(const SECSMessage& message);

/// The body of a message, which is no deeper than a link takes: none when there is no item.
[[nodiscard]] std::optional<Datum> BodyOf(const SECSMessage& message);
/// Puts the body in place of what the message holds.
void SetBody(const SECSMessage& message, const std::optional<Datum>& body);

/// A received body has not the shape that its stream and function ask for (SEMI E5, S9F7).
class IllegalData : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The elements of a list; IllegalData when it is none.
[[nodiscard]] const std::vector<Datum>& ItemsOf(const Datum& datum);
/// The same, for a list of exactly that many elements.
[[nodiscard]] const std::vector<Datum>& ItemsOf(const Datum& datum, std::size_t count);

/// What tells identifiers apart, whatever their format: the number or the text, "" for an item
/// without value. IllegalData for a list, several values, a truth value or a fraction.
[[nodiscard]] std::string KeyOf(const Datum& datum);
/// The text of an A or B item.
[[nodiscard]] std::string TextOf(const Datum& datum);
/// The number of a B item or of an integer item from 0 to 255.
[[nodiscard]] std::uint8_t ByteOf(const Datum& datum);
/// A single number; none for anything else.
[[nodiscard]] std::optional<double> NumberOf(const Datum& datum);
[[nodiscard]] bool IsInteger(std::int32_t format);
[[nodiscard]] bool IsFloating(std::int32_t format);

/// "U4", "BOOLEAN" and so on; none for a name that is no format.
[[nodiscard]] std::optional<std::int32_t> FormatNamed(std::string_view name);
[[nodiscard]] std::string NameOf(std::int32_t format);

}  // namespace hexmire::program
