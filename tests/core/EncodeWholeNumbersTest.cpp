#include <hexmire/sml.h>

#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include "ItemsOfFormat.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

// Arrays of wide whole numbers lie as bytes; nothing that is sent, logged or read shows it.

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;

template <class T>
std::vector<Decimal> DecimalsOf(const std::vector<T>& numbers) {
    std::vector<Decimal> decimals;
    decimals.reserve(numbers.size());
    for (const T number : numbers)
        decimals.push_back(Variant(number).AsDecimal());
    return decimals;
}

struct Outcome {
    Bytes8 Body;
    Variant Raw;
    std::string Sml;
    std::vector<std::string> Errors;
};

Outcome Encoded(std::int32_t format, const Variant& value) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(format, value);
    Outcome outcome{EncodeBody(*message), {}, {}, {}};
    outcome.Raw = fakes::Body(message)->Raw();
    outcome.Sml = RenderSml(*message, false);
    outcome.Errors = site.Errors;
    return outcome;
}

template <class T>
void ExpectAsDecimals(const std::vector<T>& numbers) {
    for (const std::int32_t format : testing_items::kFormats) {
        if (format == FormatList) continue;
        const Outcome packed = Encoded(format, numbers);
        const Outcome one = Encoded(format, DecimalsOf(numbers));
        EXPECT_EQ(packed.Body, one.Body) << format;
        EXPECT_EQ(packed.Raw, one.Raw) << format;
        EXPECT_EQ(packed.Sml, one.Sml) << format;
        EXPECT_EQ(packed.Errors, one.Errors) << format;
    }
}

TEST(EncodeWholeNumbers, GoOutAsTheirDecimalsWouldInEveryFormat) {
    ExpectAsDecimals<std::uint32_t>({0, 1, 127, 0xFFFFFFFFU, 0x01020304U});
    ExpectAsDecimals<std::uint32_t>({});
    ExpectAsDecimals<std::uint32_t>({5});
    ExpectAsDecimals<std::int64_t>({0, -1, std::numeric_limits<std::int64_t>::min(), 9});
    ExpectAsDecimals<std::uint64_t>({0, std::numeric_limits<std::uint64_t>::max(), 9});
}

TEST(EncodeWholeNumbers, OfTheFormatAreTheBytes) {
    EXPECT_EQ(Encoded(FormatU4, std::vector<std::uint32_t>{1, 0xFFFFFFFFU}).Body,
              (Bytes8{0xB1, 8, 0, 0, 0, 1, 0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(Encoded(FormatI8, std::vector<std::int64_t>{-2}).Body,
              (Bytes8{0x61, 8, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}));
}

TEST(EncodeWholeNumbers, ComeBackFromALongBody) {
    RecordingSite site;
    for (const std::int32_t format : {FormatU4, FormatU8, FormatI8}) {
        std::vector<std::uint64_t> numbers(300);
        for (std::size_t index = 0; index < numbers.size(); ++index)
            numbers[index] = index * 1'000'003;
        const Bytes8 body = Encoded(format, numbers).Body;
        DecodedBody decoded = DecodeBody(body);
        const SECSItemPtr item = fakes::Body(decoded.Message);
        decoded.Message.reset();  // The item's value outlives its message.
        EXPECT_EQ(item->Value().Kind(), VariantKind::DecimalArray);
        EXPECT_EQ(item->Value().Numbers<std::uint64_t>(), numbers);
        EXPECT_EQ(item->Value(), Variant(DecimalsOf(numbers)));
        EXPECT_EQ(item->Raw(), Variant(Bytes8(body.begin() + 3, body.end())));
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodedBody, IsTheBodyWithoutACopy) {
    const SECSMessagePtr message = MessageOf(FormatAscii, std::string(100, 'x'));
    const Variant body = EncodedBody(*message);
    EXPECT_EQ(body, Variant(EncodeBody(*message)));
    const Variant again = EncodedBody(*message);
    EXPECT_EQ(again.View<std::uint8_t>().data(), message->Raw().View<std::uint8_t>().data());
    EXPECT_EQ(EncodedBody(*New<SECSMessage>()), Variant::Bytes({}));
}

}  // namespace
}  // namespace hexmire
