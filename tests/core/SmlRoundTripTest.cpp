#include "../fakes/Golden.h"
#include "SmlParsing.h"

#include <algorithm>
#include <array>
#include <limits>
#include <random>

// What is rendered is read back: the golden items, random trees, every beginning of a text, and
// texts that were damaged.

namespace hexmire {
namespace {

using namespace fakes;

/// Random values in the kinds that decoding gives, the ends of the ranges among them.
class TreeMaker {
public:
    explicit TreeMaker(unsigned seed) : random_(seed) {}

    SECSMessagePtr Message() {
        SECSMessagePtr message = New<SECSMessage>();
        message->Stream(Below(128));
        message->Func(Below(256));
        if (Below(10) > 0) Fill(message->Root(), 1, 0);
        return message;
    }
    int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }

private:
    static constexpr std::array kFormats{FormatList,
                                         FormatList,
                                         FormatBinary,
                                         FormatBoolean,
                                         FormatAscii,
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

    void Fill(const SECSItemPtr& list, int count, int depth) {
        for (int index = 0; index < count; ++index) {
            const std::int32_t format =
                kFormats.at(static_cast<std::size_t>(Below(static_cast<int>(kFormats.size()))));
            const SECSItemPtr item = AddItem(list, format);
            if (format != FormatList) {
                item->Value(Value(format, Below(4)));
            } else if (depth < 5) {
                Fill(item, Below(5), depth + 1);
            }
        }
    }

    template <class T, class Make>
    Variant Elements(int count, Make make) {
        if (count == 0) return {};
        if (count == 1) return T{make()};
        std::vector<T> elements;
        for (int index = 0; index < count; ++index)
            elements.push_back(make());
        return elements;
    }

    Variant Value(std::int32_t format, int count) {
        switch (format) {
            case FormatAscii:
            case FormatVar:
                return Text(count * 3);
            case FormatBoolean:
                return Elements<bool>(count, [&] { return Below(2) == 1; });
            case FormatBinary:
                return Elements<std::uint8_t>(
                    count, [&] { return static_cast<std::uint8_t>(Below(256)); });
            case FormatI1:
                return Longs(count, -128, 127);
            case FormatI2:
                return Longs(count, -32768, 32767);
            case FormatI4:
                return Longs(count,
                             std::numeric_limits<std::int32_t>::min(),
                             std::numeric_limits<std::int32_t>::max());
            case FormatU1:
                return Longs(count, 0, 255);
            case FormatU2:
                return Longs(count, 0, 65535);
            case FormatU4:
                return Elements<Decimal>(count, [&] {
                    return Decimal::FromUInt64(
                        Pick<std::uint64_t>(0, std::numeric_limits<std::uint32_t>::max()));
                });
            case FormatU8:
                return Elements<Decimal>(count, [&] {
                    return Decimal::FromUInt64(
                        Pick<std::uint64_t>(0, std::numeric_limits<std::uint64_t>::max()));
                });
            case FormatI8:
                return Elements<Decimal>(count, [&] {
                    return Decimal::FromInt64(
                        Pick<std::int64_t>(std::numeric_limits<std::int64_t>::min(),
                                           std::numeric_limits<std::int64_t>::max()));
                });
            case FormatF4:
                return Elements<float>(count, [&] { return Float<float, std::uint32_t>(); });
            default:
                return Elements<double>(count, [&] { return Float<double, std::uint64_t>(); });
        }
    }

    template <class T>
    T Pick(T least, T most) {
        const int choice = Below(4);
        if (choice == 0) return least;
        if (choice == 1) return most;
        return std::uniform_int_distribution<T>(least, most)(random_);
    }
    Variant Longs(int count, std::int32_t least, std::int32_t most) {
        return Elements<std::int32_t>(count, [&] { return Pick(least, most); });
    }

    /// Any bits, but for those whose text says less than they do: minus zero and other NaNs.
    template <class T, class Bits>
    T Float() {
        const Bits bits = Pick<Bits>(0, std::numeric_limits<Bits>::max());
        const T value = std::bit_cast<T>(bits);
        if (value == 0) return T{0};
        return value == value ? value : std::numeric_limits<T>::quiet_NaN();
    }

    std::string Text(int pieces) {
        static const std::array<std::string, 13> kPieces{
            "'", "\"", " ", ">", "<", "\r\n", ".", "A", "0x41", "\n", "/*", "  ", "*"};
        std::string text;
        for (int piece = 0; piece < pieces; ++piece) {
            if (Below(4) == 0) {
                text.push_back(static_cast<char>(Below(256)));
            } else {
                text += kPieces.at(static_cast<std::size_t>(Below(13)));
            }
        }
        return text;
    }

    std::mt19937 random_;
};

/// The renderer does not mark the ends of these; the parser says so.
bool IsAmbiguous(const ParsedSml& parsed) {
    return parsed.Error.find("one way") != std::string::npos;
}

TEST(SmlRoundTrip, GoldenItems) {
    for (const char* table : {"items.txt", "accepted.txt"}) {
        const auto vectors = LoadGolden(std::string(HEXMIRE_SOURCE_DIR) + "/tests/golden/" + table);
        std::size_t read = 0;
        for (const GoldenVector& vector : vectors) {
            const SECSMessagePtr message = MessageFromNotation(vector.Notation);
            const std::string sml = RenderSml(*message, false);
            const ParsedSml parsed = ParseExact(sml);
            ASSERT_EQ(parsed.Error, "") << vector.Name << "\n" << sml.substr(0, 500);
            // What the text cannot show, such as the sign of a zero, is not asked for.
            EXPECT_EQ(RenderSml(*parsed.Message, false), sml) << vector.Name;
            if (SameTree(Body(message), Body(parsed.Message))) ++read;
        }
        EXPECT_GE(read * 10, vectors.size() * 8) << table;
    }
}

TEST(SmlRoundTrip, RandomTrees) {
    TreeMaker make(20240305);
    int ambiguous = 0;
    constexpr int kTrees = 3000;
    for (int tree = 0; tree < kTrees; ++tree) {
        const SECSMessagePtr message = make.Message();
        const bool replyExpected = make.Below(2) == 1;
        const std::string sml = RenderSml(*message, replyExpected);
        const ParsedSml parsed = ParseSml(sml);
        if (IsAmbiguous(parsed)) {
            ++ambiguous;
            continue;
        }
        ASSERT_EQ(parsed.Error, "") << parsed.Line << ":" << parsed.Column << "\n" << sml;
        EXPECT_EQ(parsed.ReplyExpected, replyExpected);
        EXPECT_EQ(parsed.Message->Stream(), message->Stream());
        EXPECT_EQ(parsed.Message->Func(), message->Func());
        ASSERT_EQ(EncodedHex(parsed.Message), EncodedHex(message)) << sml;
    }
    EXPECT_LT(ambiguous, kTrees / 20);
}

TEST(SmlRoundTrip, ValuesAreThoseThatDecodingGives) {
    TreeMaker make(7);
    for (int tree = 0; tree < 1000; ++tree) {
        const SECSMessagePtr message = make.Message();
        if (message->Root()->ItemCount() == 0) continue;
        const ParsedSml parsed = ParseSml(RenderSml(*message, false));
        if (IsAmbiguous(parsed)) continue;
        const DecodedItem decoded = DecodeItem(EncodeBody(*message));
        // An item of any format travels as text.
        const DecodedItem again = DecodeItem(EncodeBody(*parsed.Message));
        ASSERT_TRUE(SameTree(again.Item, decoded.Item)) << RenderSml(*message, false);
    }
}

TEST(SmlRoundTrip, SeveralMessagesInOneText) {
    TreeMaker make(42);
    for (int file = 0; file < 200; ++file) {
        std::string sml;
        std::vector<std::string> bodies;
        for (int index = 0; index < 5; ++index) {
            const SECSMessagePtr message = make.Message();
            const std::string text = RenderSml(*message, false);
            if (!ParseSml(text).Error.empty()) continue;
            sml += text + "\r\n";
            bodies.push_back(EncodedHex(message));
        }
        const auto messages = ParseSmlMessages(sml);
        ASSERT_EQ(messages.size(), bodies.size()) << sml;
        for (std::size_t index = 0; index < bodies.size(); ++index) {
            ASSERT_EQ(messages[index].Error, "") << sml;
            EXPECT_EQ(EncodedHex(messages[index].Message), bodies[index]);
        }
    }
}

TEST(SmlRoundTrip, EveryBeginningOfAGoodTextIsIncomplete) {
    TreeMaker make(99);
    for (int tree = 0; tree < 150; ++tree) {
        const std::string sml = RenderSml(*make.Message(), true);
        if (!ParseSml(sml).Error.empty()) continue;
        for (std::size_t size = 0; size < sml.size(); ++size) {
            const ParsedSml parsed = ParseExact(std::string_view(sml).substr(0, size));
            ASSERT_EQ(parsed.Message, nullptr) << sml.substr(0, size);
            ASSERT_TRUE(parsed.Error.starts_with("expected ")) << parsed.Error;
            ASSERT_TRUE(parsed.IsIncomplete) << parsed.Error << "\n" << sml.substr(0, size);
            std::size_t start = 0;
            for (std::int32_t line = 1; line < parsed.Line; ++line)
                start = sml.find('\n', start) + 1;
            ASSERT_LE(start + static_cast<std::size_t>(parsed.Column) - 1, size);
        }
    }
}

TEST(SmlRoundTrip, DamagedTextsAreReadOrRefused) {
    TreeMaker make(1);
    static constexpr std::string_view kDamage = "<>'\"[]./*0x1WLAF \r\n";
    int refused = 0;
    for (int tree = 0; tree < 4000; ++tree) {
        std::string sml = RenderSml(*make.Message(), true);
        for (int damage = make.Below(3); damage >= 0 && !sml.empty(); --damage) {
            const auto place = static_cast<std::size_t>(make.Below(static_cast<int>(sml.size())));
            const char mark =
                kDamage[static_cast<std::size_t>(make.Below(static_cast<int>(kDamage.size())))];
            switch (make.Below(3)) {
                case 0:
                    sml.erase(place, 1);
                    break;
                case 1:
                    sml.insert(place, 1, mark);
                    break;
                default:
                    sml[place] = mark;
                    break;
            }
        }
        const ParsedSml parsed = ParseExact(sml);
        ASSERT_EQ(parsed.Message == nullptr, !parsed.Error.empty()) << sml;
        if (parsed.Message == nullptr) {
            ++refused;
            ASSERT_NE(parsed.Error, "out of memory");
        } else {
            static_cast<void>(EncodeBody(*parsed.Message));
        }
    }
    EXPECT_GT(refused, 1000);
}

}  // namespace
}  // namespace hexmire
