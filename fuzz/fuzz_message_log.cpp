// A message log: any bytes are read, whatever pieces they come in. Without a condition they come
// out again; with one, what comes out is no more; JSON is one line each, and the picture is XML.
#include "Require.h"
#include "log/EntryPrinter.h"
#include "log/ExchangeSink.h"
#include "log/JsonLog.h"
#include "log/LogReader.h"
#include <libxml/parser.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

namespace {

using namespace hexmire;
using namespace hexmire::program;

LogReport Read(LogSink& sink, std::string_view text, std::size_t pieces, std::size_t buffer) {
    LogReader reader(sink, buffer);
    while (!text.empty()) {
        const auto room = reader.Room();
        const std::size_t count = std::min({text.size(), room.size(), pieces});
        std::copy_n(text.begin(), count, room.begin());
        reader.Take(count);
        if (count % 5 == 0) reader.Pause();
        text.remove_prefix(count);
    }
    const LogReport report = reader.EndFile();
    reader.Finish();
    return report;
}

std::string Printed(std::string_view text, const LogFilter& filter, std::size_t pieces) {
    std::ostringstream out;
    EntryPrinter printer(out, filter);
    static_cast<void>(Read(printer, text, pieces, 4096));
    return out.str();
}

void CheckEntries(std::string_view text) {
    fuzz::Require(Printed(text, {}, SIZE_MAX) == text, "a log comes out as it is");
    fuzz::Require(Printed(text, {}, 7) == text, "in whatever pieces it comes");
    const LogFilter filters[] = {{.Errors = true},
                                 {.Messages = {{.Stream = 1, .Function = -1}}},
                                 {.SystemBytes = 1},
                                 {.From = TimeBound{.Value = 1, .EveryDay = true}, .Sent = true}};
    for (const LogFilter& filter : filters) {
        const std::string some = Printed(text, filter, SIZE_MAX);
        fuzz::Require(some.size() <= text.size(), "a filter adds nothing");
        fuzz::Require(Printed(text, filter, 3) == some, "and does not see pieces");
    }
    // A buffer that is shorter than lines reads them as other lines, but loses nothing.
    std::ostringstream out;
    EntryPrinter printer(out, {});
    static_cast<void>(Read(printer, text, SIZE_MAX, 16));
    fuzz::Require(out.str() == text, "a short buffer loses nothing");
}

void CheckJson(std::string_view text) {
    std::ostringstream out;
    JsonLog json(out, {});
    const LogReport report = Read(json, text, SIZE_MAX, 4096);
    const std::string lines = out.str();
    const auto count = std::count(lines.begin(), lines.end(), '\n');
    fuzz::Require(count <= report.Entries + report.Broken + 1, "an object is a line");
    fuzz::Require(lines.empty() || (lines.starts_with('{') && lines.ends_with("}\n")),
                  "of whole objects");
}

void CheckExchange(std::string_view text) {
    constexpr std::size_t kLimit = 50;
    SequenceDiagram diagram(LogSide::Unknown, kLimit);
    std::ostringstream out;
    ExchangeSink sink(out, {.Latency = true, .Unanswered = true, .Diagram = &diagram});
    static_cast<void>(Read(sink, text, 100, 4096));
    fuzz::Require(diagram.Drawn() <= kLimit, "a picture is bounded");
    std::ostringstream picture;
    diagram.Write(picture, std::string(text.substr(0, 50)));
    const std::string svg = picture.str();
    xmlDoc* const document =
        xmlReadMemory(svg.data(),
                      static_cast<int>(svg.size()),
                      nullptr,
                      nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    fuzz::Require(document != nullptr, "a picture is XML");
    xmlFreeDoc(document);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    CheckEntries(text);
    CheckJson(text);
    CheckExchange(text);
    return 0;
}
