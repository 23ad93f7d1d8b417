// A value text of a dictionary file: any text gives a value, or none, that can be sent. The first
// byte chooses the item's format.
#include <hexmire/core/ModGeneral.h>
#include <hexmire/sml.h>
#include <hexmire/support/PassKey.h>

#include "Require.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

using namespace hexmire;

constexpr std::array kFormats{FormatList,
                              FormatBinary,
                              FormatBoolean,
                              FormatAscii,
                              FormatI8,
                              FormatI1,
                              FormatI2,
                              FormatI4,
                              FormatF8,
                              FormatF4,
                              FormatU8,
                              FormatU1,
                              FormatU2,
                              FormatU4,
                              FormatVar};

void Send(const SECSMessagePtr& message, const Variant& value) {
    message->Root()->Item(1)->Value(value);
    const auto decoded = DecodeBody(EncodeBody(*message));
    static_cast<void>(RenderSml(*message, false));
    fuzz::Require(decoded.Ok, "a value of a dictionary file encodes to a body that decodes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);

    const SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr item = message->Root()->AddNew(1);
    item->Format(kFormats[data[0] % kFormats.size()]);

    const Variant array = ModGeneral::lAssignArrayValue(*item, text);
    if (array.IsArray()) {
        fuzz::Require(array.ElementCount() <= text.size(), "every element takes a character");
    }
    Send(message, array);
    Send(message, ModGeneral::lAssignValue(*item, text));
    fuzz::Require(ModGeneral::ItemFormatToText(ModGeneral::TextToItemFormat(text)).size() <= 4,
                  "every format has a short name");
    return 0;
}
