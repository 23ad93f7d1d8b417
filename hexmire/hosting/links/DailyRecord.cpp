#include <hexmire/hosting/links/DailyRecord.h>
#include <hexmire/support/DateText.h>

#include <utility>

namespace hexmire::link {

namespace {

/// What is gathered before it is handed over while the loop is busy.
constexpr std::size_t kEnough = std::size_t{256} * 1024;

}  // namespace

DailyRecord::DailyRecord(FileWorker& worker,
                         std::shared_ptr<IRecordFiles> files,
                         Form form,
                         std::uint64_t& lost,
                         Failed failed)
    : worker_(worker),
      files_(std::move(files)),
      form_(std::move(form)),
      lost_(lost),
      failed_(std::move(failed)) {}

void DailyRecord::Place(std::string base, std::string start) {
    HandOver();
    spot_ = std::make_shared<Spot>(Spot{.Base = std::move(base), .Start = std::move(start)});
}

void DailyRecord::Add(std::string_view entry, const std::chrono::year_month_day& date) {
    if (date != date_) {
        HandOver();
        date_ = date;
    }
    if (waiting_ + gathered_.size() + entry.size() > kMostWaiting) {
        ++lost_;
        ++untold_;
        return;
    }
    gathered_ += entry;
    ++entries_;
    if (gathered_.size() >= kEnough) Flush();
}

/// While the worker is busy, more is gathered: a slow disk gets few large pieces.
void DailyRecord::Flush() {
    if (waiting_ == 0) HandOver();
}

void DailyRecord::HandOver() {
    if (gathered_.empty()) return;
    if (form_.Gap && untold_ > 0) gathered_.insert(0, form_.Gap(untold_));
    Piece piece{.Where = spot_,
                .Path = spot_->Base + "_" + DateText(date_, '-') + form_.Extension,
                .Size = gathered_.size(),
                .Entries = std::exchange(entries_, 0),
                .Told = std::exchange(untold_, 0)};
    std::string bytes = std::exchange(gathered_, {});
    waiting_ += piece.Size;
    try {
        worker_.Post(
            [files = files_, path = piece.Path, start = spot_->Start, bytes = std::move(bytes)] {
                return files->Append(path, start, bytes);
            },
            [this, piece](const std::string& failure) { OnDone(failure, piece); });
    } catch (...) {
        OnDone("no thread to write it", piece);
    }
}

void DailyRecord::OnDone(const std::string& failure, const Piece& piece) {
    waiting_ -= piece.Size;
    const bool wasFailing = std::exchange(piece.Where->IsFailing, !failure.empty());
    if (piece.Where->IsFailing) {
        lost_ += piece.Entries;
        untold_ += piece.Entries + piece.Told;
        if (!wasFailing) failed_(piece.Path + ": " + failure);
    }
    Flush();
}

}  // namespace hexmire::link
