#include "../fakes/Golden.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <bit>
#include <random>
#include <string>
#include <vector>

// What holds for any tree and for any bytes. The seeds are fixed, so a failure can be repeated.

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;

/// Makes trees and values at random; every value converts to its format.
class Generator {
public:
    explicit Generator(std::uint32_t seed) : engine_(seed) {}

    std::uint32_t Below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(engine_() % limit);
    }
    std::uint64_t Bits() { return engine_(); }

    /// Fills a list with up to six items; lists inside get rarer with the depth.
    void Fill(const SECSItemPtr& list, int depth) {
        for (std::uint32_t left = Below(7); left > 0; --left) {
            if (Below(static_cast<std::uint32_t>(depth) + 2) == 0) {
                Fill(AddItem(list, FormatList), depth + 1);
            } else {
                AddValue(list);
            }
        }
    }

private:
    template <class T, class Make>
    Variant Some(Make make) {
        const std::uint32_t count = Below(12) == 0 ? 200 + Below(200) : Below(5);
        if (count == 0) return Below(2) == 0 ? Variant() : Variant(std::vector<T>());
        if (count == 1 && Below(2) == 0) return Variant(T(make()));
        std::vector<T> values;
        for (std::uint32_t left = count; left > 0; --left) {
            values.push_back(make());
        }
        return Variant(std::move(values));
    }
    std::string Text() {
        std::string text(Below(20) == 0 ? 300 : Below(12), ' ');
        for (char& character : text) {
            character = static_cast<char>(' ' + Below(95));
        }
        return text;
    }
    Variant Value(std::int32_t format) {
        switch (format) {
            case FormatBinary:
                return Some<std::uint8_t>([&] { return static_cast<std::uint8_t>(Bits()); });
            case FormatBoolean:
                return Some<bool>([&] { return Below(2) == 0; });
            case FormatAscii:
                return Text();
            case FormatF4:
                return Some<float>(
                    [&] { return std::bit_cast<float>(static_cast<std::uint32_t>(Bits())); });
            case FormatF8:
                return Some<double>([&] { return std::bit_cast<double>(Bits()); });
            case FormatI8:
                return Some<Decimal>(
                    [&] { return Decimal::FromInt64(static_cast<std::int64_t>(Bits())); });
            case FormatU8:
                return Some<Decimal>([&] { return Decimal::FromUInt64(Bits()); });
            case FormatU4:
                return Some<Decimal>([&] { return Decimal::FromUInt64(Bits() & 0xFFFFFFFFU); });
            case FormatVar:
                return Below(2) == 0 ? Variant(static_cast<std::int32_t>(Bits())) : Text();
            default:
                return Some<std::int32_t>([&] { return static_cast<std::int32_t>(Bits()); });
        }
    }
    void AddValue(const SECSItemPtr& list) {
        constexpr std::int32_t kFormats[] = {FormatBinary,
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
        const std::int32_t format = kFormats[Below(14)];
        AddItem(list, format, Value(format));
    }

    std::mt19937_64 engine_;
};

TEST(CodecProperties, AnyTreeSurvivesEncodingAndDecoding) {
    RecordingSite site;
    for (std::uint32_t seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Generator random(seed);
        const SECSMessagePtr message = MessageOf(FormatList);
        random.Fill(Body(message), 0);
        const Bytes8 bytes = EncodeBody(*message);
        const DecodedItem decoded = DecodeItem(bytes);
        ASSERT_TRUE(decoded.Ok);
        ASSERT_EQ(EncodeBody(*decoded.Message), bytes);
        ASSERT_TRUE(SameTree(DecodeItem(bytes).Item, decoded.Item));
        ASSERT_EQ(site.ErrorCount, 0U) << site.Errors.front();
    }
}

/// Random bytes that look like a body often enough: known format bytes in front of short lengths.
/// The length bytes of long lists are left out, for each missing child is one error.
Bytes8 Garbage(Generator& random) {
    constexpr std::uint8_t kHeads[] = {0x01,
                                       0x21,
                                       0x25,
                                       0x41,
                                       0x61,
                                       0x65,
                                       0x69,
                                       0x71,
                                       0x81,
                                       0x91,
                                       0xA1,
                                       0xA5,
                                       0xA9,
                                       0xB1,
                                       0xFD,
                                       0x42,
                                       0xB3,
                                       0x0D};
    Bytes8 bytes;
    for (std::uint32_t left = random.Below(60); left > 0; --left) {
        if (random.Below(2) == 0) {
            bytes.push_back(kHeads[random.Below(18)]);
            bytes.push_back(static_cast<std::uint8_t>(random.Below(10)));
        } else {
            const auto byte = static_cast<std::uint8_t>(random.Bits());
            bytes.push_back(byte == 2 || byte == 3 ? 0x41 : byte);
        }
    }
    for (std::uint8_t& byte : bytes) {
        if (byte == 2 || byte == 3) byte = 4;
    }
    return bytes;
}

TEST(CodecProperties, AnyBytesDecodeToATreeThatEncodesToADecodableBody) {
    RecordingSite site;
    for (std::uint32_t seed = 1; seed <= 4000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Generator random(seed);
        const Bytes8 bytes = Garbage(random);
        const DecodedItem decoded = DecodeItem(bytes);
        const Bytes8 body = EncodeBody(*decoded.Message);
        site.Errors.clear();
        site.ErrorCount = 0;
        const DecodedItem again = DecodeItem(body);
        ASSERT_TRUE(again.Ok);
        ASSERT_EQ(EncodeBody(*again.Message), body);
        ASSERT_EQ(RenderSml(*again.Message, true).substr(0, 8), "S0F1 W\r\n");
        ASSERT_EQ(site.ErrorCount, 0U) << site.Errors.front();
    }
}

TEST(CodecProperties, OneChangedByteNeverHarmsAGoldenBody) {
    RecordingSite site;
    site.KeepTexts = false;
    Generator random(7);
    for (const GoldenVector& vector : LoadGolden(HEXMIRE_SOURCE_DIR "/tests/golden/items.txt")) {
        if (vector.Bytes.size() > 120) continue;
        for (std::size_t place = 0; place < vector.Bytes.size(); ++place) {
            Bytes8 bytes = vector.Bytes;
            bytes[place] = static_cast<std::uint8_t>(random.Bits());
            // Lists of many thousand missing items are told of elsewhere.
            if (bytes[place] == 2 || bytes[place] == 3) continue;
            const DecodedItem decoded = DecodeItem(bytes);
            (void)EncodeBody(*decoded.Message);
            (void)RenderSml(*decoded.Message, false);
        }
    }
}

/// The text of a tree after the rules, made a second way.
std::string ExpectedText(const SECSItemPtr& item, std::size_t level) {
    const std::string indent(level * 2, ' ');
    if (item->Format() == FormatList) {
        if (item->ItemCount() == 0) return indent + "< L " + indent + " >\r\n";
        std::string text = indent + "< L \r\n";
        for (const SECSItemPtr& child : *item) {
            text += ExpectedText(child, level + 1);
        }
        return text + indent + " >\r\n";
    }
    const Variant value = item->Value();
    std::string text = indent + "< ";
    if (item->Format() == FormatAscii) {
        text += value.IsEmpty() ? "A" : "A '" + std::string(value.Text()) + "'";
    } else {
        text += "I4";
        if (value.Kind() == VariantKind::Long) text += " " + std::to_string(value.AsLong());
        for (const std::int32_t element : value.View<std::int32_t>()) {
            text += " " + std::to_string(element);
        }
    }
    return text + " >\r\n";
}

/// A tree of lists, texts and I4 items only.
void FillShown(Generator& random, const SECSItemPtr& list, std::uint32_t depth) {
    for (std::uint32_t left = random.Below(6); left > 0; --left) {
        const std::uint32_t choice = random.Below(depth + 5);
        const auto number = static_cast<std::int32_t>(random.Bits());
        if (choice < 2) {
            FillShown(random, AddItem(list, FormatList), depth + 1);
        } else if (choice == 2) {
            AddItem(list, FormatAscii, std::to_string(number));
        } else if (choice == 3) {
            AddItem(list, FormatI4, std::vector<std::int32_t>(random.Below(4), number));
        } else {
            AddItem(list, FormatI4, choice == 4 ? Variant() : Variant(number));
        }
    }
}

TEST(CodecProperties, TheTextOfAnyTreeHasThePromisedLines) {
    RecordingSite site;
    for (std::uint32_t seed = 1; seed <= 500; ++seed) {
        Generator random(seed);
        const SECSMessagePtr message = MessageOf(FormatList);
        FillShown(random, Body(message), 0);
        ASSERT_EQ(RenderSml(*message, true), "S0F1 W\r\n" + ExpectedText(Body(message), 0) + ".");
    }
    EXPECT_EQ(site.ErrorCount, 0U);
}

TEST(CodecProperties, EveryItemTellsTheLengthThatItsHeaderHolds) {
    for (std::uint32_t seed = 1; seed <= 200; ++seed) {
        Generator random(seed);
        const SECSMessagePtr message = MessageOf(FormatList);
        random.Fill(Body(message), 0);
        const Bytes8 bytes = EncodeBody(*message);
        std::size_t position = 0;
        std::vector<SECSItemPtr> open{Body(message)};
        while (!open.empty()) {
            const SECSItemPtr item = open.back();
            open.pop_back();
            ASSERT_LT(position, bytes.size());
            const unsigned lengthBytes = bytes[position++] % 4U;
            ASSERT_EQ(item->NLB(), static_cast<std::int32_t>(lengthBytes));
            std::int32_t length = 0;
            for (unsigned left = lengthBytes; left > 0; --left) {
                length = length * 256 + bytes[position++];
            }
            ASSERT_EQ(item->Length(), length);
            if (item->Format() != FormatList) position += static_cast<std::size_t>(length);
            for (std::int32_t child = item->ItemCount(); child > 0; --child) {
                open.push_back(item->Item(child));
            }
        }
        ASSERT_EQ(position, bytes.size());
    }
}

}  // namespace
}  // namespace hexmire
