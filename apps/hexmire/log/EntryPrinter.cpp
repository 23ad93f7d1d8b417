#include "log/EntryPrinter.h"

#include <hexmire/hosting/Utf8.h>

#include <utility>

namespace hexmire::program {

namespace {

constexpr std::size_t kPiece = std::size_t{64} * 1024;
/// A body that cannot be decoded is shown up to here.
constexpr std::size_t kLongestHeld = std::size_t{1024} * 1024;

LogFilter WithoutErrors(LogFilter filter) {
    filter.Errors = false;
    return filter;
}

}  // namespace

EntryPrinter::EntryPrinter(std::ostream& out, LogFilter filter, Controls controls)
    : out_(out),
      filter_(std::move(filter)),
      withoutErrors_(WithoutErrors(filter_)),
      controls_(controls) {
    pending_.reserve(2 * kPiece);
}

EntryPrinter::Show EntryPrinter::Decide(const LogEntry& entry) {
    if (filter_.Passes(entry)) return Show::Yes;
    const LineKind kind = entry.Facts.Kind;
    const bool mayFail =
        filter_.Errors && entry.Facts.Direction == Way::Received &&
        (kind == LineKind::Header || kind == LineKind::Length || kind == LineKind::Data);
    if (mayFail && withoutErrors_.Passes(entry)) return Show::Later;
    return Show::No;
}

void EntryPrinter::Begin(const LogEntry& entry) {
    show_ = Decide(entry);
    if (show_ != Show::Later || entry.Facts.Kind == LineKind::Header) held_.clear();
}

void EntryPrinter::Text(std::string_view bytes) {
    if (show_ == Show::Yes) Write(bytes);
    if (show_ == Show::Later && held_.size() + bytes.size() <= kLongestHeld) held_.append(bytes);
}

void EntryPrinter::Unfinished(const LogEntry& header) {
    if (header.Facts.Direction != Way::Received) return;
    Write(held_);
    held_.clear();
}

void EntryPrinter::Write(std::string_view bytes) {
    if (pending_.size() + bytes.size() > kPiece) {
        Put(pending_);
        pending_.clear();
    }
    if (bytes.size() > kPiece) {
        Put(bytes);
    } else {
        pending_.append(bytes);
    }
}

void EntryPrinter::Put(std::string_view bytes) {
    if (controls_ == Controls::AsTheyCame) {
        out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return;
    }
    std::string piece = std::exchange(return_, {}).append(bytes);
    if (piece.ends_with('\r')) {
        piece.pop_back();
        return_.assign(1, '\r');
    }
    out_ << VisibleText(Utf8FromLatin1(piece), "\n\t");
}

void EntryPrinter::Pause(bool /*whole*/) {
    Put(pending_);
    pending_.clear();
    out_.flush();
}

void EntryPrinter::Finish() { Pause(true); }

}  // namespace hexmire::program
