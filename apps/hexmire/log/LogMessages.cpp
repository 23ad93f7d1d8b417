#include "log/LogMessages.h"

#include <algorithm>

namespace hexmire::program {

namespace {

std::string_view TextOf(std::string_view line, const LogEntry& entry) {
    if (entry.Facts.Kind != LineKind::Broken)
        line.remove_prefix(std::min(StampReader::kSize, line.size()));
    return WithoutLineEnd(line);
}

/// What stands behind " : ".
std::string_view Value(std::string_view text) {
    const std::size_t colon = text.find(" : ");
    if (colon == std::string_view::npos) return {};
    text.remove_prefix(colon + 3);
    while (text.ends_with(' '))
        text.remove_suffix(1);
    return text;
}

/// The SML from the lines of its entry.
std::string_view Sml(std::string_view lines) {
    lines.remove_prefix(std::min(lines.find('\n'), lines.size() - 1) + 1);
    while (lines.ends_with('\n') || lines.ends_with('\r'))
        lines.remove_suffix(1);
    return lines;
}

}  // namespace

void LogMessages::Begin(const LogEntry& entry) {
    End();
    entry_ = entry;
    inEntry_ = true;
    line_.clear();
    if (entry.Facts.Kind == LineKind::Header) {
        open_.emplace_back();
        open_.back().Head = entry;
    }
}

void LogMessages::Text(std::string_view bytes) {
    if (!inEntry_) return;  // Went out at a pause: a blank line at most.
    line_.append(bytes.substr(0, kLongest - std::min(kLongest, line_.size())));
}

/// The entry has ended: its text tells what it adds to its message.
void LogMessages::End() {
    if (!inEntry_) return;
    inEntry_ = false;
    const bool shortened = line_.size() >= kLongest;
    LogMessage* message = Find(entry_.Message);
    switch (entry_.Facts.Kind) {
        case LineKind::Header:
            return;
        case LineKind::Length:
            if (message == nullptr) break;
            message->Length = entry_.Facts.Length;
            return;
        case LineKind::Data:
            if (message == nullptr) break;
            message->BodyHex = Value(TextOf(line_, entry_));
            message->Shortened = shortened;
            return;
        case LineKind::Message: {
            LogMessage alone;
            alone.Head = entry_;
            LogMessage& whole = message == nullptr ? alone : *message;
            whole.Sml = Sml(line_);
            whole.Whole = true;
            whole.Shortened = whole.Shortened || shortened;
            OnMessage(whole);
            if (message != nullptr) open_.erase(open_.begin() + (message - open_.data()));
            return;
        }
        default:
            break;
    }
    OnLine(entry_, TextOf(line_, entry_));
}

void LogMessages::Pause(bool whole) {
    if (whole) End();
    OnPause();
}

void LogMessages::Unfinished(const LogEntry& header) {
    End();
    LogMessage* message = Find(header.Message);
    if (message == nullptr) return;
    message->Head.Error = true;
    OnMessage(*message);
    open_.erase(open_.begin() + (message - open_.data()));
}

void LogMessages::Finish() {
    End();
    OnPause();
}

LogMessage* LogMessages::Find(std::int64_t message) {
    if (message == 0) return nullptr;
    const auto found = std::find_if(open_.begin(), open_.end(), [&](const LogMessage& one) {
        return one.Head.Message == message;
    });
    return found == open_.end() ? nullptr : &*found;
}

}  // namespace hexmire::program
