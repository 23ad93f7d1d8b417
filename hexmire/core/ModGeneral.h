#pragma once

#include <hexmire/core/ItemFormat.h>
#include <hexmire/core/SECSItem.h>
#include <hexmire/support/Variant.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// General routines: item formats, conversions between numbers, bytes and texts, dumps. None
/// throws: a fault inside a routine is reported to the current control in the routine's name, and
/// the routine returns what it had.
namespace hexmire::ModGeneral {

// --- Format names ------------------------------------------------------------------------------

/// Code of a format's text name ("L", "B", "BOOL", "A", "I8" .. "U1", any letter case, no
/// trimming); 63 for any other text.
[[nodiscard]] std::int32_t TextToItemFormat(std::string_view text);
/// Text name of a format code; "V" for any other number.
[[nodiscard]] std::string ItemFormatToText(std::int32_t format);

// --- Numbers and bytes, most significant byte first --------------------------------------------

/// Unsigned value of 1 to 3 bytes, two's complement of 4.
[[nodiscard]] std::int32_t BytesToLong(const std::vector<std::uint8_t>& bytes);
/// Value of 1 to 4 bytes sign-extended with one bits.
[[nodiscard]] std::int32_t BytesToLongNegatif(const std::vector<std::uint8_t>& bytes);
/// IEEE 754 single of 4 bytes.
[[nodiscard]] float BytesToSingle(const std::vector<std::uint8_t>& bytes);
/// IEEE 754 double of 8 bytes.
[[nodiscard]] double BytesToDouble(const std::vector<std::uint8_t>& bytes);
/// Fills an array that the caller has sized (1, 2 or 4 bytes) with the value's low bytes; Empty.
Variant LongToBytes(std::vector<std::uint8_t>& bytes, std::int32_t value);
/// Fills 4 bytes; Empty.
Variant SingleToBytes(std::vector<std::uint8_t>& bytes, float value);
/// Fills 8 bytes; Empty.
Variant DoubleToBytes(std::vector<std::uint8_t>& bytes, double value);

/// value x 2^shift rounded to nearest; fault 6 and 0 beyond 32 bits.
[[nodiscard]] std::int32_t lLBitShift(std::int32_t value, std::int16_t shift);
/// value / 2^shift truncated toward zero; 0 and fault 6 when 2^shift is beyond 32 bits, 11 when 0.
[[nodiscard]] std::int32_t lRBitShift(std::int32_t value, std::int16_t shift);
[[nodiscard]] bool IsEven(std::int32_t value) noexcept;
/// True when the first element of an array is a Byte; a fault and false for an empty array or
/// anything else.
[[nodiscard]] bool IsByteArray(const Variant& values);

// --- Text to item value ------------------------------------------------------------------------

/// One value for an item of the given item's format; Empty for an empty text.
[[nodiscard]] Variant lAssignValue(const SECSItem& item, std::string_view text);
/// The whole value of an array-valued item from a text of elements with one blank between them.
[[nodiscard]] Variant lAssignArrayValue(const SECSItem& item, std::string_view text);
/// "T" and "F", "True" and "False" in any letter case, numbers; fault 13 for anything else.
[[nodiscard]] Variant lVarBoolean(std::string_view text);
/// The element splitters: each element of `text` becomes one element of `array`, whose kind (an
/// array of Integer, Long, Double, Byte or Boolean, usually empty) says what is stored. The result
/// is the array, or Empty when nothing was built. A doubled blank ends the text.
Variant lVariantArrayValue(const SECSItem& item, std::string_view text, Variant& array);
Variant lByteArrayValue(const SECSItem& item, std::string_view text, Variant& array);
Variant lBoolArrayValue(const SECSItem& item, std::string_view text, Variant& array);

// --- Dumps of arrays of byte values ------------------------------------------------------------

/// One character a byte.
[[nodiscard]] std::string ChrDumpArray(const Variant& values);
/// "0A FF"
[[nodiscard]] std::string HexDumpArray(const Variant& values);
/// "0x0A 0xFF"
[[nodiscard]] std::string HexDumpArray2(const Variant& values);
/// "0A,FF"
[[nodiscard]] std::string HexDumpArray3(const Variant& values);
/// " 0A"
[[nodiscard]] std::string Hex2(std::uint8_t value);
/// " 0x0A"
[[nodiscard]] std::string Hex3(std::uint8_t value);
/// ",0A"
[[nodiscard]] std::string Hex4(std::uint8_t value);

// --- Items and SML -----------------------------------------------------------------------------

/// Deep copy of a subtree into an existing item.
void CreateDuplicateItem(const SECSItemPtr& target, const SECSItemPtr& source);
/// 2 x level blanks.
[[nodiscard]] std::string GetSMLIndent(std::int32_t level);

}  // namespace hexmire::ModGeneral
