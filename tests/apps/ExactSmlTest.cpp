#include "ExactSml.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace hexmire::program {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// Random bodies as the encoder writes them: shortest lengths, Booleans 00 and FF, any other bits.
class BodyMaker {
public:
    explicit BodyMaker(std::uint32_t seed) : random_(seed) {}

    Bytes Body() {
        Bytes body;
        Item(body, 0);
        return body;
    }

private:
    struct Kind {
        std::uint8_t Code;
        std::uint32_t Width;
    };

    std::uint32_t Below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(random_() % limit);
    }

    static void Head(Bytes& body, unsigned code, std::uint32_t length) {
        const unsigned lengthBytes = length > 0xFFFF ? 3 : length > 0xFF ? 2 : 1;
        body.push_back(static_cast<std::uint8_t>(code << 2U | lengthBytes));
        for (unsigned left = lengthBytes; left-- > 0;)
            body.push_back(static_cast<std::uint8_t>(length >> (8U * left)));
    }

    void Item(Bytes& body, int level) {
        static constexpr Kind kKinds[] = {{8, 1},
                                          {9, 1},
                                          {16, 1},
                                          {24, 8},
                                          {25, 1},
                                          {26, 2},
                                          {28, 4},
                                          {32, 8},
                                          {36, 4},
                                          {40, 8},
                                          {41, 1},
                                          {42, 2},
                                          {44, 4}};
        if (level < 5 && Below(3) == 0) {
            const std::uint32_t count = Below(5);
            Head(body, 0, count);
            for (std::uint32_t child = 0; child < count; ++child)
                Item(body, level + 1);
            return;
        }
        const Kind kind = kKinds[Below(13)];
        const std::uint32_t count = Below(20) == 0 ? 60 + Below(400) : Below(9);
        Head(body, kind.Code, count * kind.Width);
        for (std::uint32_t byte = 0; byte < count * kind.Width; ++byte)
            body.push_back(Value(kind.Code));
    }

    std::uint8_t Value(std::uint8_t code) {
        static constexpr char kHard[] = "'\"<>.\r\n \\*/0xA";
        if (code == 9) return Below(2) == 0 ? 0x00 : 0xFF;
        if (code == 16 && Below(2) == 0) return static_cast<std::uint8_t>(kHard[Below(14)]);
        if (Below(4) == 0) return 0x7F;
        if (Below(4) == 0) return Below(2) == 0 ? 0x80 : 0xFF;
        return Below(4) == 0 ? 0 : static_cast<std::uint8_t>(Below(256));
    }

    std::mt19937 random_;
};

/// The bytes that an SML text encodes to; a failure of the test when it does not read.
Bytes Encoded(const std::string& sml) {
    const ParsedSml parsed = ParseSml(sml);
    EXPECT_EQ(parsed.Error, "") << parsed.Line << ":" << parsed.Column << "\n" << sml;
    return parsed.Message == nullptr ? Bytes() : EncodeBody(*parsed.Message);
}

TEST(ExactSml, EveryBodyComesBackByteForByte) {
    BodyMaker make(20240611);
    for (int round = 0; round < 3000; ++round) {
        const Bytes body = make.Body();
        const DecodedBody decoded = DecodeBody(body);
        ASSERT_TRUE(decoded.Ok);
        const std::string sml = ExactSml(*decoded.Message, round % 2 == 0);
        ASSERT_EQ(Encoded(sml), body) << sml;
        ASSERT_EQ(ParseSml(sml).ReplyExpected, round % 2 == 0);
    }
}

TEST(ExactSml, ItNeedsNoParticularLineEnds) {
    BodyMaker make(5);
    for (int round = 0; round < 300; ++round) {
        const Bytes body = make.Body();
        std::string sml = ExactSml(*DecodeBody(body).Message, false);
        for (std::size_t end = sml.find('\n'); end != std::string::npos; end = sml.find('\n', end))
            sml.replace(end, 1, "\r\n\t"), end += 2;
        ASSERT_EQ(Encoded(sml), body) << sml;
        std::replace_if(
            sml.begin(), sml.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        ASSERT_EQ(Encoded(sml), body) << sml;
    }
}

TEST(ExactSml, EveryByteOfATextComesBack) {
    for (int first = 0; first < 256; ++first) {
        for (const int second : {0, 0x0A, 0x0D, 0x20, 0x22, 0x27, 0x3E, 0x41, 0x7F, 0x80, 0xFF}) {
            const Bytes body{0x41,
                             3,
                             static_cast<std::uint8_t>(first),
                             static_cast<std::uint8_t>(second),
                             static_cast<std::uint8_t>(first)};
            ASSERT_EQ(Encoded(ExactSml(*DecodeBody(body).Message, false)), body);
        }
    }
}

TEST(ExactSml, NamesAndDescriptionsAreComments) {
    const SECSMessagePtr message = New<SECSMessage>();
    message->Stream(6);
    message->Func(11);
    const SECSItemPtr list = message->Root()->AddNew(1);
    list->Format(FormatList);
    list->Description("any number\r\nof \"parts\" > .");
    const SECSItemPtr any = list->AddNew(1);
    any->Name("SV");
    const SECSItemPtr text = list->AddNew(2);
    text->Format(FormatVar);
    text->Value(12);
    text->Name("X");
    text->Description("it's");
    const std::string sml = ExactSml(*message, true, SmlNotes::Names);
    EXPECT_EQ(sml,
              "S6F11 W\n"
              "<L  // any number  of \"parts\" > .\n"
              "  <V>  // SV\n"
              "  <A \"12\">  // X: it's\n"
              ">\n"
              ".\n");
    EXPECT_EQ(Encoded(sml), (Bytes{1, 2, 0x41, 0, 0x41, 2, '1', '2'}));
}

TEST(ExactSml, AMessageWithoutBodyIsItsHeader) {
    EXPECT_EQ(ExactSml(*DecodeBody({}).Message, true), "S0F1 W\n.\n");
}

TEST(ExactSml, DeepListsAreIndentedOnlySoFar) {
    Bytes body;
    for (int level = 0; level < 20'000; ++level)
        body.insert(body.end(), {1, 1});
    body.insert(body.end(), {1, 0});
    const std::string sml = ExactSml(*DecodeBody(body).Message, false);
    EXPECT_LT(sml.size(), 20'000U * 2 * 100);
    EXPECT_EQ(Encoded(sml), body);
}

}  // namespace
}  // namespace hexmire::program
