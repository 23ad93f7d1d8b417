#include "commands/DecodeCommand.h"

#include <hexmire/hexmire.h>
#include <hexmire/hosting/Utf8.h>
#include <hexmire/support/HexBytes.h>

#include "BodyCheck.h"
#include "CommandLine.h"
#include "ExactSml.h"
#include "Failure.h"
#include "Input.h"
#include "MessageRecord.h"
#include "VisibleText.h"
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <optional>

namespace hexmire::program {

namespace {

using Json = nlohmann::ordered_json;
using Bytes = std::vector<std::uint8_t>;

constexpr std::string_view kLineEnd = "\r\n";

std::string Hex(std::uint8_t byte) { return {HexDigit(byte >> 4U), HexDigit(byte)}; }

std::string HexLine(const Bytes& bytes) {
    std::string hex = HexText(bytes);
    if (!hex.empty()) hex.pop_back();
    return hex;
}

/// LF at the ends of lines, as terminals and files want them.
std::string WithoutReturns(const std::string& sml) {
    std::string text;
    text.reserve(sml.size());
    for (std::size_t i = 0; i < sml.size(); ++i) {
        if (sml.compare(i, kLineEnd.size(), kLineEnd) != 0) text.push_back(sml[i]);
    }
    return text;
}

/// What the control reports while a body is decoded, equal reports counted.
class Reports {
public:
    Reports() {
        control_.Events().Error = [this](std::int32_t code, const std::string& text, std::int32_t) {
            if (!last_.empty() && code == code_ && text == text_) {
                ++last_.back().second;
                return;
            }
            code_ = code;
            text_ = text;
            last_.emplace_back(std::to_string(code) + ' ' + Utf8FromLatin1(text), 1);
        };
    }

    /// Those since the last call.
    std::vector<std::string> Take() {
        std::vector<std::string> lines;
        lines.reserve(last_.size());
        for (const auto& [text, count] : last_)
            lines.push_back("error " + text +
                            (count == 1 ? "" : ", " + std::to_string(count) + " times"));
        last_.clear();
        return lines;
    }

private:
    EventLoop loop_;
    Hexmire control_{loop_.Platform({.MessageLog = false})};
    std::int32_t code_ = 0;
    std::string text_;
    std::vector<std::pair<std::string, std::size_t>> last_;
};

/// What exact SML cannot say because the values do not hold it.
std::optional<BodyFinding> Difference(SECSMessage& message, const Bytes& body) {
    const Bytes again = EncodeBody(message);
    if (again == body) return std::nullopt;
    const auto [here, there] = std::mismatch(body.begin(), body.end(), again.begin(), again.end());
    const auto offset = static_cast<std::size_t>(here - body.begin());
    const auto shown = [](const Bytes& bytes, auto place) {
        return place == bytes.end() ? std::string("nothing") : Hex(*place);
    };
    return BodyFinding{offset,
                       "the same values are sent as other bytes: " + shown(again, there) +
                           " in place of " + shown(body, here)};
}

/// A body or whole message, ready to be shown.
struct Shown {
    std::string Sml;
    std::vector<std::string> Findings;
};

/// A body that would be reported more often is not decoded.
constexpr std::uint64_t kMostReports = 100'000;

Shown Show(const DecodeOptions& options, const Frame& frame, Reports& reports) {
    Shown shown;
    std::vector<BodyFinding> findings = CheckBody(frame.Body);
    const bool isAbsurd = !findings.empty() && MissingItems(frame.Body) > kMostReports;
    if (isAbsurd) findings.back().Text += "; it is not decoded";
    const SECSMessagePtr message = DecodeBody(isAbsurd ? Bytes() : frame.Body).Message;
    if (message == nullptr) throw Failure("out of memory");
    message->Stream(frame.Header.Stream);
    message->Func(frame.Header.Function);
    const bool hasBody = message->Root()->ItemCount() > 0;
    if (options.Exact) {
        if (options.Header) {
            shown.Sml = ExactSml(*message, frame.Header.ReplyExpected);
        } else if (hasBody) {
            shown.Sml = ExactItemSml(message->Item(1));
        }
        if (findings.empty()) {
            if (auto difference = Difference(*message, frame.Body))
                findings.push_back(std::move(*difference));
        }
    } else {
        shown.Sml = RenderSml(*message, frame.Header.ReplyExpected);
        if (!options.Header) {  // Only what stands between the first line and the point.
            const std::size_t start = hasBody ? shown.Sml.find(kLineEnd) + kLineEnd.size() : 0;
            shown.Sml = hasBody ? shown.Sml.substr(start, shown.Sml.size() - start - 1) : "";
        } else {
            shown.Sml += kLineEnd;
        }
    }
    for (const BodyFinding& finding : findings)
        shown.Findings.push_back("offset " + std::to_string(finding.Offset) + ": " + finding.Text);
    for (std::string& line : reports.Take())
        shown.Findings.push_back(std::move(line));
    return shown;
}

std::string HeaderLine(const WireHeader& header) {
    return "device ID " + std::to_string(header.DeviceID) +
           (header.IsReversed ? " with R-bit" : "") + ", system bytes " +
           std::to_string(header.SystemBytes);
}

/// "* Select.req, session ID 65535, system bytes 1": a comment, for SML has no such messages.
std::string ControlLine(const Frame& frame) {
    const unsigned session = frame.Header.DeviceID | (frame.Header.IsReversed ? 0x8000U : 0U);
    return frame.Control + ", session ID " + std::to_string(session) + ", system bytes " +
           std::to_string(frame.Header.SystemBytes);
}

Json ToJson(const DecodeOptions& options, const Frame& frame, const Shown& shown) {
    Json json;
    if (options.Header) {
        json["stream"] = frame.Header.Stream;
        json["function"] = frame.Header.Function;
        json["device_id"] = frame.Header.DeviceID;
        json["system_bytes"] = frame.Header.SystemBytes;
        json["reply_expected"] = frame.Header.ReplyExpected;
        json["reverse_bit"] = frame.Header.IsReversed;
    }
    json["sml"] = Utf8FromLatin1(shown.Sml);
    json["body_hex"] = HexLine(frame.Body);
    json["reports"] = shown.Findings;
    return json;
}

Json ToJson(const Frame& frame) {
    return {{"control", frame.Control},
            {"session_id", frame.Header.DeviceID | (frame.Header.IsReversed ? 0x8000U : 0U)},
            {"system_bytes", frame.Header.SystemBytes}};
}

void Print(const DecodeOptions& options, const Frame& frame, const Shown& shown) {
    if (options.Json) {
        std::cout << ToJson(options, frame, shown).dump() << '\n';
        return;
    }
    if (options.Header) std::cout << "* " << HeaderLine(frame.Header) << '\n';
    std::cout << OutputText(Utf8FromLatin1(WithoutReturns(shown.Sml)));
}

std::optional<Framing> FramingNamed(const std::string& name) {
    if (name == "message") return Framing::Message;
    if (name == "hsms") return Framing::Hsms;
    if (name == "secs1") return Framing::SecsI;
    return std::nullopt;
}

Input Read(const DecodeOptions& options) {
    Input input = ReadInput(options.Words);
    if (!options.Binary && input.Name == "<argument>" && options.Words.size() == 1 &&
        input.Text.find_first_of("./") != std::string::npos)
        throw Failure("no such file: " + input.Text);
    return input;
}

std::vector<Frame> Messages(const DecodeOptions& options, const Input& input) {
    const Bytes bytes =
        options.Binary ? Bytes(input.Text.begin(), input.Text.end()) : ReadHex(input);
    if (options.Header) return SplitMessages(bytes, options.Framing, input.Name);
    return {Frame{.Offset = 0, .Header = {.Function = 1}, .Body = bytes}};
}

}  // namespace

void AddDecodeOptions(Command command, DecodeOptions& options) {
    command
        .Option("input",
                options.Words,
                "A file of hex or the hex itself ('41 03 4A 4F 42', '0x41 0x03', "
                "'41:03'); nothing or '-': the standard input")
        .TypeName("FILE|HEX");
    command.Flag("--binary", options.Binary, "The input is bytes, not hex");
    const CommandOption header = command.Flag(
        "--header", options.Header, "The input is whole messages, header included, not one body");
    const auto isFraming = [](const std::string& name) {
        return FramingNamed(name) ? std::string() : "'" + name + "' is none of message|hsms|secs1";
    };
    command
        .OptionFunction(
            "--framing",
            [&options](const std::string& name) {
                options.Framing = FramingNamed(name).value_or(Framing::Find);
            },
            "How whole messages lie in the input: message (one, header and body), hsms "
            "(behind 4-byte lengths), secs1 (blocks); default: as it looks")
        .Check(isFraming)
        .Text("message|hsms|secs1")
        .Needs(header);
    command.Flag("--exact",
                 options.Exact,
                 "Write SML that encodes to the same bytes whatever the values are; bytes that "
                 "no value stands for are reported");
    command.Flag("--json", options.Json, "Write one JSON object a line for every message");
}

void RunDecode(const DecodeOptions& options) {
    const Input input = Read(options);
    const std::vector<Frame> frames = Messages(options, input);
    Reports reports;
    bool isWhole = true;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const Frame& frame = frames[i];
        if (!frame.Control.empty()) {
            if (options.Json) {
                std::cout << ToJson(frame).dump() << '\n';
            } else {
                std::cout << "* " << ControlLine(frame) << '\n';
            }
            continue;
        }
        const Shown shown = Show(options, frame, reports);
        Print(options, frame, shown);
        std::cout << std::flush;
        for (const std::string& finding : shown.Findings) {
            isWhole = false;
            std::cerr << "hexmire: ";
            if (frames.size() > 1) std::cerr << "message " << i + 1 << ", body ";
            std::cerr << finding << '\n';
        }
    }
    std::cout << std::flush;
    if (!std::cout) throw Failure("cannot write to the standard output");
    if (!isWhole) throw Told();
}

}  // namespace hexmire::program
