#pragma once

#include <hexmire/core/SECSItem.h>
#include <hexmire/core/SECSMessage.h>
#include <hexmire/sml.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// Short forms for tests of bodies: build one, encode it, read bytes as text.
namespace hexmire::fakes {

/// A new last child of a list.
inline SECSItemPtr AddItem(const SECSItemPtr& list, std::int32_t format, Variant value = {}) {
    SECSItemPtr item = list->AddNew(list->ItemCount() + 1);
    item->Format(format);
    item->Value(std::move(value));
    return item;
}

/// A message whose body is one item.
inline SECSMessagePtr MessageOf(std::int32_t format, Variant value = {}) {
    SECSMessagePtr message = New<SECSMessage>();
    AddItem(message->Root(), format, std::move(value));
    return message;
}

/// The body of a message that has one.
inline SECSItemPtr Body(const SECSMessagePtr& message) { return *message->Root()->begin(); }

/// "01 0A FF"
inline std::string HexOf(std::span<const std::uint8_t> bytes) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 3);
    for (const std::uint8_t byte : bytes) {
        if (!text.empty()) text.push_back(' ');
        text.push_back(kDigits[byte / 16U]);
        text.push_back(kDigits[byte % 16U]);
    }
    return text;
}

/// The body bytes of a message as text.
inline std::string EncodedHex(const SECSMessagePtr& message) { return HexOf(EncodeBody(*message)); }

/// The body bytes of a message whose body is one item.
inline std::string EncodedHex(std::int32_t format, Variant value = {}) {
    return EncodedHex(MessageOf(format, std::move(value)));
}

/// The body bytes of a list of two: the item, and U1 7, which shows that the siblings follow.
inline std::string EncodedBeforeSibling(std::int32_t format, Variant value) {
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), format, std::move(value));
    AddItem(Body(message), FormatU1, 7);
    return EncodedHex(message);
}

/// Decodes from a buffer of exactly the size of the bytes, so that a checker sees every read behind
/// them.
inline DecodedBody DecodeExact(std::span<const std::uint8_t> bytes) {
    const std::unique_ptr<std::uint8_t[]> buffer(new std::uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), buffer.get());
    return DecodeBody({buffer.get(), bytes.size()});
}

/// The body item of decoded bytes, in a message that is kept alive with it; none for an empty tree.
struct DecodedItem {
    SECSMessagePtr Message;
    SECSItemPtr Item;
    bool Ok = false;
};
inline DecodedItem DecodeItem(std::span<const std::uint8_t> bytes) {
    const DecodedBody decoded = DecodeExact(bytes);
    const SECSItemPtr root = decoded.Message->Root();
    return {decoded.Message, root->ItemCount() == 0 ? nullptr : *root->begin(), decoded.Ok};
}

/// An array value.
template <class T>
Variant ArrayOf(std::vector<T> elements, std::int32_t lowerBound = 0) {
    return Variant::Array(std::move(elements), lowerBound);
}

}  // namespace hexmire::fakes
