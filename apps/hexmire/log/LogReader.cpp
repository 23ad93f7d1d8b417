#include "log/LogReader.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace hexmire::program {

namespace {

constexpr std::int32_t kErrorStream = 9;

bool IsReply(const MessageName& name) { return name.Function % 2 == 0; }

bool TellsOfError(const MessageName& name) {
    return name.Stream == kErrorStream || name.Function == 0;
}

bool IsAsked(const LineFacts& line, const LineFacts& searched) {
    return line.Name == searched.Name && line.SystemBytes == searched.SystemBytes;
}

}  // namespace

LogReader::LogReader(LogSink& sink, std::size_t bufferSize) : sink_(sink), splitter_(bufferSize) {}

void LogReader::Take(std::size_t count) {
    report_.Bytes += static_cast<std::int64_t>(count);
    splitter_.Take(count, [this](const LinePiece& piece) { OnPiece(piece); });
}

void LogReader::Pause() { sink_.Pause(IsWhole()); }

LogReport LogReader::EndFile() {
    splitter_.Finish([this](const LinePiece& piece) { OnPiece(piece); });
    report_.CutOff = report_.Entries > 0 && !IsWhole();
    if (!messageLine_.empty()) Begin();
    const LineKind last = entry_.Facts.Kind;
    // What is cut off is told once.
    if (report_.CutOff && (last == LineKind::Damaged || last == LineKind::Broken)) --report_.Broken;
    inEntry_ = false;
    line_ = 0;
    return std::exchange(report_, LogReport());
}

void LogReader::Finish() {
    for (std::vector<LogEntry>& open : open_)
        GiveUp(open, 0, open.size());
    sink_.Finish();
}

void LogReader::OnPiece(const LinePiece& piece) {
    if (piece.Starts) {
        ++line_;
        lineEnded_ = piece.Ends;
        if (const auto time = stamps_.Read(piece.Text)) {
            OnLine(piece.Text, *time);
        } else {
            OnLineWithoutTime(piece);
        }
        return;
    }
    lineEnded_ = piece.Ends;
    if (messageLine_.empty()) {
        sink_.Text(piece.Text);
    } else {  // A message line longer than the buffer is none.
        Begin();
        sink_.Text(piece.Text);
    }
}

void LogReader::OnLine(std::string_view text, LogTime time) {
    if (!messageLine_.empty()) Begin();  // Its SML never came.
    ++report_.Entries;
    ++entries_;
    entry_ = LogEntry{.Facts = ReadLine(text.substr(StampReader::kSize)),
                      .Time = time,
                      .Moment = MomentOf(time),
                      .Line = line_};
    inEntry_ = true;
    smlEnded_ = false;
    if (entry_.Facts.Kind == LineKind::Message) {
        messageLine_ = text;
        return;
    }
    Begin();
    sink_.Text(text);
}

void LogReader::OnLineWithoutTime(const LinePiece& piece) {
    if (!messageLine_.empty()) {
        OnSmlName(piece);
        return;
    }
    const LineKind kind = entry_.Facts.Kind;
    const bool goesOn = inEntry_ && (kind == LineKind::Message || kind == LineKind::Other);
    if (!goesOn) {
        BeginBroken();
    } else if (kind == LineKind::Message && !smlEnded_) {
        const std::string_view text = piece.Text;
        smlEnded_ = text.size() <= 3 && text.starts_with('.') && WithoutLineEnd(text) == ".";
    }
    sink_.Text(piece.Text);
}

void LogReader::OnSmlName(const LinePiece& piece) {
    if (const auto sml = ReadSmlName(piece.Text)) {
        entry_.Facts.Name = sml->Name;
        entry_.Facts.ReplyExpected = sml->ReplyExpected;
        smlEnded_ = sml->Ended;
    } else {
        entry_.Facts.Kind = LineKind::Damaged;
    }
    Begin();
    sink_.Text(piece.Text);
}

void LogReader::BeginBroken() {
    // The line above may be broken as well: both are one entry then.
    CountBroken(line_);
    if (inEntry_ && entry_.Facts.Kind == LineKind::Broken) return;
    GiveUpReceived();
    entry_ = LogEntry{.Facts = {.Kind = LineKind::Broken},
                      .Time = lastTime_,
                      .Moment = lastMoment_.value_or(0),
                      .Line = line_,
                      .Error = true};
    inEntry_ = true;
    sink_.Begin(entry_);
}

/// Completes the entry with what the lines above it tell, and hands it on.
void LogReader::Begin() {
    LineFacts& facts = entry_.Facts;
    if (facts.Kind == LineKind::Message && facts.Name.Stream < 0) facts.Kind = LineKind::Damaged;
    if (facts.Kind == LineKind::Damaged) {
        CountBroken(entry_.Line);
        entry_.Error = true;
    }
    const bool ofReceived = facts.Direction == Way::Received &&
                            (facts.Kind == LineKind::Length || facts.Kind == LineKind::Data ||
                             facts.Kind == LineKind::Message);
    if (!ofReceived) GiveUpReceived();
    if (facts.Kind == LineKind::Header) OpenHeader();
    if (facts.Kind == LineKind::Length || facts.Kind == LineKind::Data) TakeFromHeader();
    if (facts.Kind == LineKind::Message) CloseMessage();
    if (facts.Kind == LineKind::Timer) FollowTimer();
    sink_.Begin(entry_);
    if (!messageLine_.empty()) {
        sink_.Text(messageLine_);
        messageLine_.clear();
    }
}

void LogReader::OpenHeader() {
    entry_.Message = entries_;
    entry_.Unexpected = entry_.Facts.Direction == Way::Received && NobodyWaits();
    entry_.Error = TellsOfError(entry_.Facts.Name) || entry_.Unexpected;
    std::vector<LogEntry>& open = Open(entry_.Facts.Direction);
    if (open.size() == kOpenHeaders) GiveUp(open, 0, 1);
    open.push_back(entry_);
}

void LogReader::TakeFromHeader() {
    const std::vector<LogEntry>& open = Open(entry_.Facts.Direction);
    if (open.empty()) return;
    const LogEntry& header = open.back();
    entry_.Facts.Name = header.Facts.Name;
    entry_.Facts.ReplyExpected = header.Facts.ReplyExpected;
    entry_.Facts.FromEquipment = header.Facts.FromEquipment;
    entry_.Facts.DeviceID = header.Facts.DeviceID;
    entry_.Facts.SystemBytes = header.Facts.SystemBytes;
    entry_.Message = header.Message;
    entry_.Error = entry_.Error || header.Error;
    entry_.Unexpected = header.Unexpected;
}

/// A send from within a handler of a send comes to its SML first: the header above it waits on.
void LogReader::CloseMessage() {
    entry_.Error = TellsOfError(entry_.Facts.Name);
    std::vector<LogEntry>& open = Open(entry_.Facts.Direction);
    const auto found = std::find_if(open.rbegin(), open.rend(), [&](const LogEntry& header) {
        return header.Facts.Name == entry_.Facts.Name;
    });
    if (found == open.rend()) return;
    const auto place = static_cast<std::size_t>(std::distance(found, open.rend()));
    GiveUp(open, place, open.size() - place);
    TakeFromHeader();
    open.pop_back();
}

void LogReader::GiveUp(std::vector<LogEntry>& open, std::size_t from, std::size_t count) {
    const auto first = open.begin() + static_cast<std::ptrdiff_t>(from);
    const auto last = first + static_cast<std::ptrdiff_t>(count);
    for (auto header = first; header != last; ++header)
        sink_.Unfinished(*header);
    open.erase(first, last);
}

/// The lines of a received message follow each other without any other between them.
void LogReader::GiveUpReceived() {
    std::vector<LogEntry>& open = Open(Way::Received);
    if (!open.empty()) GiveUp(open, 0, open.size());
}

/// When a reply's first block has come, the waiting transaction is searched for. A search that ends
/// without the line that its timer was stopped has found none.
void LogReader::FollowTimer() {
    const LineFacts& facts = entry_.Facts;
    if (facts.Start) return;
    if (facts.Step == TimerStep::Searching) searched_ = facts;
    if (facts.Step == TimerStep::Timer && searched_ && IsAsked(facts, *searched_))
        searched_.reset();
}

bool LogReader::NobodyWaits() const {
    return IsReply(entry_.Facts.Name) && searched_ && IsAsked(entry_.Facts, *searched_);
}

void LogReader::CountBroken(std::int64_t line) {
    if (report_.Broken++ == 0) report_.FirstBroken = line;
}

LogTime LogReader::MomentOf(LogTime time) {
    LogTime moment = time;
    if (lastMoment_ && time < *lastMoment_) {
        if (time % kSecond == 0 && *lastMoment_ <= time + kSecond) {
            moment = time + kSecond;
        } else if (report_.StepsBack++ == 0) {
            report_.FirstStepBack = line_;
            report_.FirstStepSize = *lastMoment_ - time;
        }
    }
    lastTime_ = time;
    lastMoment_ = moment;
    return moment;
}

bool LogReader::IsWhole() const {
    if (!inEntry_) return true;
    const bool needsSml = entry_.Facts.Kind == LineKind::Message;
    return lineEnded_ && splitter_.AtLineStart() && (!needsSml || smlEnded_);
}

}  // namespace hexmire::program
