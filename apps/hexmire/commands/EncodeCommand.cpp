#include "commands/EncodeCommand.h"

#include <hexmire/hexmire.h>
#include <hexmire/support/HexBytes.h>

#include "CommandLine.h"
#include "Failure.h"
#include "Frames.h"
#include "Input.h"
#include "SmlInput.h"

#include <iostream>

namespace hexmire::program {

namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<ParsedSml> Parse(const EncodeOptions& options) {
    const Input input = ReadInput(options.Words);
    bool isItem = false;
    std::vector<ParsedSml> messages =
        ParseInput(input, options.Latin1 ? TextEncoding::Latin1 : TextEncoding::Utf8, isItem);
    if (isItem && (options.Header || options.Length))
        throw UsageError(PlaceIn(input, 1, 1) +
                         "expected a stream and function such as S1F1 to make a header of, found "
                         "an item");
    return messages;
}

/// Headers of messages one behind the other: every primary has system bytes of its own, a reply
/// those of the primary right in front of it.
class Headers {
public:
    explicit Headers(const EncodeOptions& options)
        : deviceID_(options.DeviceID), next_(options.SystemBytes) {}

    WireHeader For(const ParsedSml& parsed) {
        const std::int32_t stream = parsed.Message->Stream();
        const std::int32_t function = parsed.Message->Func();
        if (stream != stream_ || function != function_ + 1 || function % 2 != 0) last_ = next_++;
        stream_ = stream;
        function_ = function;
        return {.DeviceID = deviceID_,
                .ReplyExpected = parsed.ReplyExpected,
                .Stream = static_cast<std::uint8_t>(stream),
                .Function = static_cast<std::uint8_t>(function),
                .SystemBytes = last_};
    }

private:
    std::uint16_t deviceID_;
    std::uint32_t next_;
    std::uint32_t last_ = 0;
    std::int32_t stream_ = -1;
    std::int32_t function_ = 0;
};

Bytes WholeMessage(const WireHeader& header, const Bytes& body, bool withLength) {
    Bytes bytes = header.Bytes();
    bytes.insert(bytes.end(), body.begin(), body.end());
    if (!withLength) return bytes;
    const auto length = static_cast<std::uint32_t>(bytes.size());
    Bytes framed;
    framed.reserve(bytes.size() + 4);
    for (const unsigned shift : {24U, 16U, 8U, 0U})
        framed.push_back(static_cast<std::uint8_t>((length >> shift) & 0xFFU));
    framed.insert(framed.end(), bytes.begin(), bytes.end());
    return framed;
}

void Write(const Bytes& bytes, bool binary) {
    if (binary) {
        std::cout.write(reinterpret_cast<const char*>(bytes.data()),
                        static_cast<std::streamsize>(bytes.size()));
        return;
    }
    std::string hex = HexText(bytes);
    if (!hex.empty()) hex.pop_back();  // One blank stands behind each byte.
    std::cout << hex << '\n';
}

}  // namespace

void AddEncodeOptions(Command command, EncodeOptions& options) {
    command
        .Option("input",
                options.Words,
                "A file of SML messages or the SML itself, a body alone being an item such "
                "as '<U4 1>'; nothing or '-': the standard input")
        .TypeName("FILE|SML");
    command.Flag("--binary", options.Binary, "Write the bytes themselves, not hex");
    command.Flag("--header", options.Header, "Put the 10-byte header in front of the body");
    command.Flag("--length",
                 options.Length,
                 "Put the header and the 4-byte length of HSMS in front of the body");
    command.Option("--device-id", options.DeviceID, "Device ID of headers, 0 to 32767, default 0")
        .Range(0, 32'767)
        .TypeName("N");
    command
        .Option("--system-bytes",
                options.SystemBytes,
                "System bytes of the first header, default 1; every further primary takes the "
                "next, a reply those of the primary in front of it")
        .TypeName("N");
    command.Flag("--latin1", options.Latin1, "The SML is in ISO 8859-1, not in UTF-8");
}

void CheckItemLengths(const SECSMessage& message) {
    constexpr std::int32_t kLongest = 0xFFFFFF;
    std::vector<SECSItemPtr> open{message.Root()};
    while (!open.empty()) {
        const SECSItemPtr list = open.back();
        open.pop_back();
        for (const SECSItemPtr& item : *list) {
            if (item->Length() > kLongest)
                throw UsageError("an item of length " + std::to_string(item->Length()) +
                                 ": the longest is 16777215");
            if (item->ItemCount() > 0) open.push_back(item);
        }
    }
}

void RunEncode(const EncodeOptions& options) {
    const std::vector<ParsedSml> messages = Parse(options);
    const bool hasHeader = options.Header || options.Length;
    if (options.Binary && !options.Length && messages.size() > 1)
        throw UsageError(
            "several messages in binary need --length, or nobody can tell where one "
            "ends");
    Headers headers(options);
    std::vector<Bytes> written;
    written.reserve(messages.size());
    for (const ParsedSml& parsed : messages) {
        Bytes body = EncodeBody(*parsed.Message);
        CheckItemLengths(*parsed.Message);
        written.push_back(hasHeader ? WholeMessage(headers.For(parsed), body, options.Length)
                                    : std::move(body));
    }
    for (const Bytes& bytes : written)
        Write(bytes, options.Binary);
    std::cout << std::flush;
    if (!std::cout) throw Failure("cannot write to the standard output");
}

}  // namespace hexmire::program
