#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

// Bodies that are decoded from a value share its memory.

namespace hexmire {
namespace {

using namespace fakes;

using ByteList = std::vector<std::uint8_t>;

/// L2 { U1 7, A of that many characters }
ByteList BodyWithText(std::size_t length) {
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatU1, 7);
    AddItem(Body(message), FormatAscii, std::string(length, 'x'));
    return EncodeBody(*message);
}

TEST(DecodeShared, GivesTheTreeThatDecodingACopyGives) {
    for (const std::size_t length : {0U, 1U, 22U, 23U, 5000U}) {
        const ByteList bytes = BodyWithText(length);
        const DecodedBody shared = DecodeSharedBody(bytes);
        const DecodedBody copied = DecodeBody(bytes);
        EXPECT_TRUE(shared.Ok);
        EXPECT_EQ(RenderSml(*shared.Message, false), RenderSml(*copied.Message, false));
        EXPECT_EQ(shared.Message->Raw(), copied.Message->Raw());
        EXPECT_EQ(shared.Message->RawHex(), copied.Message->RawHex());
        EXPECT_EQ(shared.Message->Length(), copied.Message->Length());
    }
}

TEST(DecodeShared, LongValuesAndRawLieInTheBody) {
    const Variant body = BodyWithText(5000);
    const auto bytes = body.View<std::uint8_t>();
    const DecodedBody decoded = DecodeSharedBody(body);
    EXPECT_EQ(decoded.Message->Raw().View<std::uint8_t>().data(), bytes.data());
    const Variant text = Body(decoded.Message)->Item(2)->Value();
    EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(text.Text().data()),
              &bytes[bytes.size() - 5000]);
    const Variant raw = Body(decoded.Message)->Item(2)->Raw();
    EXPECT_EQ(raw.View<std::uint8_t>().data(), &bytes[bytes.size() - 5000]);
}

TEST(DecodeShared, ValuesOutliveTheBodyAndTheMessage) {
    Variant text;
    {
        const DecodedBody decoded = DecodeSharedBody(Variant(BodyWithText(5000)));
        text = Body(decoded.Message)->Item(2)->Value();
    }
    EXPECT_EQ(text.Text(), std::string(5000, 'x'));
}

TEST(DecodeShared, AnEmptyBodyIsAnEmptyRoot) {
    const DecodedBody decoded = DecodeSharedBody(Variant::Bytes({}));
    EXPECT_TRUE(decoded.Ok);
    EXPECT_EQ(decoded.Message->Root()->ItemCount(), 0);
    EXPECT_TRUE(decoded.Message->Raw().IsEmpty());
}

TEST(DecodeShared, OnlyAnArrayOfByteIsABody) {
    RecordingSite site;
    for (const Variant& value : {Variant(),
                                 Variant("01 00"),
                                 Variant(std::uint8_t{1}),
                                 Variant(std::vector<std::int32_t>{1, 0})}) {
        const DecodedBody decoded = DecodeSharedBody(value);
        EXPECT_FALSE(decoded.Ok);
        ASSERT_NE(decoded.Message, nullptr);
        EXPECT_EQ(decoded.Message->Root()->ItemCount(), 0);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(DecodeShared, AnUnknownFormatIsToldAsBefore) {
    const ByteList bytes{0xFC | 0x01, 0x01, 0x41, 0x7D, 0x01, 0x00};
    EXPECT_EQ(DecodeSharedBody(bytes).Ok, DecodeBody(bytes).Ok);
    const ByteList unknown{0x7D, 0x01, 0x00};
    RecordingSite site;
    EXPECT_FALSE(DecodeBody(unknown).Ok);
    const std::vector<std::string> errors = site.Errors;
    site.Errors.clear();
    EXPECT_FALSE(DecodeSharedBody(unknown).Ok);
    EXPECT_EQ(site.Errors, errors);
}

}  // namespace
}  // namespace hexmire
