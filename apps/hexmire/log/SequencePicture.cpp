// How a sequence diagram looks.
#include "log/JsonLog.h"
#include "log/SequenceDiagram.h"
#include "log/XmlText.h"

#include <array>
#include <cstdio>

namespace hexmire::program {

namespace {

constexpr int kWidth = 860;
constexpr int kMargin = 20;
constexpr int kBottom = 64;
constexpr int kBoxWidth = 130;
constexpr int kHost = 250;
constexpr int kEquipment = 660;
constexpr int kMiddle = (kHost + kEquipment) / 2;
constexpr int kTop = 118;
constexpr int kRowHeight = 40;
constexpr int kBreakHeight = 26;
constexpr int kLaneWidth = 9;
constexpr int kNoteDistance = 46;
constexpr LogTime kPause = kSecond;

const char* const kStyle =
    "text{font-family:'DejaVu Sans',Verdana,Arial,sans-serif;font-size:12px;fill:#222}"
    ".title{font-size:16px;font-weight:bold}.small{font-size:10.5px;fill:#666}"
    ".side{font-size:14px;font-weight:bold;fill:#fff}.box{fill:#34495e}"
    ".name{font-weight:bold}.time{font-size:11px;fill:#555}"
    ".life{stroke:#9aa5b1;stroke-width:1.5}.day{stroke:#d5dae0}"
    ".primary{stroke:#1f4e8c;fill:#1f4e8c}.reply{stroke:#2e7d32;fill:#2e7d32}"
    ".bad{stroke:#b3261e;fill:#b3261e}.arrow{stroke-width:1.6}.dash{stroke-dasharray:6 4}"
    ".wait{stroke:#9aa5b1;fill:none;stroke-width:1.2}.note{font-size:10.5px;fill:#2e7d32}"
    ".wrong{font-size:10.5px;font-weight:bold;fill:#b3261e}.warn{fill:#8a5a00}";

std::string Span(LogTime time) {
    std::array<char, 32> text{};
    if (time < kSecond) {
        std::snprintf(text.data(), text.size(), "%d ms", static_cast<int>(time * 10));
    } else if (time < 60 * kSecond) {
        std::snprintf(text.data(), text.size(), "%.2f s", static_cast<double>(time) / kSecond);
    } else {
        const auto seconds = time / kSecond;
        std::snprintf(text.data(),
                      text.size(),
                      "%lld h %02d min %02d s",
                      static_cast<long long>(seconds / 3600),
                      static_cast<int>(seconds / 60 % 60),
                      static_cast<int>(seconds % 60));
    }
    return text.data();
}

std::string DayText(LogTime time) { return LogTimeText(time).substr(0, 10); }
std::string ClockText(LogTime time) { return LogTimeText(time).substr(11); }

void Text(std::ostream& out,
          int x,
          int y,
          const char* kind,
          const char* anchor,
          const std::string& text) {
    out << "<text x=\"" << x << "\" y=\"" << y << "\" class=\"" << kind << "\" text-anchor=\""
        << anchor << "\">" << XmlText(text) << "</text>\n";
}

std::string OutcomeText(const PairingResult& end) {
    if (end.Kind == Outcome::NoReply) return "no reply";
    if (end.Kind == Outcome::TooLate) return "timed out";
    return "ended by " + NameText(end.By);
}

}  // namespace

std::vector<SequenceDiagram::Placed> SequenceDiagram::Place() const {
    std::vector<Placed> placed;
    placed.reserve(rows_.size());
    int y = kTop;
    const Row* last = nullptr;
    for (const Row& row : rows_) {
        Placed one{.Message = &row};
        one.NewDay = last == nullptr || row.Head.Time / kDay != last->Head.Time / kDay;
        if (last != nullptr) {
            const LogTime pause = row.Head.Moment - last->Head.Moment;
            if (pause >= kPause || pause < 0) one.Pause = pause;
        }
        if (one.NewDay && last != nullptr) y += kBreakHeight;
        if (one.Pause != 0) y += kBreakHeight;
        y += kRowHeight;
        one.Y = y;
        placed.push_back(one);
        last = &row;
    }
    return placed;
}

void SequenceDiagram::Write(std::ostream& out, const std::string& title) const {
    const std::vector<Placed> placed = Place();
    const std::vector<int> lanes = Lanes();
    const int end = placed.empty() ? kTop + kRowHeight : placed.back().Y;
    WriteHead(out, title, end);
    for (const Placed& one : placed)
        WriteBreaks(out, one);
    for (std::size_t i = 0; i < placed.size(); ++i) {
        const Row& row = *placed[i].Message;
        if (row.Reply >= 0)
            WriteBracket(out, placed[i], placed[static_cast<std::size_t>(row.Reply)], lanes[i]);
        WriteArrow(out, placed[i]);
    }
    out << "</svg>\n";
}

void SequenceDiagram::WriteHead(std::ostream& out, const std::string& title, int end) const {
    const int height = end + kBottom;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns='http://www.w3.org/2000/svg' width='" << kWidth << "' height='" << height
        << "' viewBox='0 0 " << kWidth << ' ' << height << "'>\n<title>" << XmlText(title)
        << "</title>\n<style>" << kStyle << "</style>\n<rect width=\"" << kWidth << "\" height=\""
        << height << "\" fill=\"#fff\"/>\n";
    Text(out, kMargin, 30, "title", "start", title);
    std::string span = "no message";
    if (!rows_.empty()) {
        span = LogTimeText(rows_.front().Head.Time) + " to " + LogTimeText(rows_.back().Head.Time) +
               ", " + std::to_string(rows_.size()) + (rows_.size() == 1 ? " message" : " messages");
    }
    Text(out, kMargin, 50, "small", "start", span);
    const bool all = seen_ == static_cast<std::int64_t>(rows_.size());
    if (!all) {
        Text(out,
             kWidth - kMargin,
             50,
             "small warn",
             "end",
             "The first " + std::to_string(rows_.size()) + " of " + std::to_string(seen_) +
                 " messages");
    }
    for (const int x : {kHost, kEquipment}) {
        out << "<rect x=\"" << x - kBoxWidth / 2 << "\" y=\"" << kTop - 50 << "\" width=\""
            << kBoxWidth << "\" height=\"30\" rx=\"4\" class=\"box\"/>\n<line x1=\"" << x
            << "\" y1=\"" << kTop - 20 << "\" x2=\"" << x << "\" y2=\"" << end + 24
            << "\" class=\"life\"/>\n";
    }
    Text(out, kHost, kTop - 30, "side", "middle", "Host");
    Text(out, kEquipment, kTop - 30, "side", "middle", "Equipment");
    Text(out,
         kMargin,
         height - 14,
         "small",
         "start",
         "Solid: primary. Dashed: reply. Red: error. A bracket joins a primary and its reply, with "
         "the time between them.");
}

void SequenceDiagram::WriteBreaks(std::ostream& out, const Placed& placed) const {
    int y = placed.Y - kRowHeight + 8;
    if (placed.Pause != 0) {
        const std::string text = placed.Pause > 0
                                     ? "... " + Span(placed.Pause) + " later ..."
                                     : "... the clock goes back by " + Span(-placed.Pause) + " ...";
        Text(out, kMiddle, y, "small", "middle", text);
        y -= kBreakHeight;
    }
    if (!placed.NewDay) return;
    const LogTime time = placed.Message->Head.Time;
    out << "<line x1=\"" << kMargin << "\" y1=\"" << y - 4 << "\" x2=\"" << kWidth - kMargin
        << "\" y2=\"" << y - 4 << "\" class=\"day\"/>\n";
    Text(out, kMargin, y - 8, "time", "start", DayText(time));
}

void SequenceDiagram::WriteArrow(std::ostream& out, const Placed& placed) const {
    const Row& row = *placed.Message;
    const bool fromHost = FromHost(row);
    const bool reply = row.Head.Facts.Name.Function % 2 == 0;
    const int from = fromHost ? kHost : kEquipment;
    const int to = fromHost ? kEquipment : kHost;
    const int back = fromHost ? -9 : 9;
    const int y = placed.Y;
    const bool bad = row.Head.Error || row.Unfinished;
    const std::string kind = bad ? "bad" : reply ? "reply" : "primary";
    Text(out, kMargin, y + 4, "time", "start", ClockText(row.Head.Time));
    out << "<line x1=\"" << from << "\" y1=\"" << y << "\" x2=\"" << to + back << "\" y2=\"" << y
        << "\" class=\"arrow " << kind << (reply ? " dash" : "") << "\"/>\n<path d=\"M" << to << ' '
        << y << " l" << back << " -5 v10 z\" class=\"" << kind << "\"/>\n";
    const bool replyExpected = row.Head.Facts.ReplyExpected && !reply;
    Text(out,
         kMiddle,
         y - 5,
         "name",
         "middle",
         NameText(row.Head.Facts.Name) + (replyExpected ? " W" : ""));
    std::string details;
    if (row.Head.Facts.SystemBytes)
        details = "system bytes " + std::to_string(ShownSystemBytes(*row.Head.Facts.SystemBytes));
    const std::string note = NoteOf(row);
    if (!note.empty()) details += (details.empty() ? "" : ", ") + note;
    Text(out, kMiddle, y + 13, bad ? "wrong" : "small", "middle", details);
    if (!row.End || row.End->Kind == Outcome::Answered) return;
    Text(out,
         from + (fromHost ? -kNoteDistance : kNoteDistance),
         y + 4,
         "wrong",
         fromHost ? "end" : "start",
         OutcomeText(*row.End));
}

void SequenceDiagram::WriteBracket(std::ostream& out,
                                   const Placed& from,
                                   const Placed& to,
                                   int lane) const {
    const bool fromHost = FromHost(*from.Message);
    const int outward = fromHost ? -1 : 1;
    const int life = fromHost ? kHost : kEquipment;
    const int x = life + outward * (7 + lane * kLaneWidth);
    out << "<path d=\"M" << life << ' ' << from.Y << " H" << x << " V" << to.Y << " H" << life
        << "\" class=\"wait\"/>\n";
    const LogTime time = to.Message->Head.Moment - from.Message->Head.Moment;
    const Outcome outcome = from.Message->End->Kind;
    if (time < 0 || (outcome != Outcome::Answered && outcome != Outcome::TooLate)) return;
    Text(out,
         life + outward * kNoteDistance,
         to.Y + 4,
         "note",
         fromHost ? "end" : "start",
         time == 0 ? "< 10 ms" : Span(time));
}

}  // namespace hexmire::program
