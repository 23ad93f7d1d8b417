#include <hexmire/hosting/links/SocketOptions.h>
#include <hexmire/hosting/links/TransportShell.h>

#include <asio/buffer.hpp>
#include <asio/error.hpp>

#include <array>

namespace hexmire {

namespace {

/// Frames written in one system call.
constexpr std::size_t kViewsPerWrite = 64;
/// Reads in one turn while a long frame is arriving.
constexpr int kReadsPerTurn = 16;

bool IsNotReady(const asio::error_code& error) {
    return error == asio::error::would_block || error == asio::error::try_again;
}

}  // namespace

// --- input ---------------------------------------------------------------------------------------

/// Waits until there is something to read. Nothing is read before, so that a timer which looks for
/// late input finds it in its place.
void TransportDriver::Shell::WaitForInput() {
    if (!stream_ || waitingForInput_ || readingPaused_) return;
    waitingForInput_ = true;
    stream_->WaitForInput(
        [self = shared_from_this(), generation = generation_](const asio::error_code& error) {
            if (generation != self->generation_) return;
            self->waitingForInput_ = false;
            if (error || self->readingPaused_) return;
            self->Turn([&](link::TimePoint now) { self->ReadInput(now); });
        });
}

/// Reads what is there and feeds it to the machine; returns the number of bytes.
std::size_t TransportDriver::Shell::ReadInput(link::TimePoint now) {
    std::size_t total = 0;
    for (int reads = 0; reads < kReadsPerTurn && stream_ && !readingPaused_; ++reads) {
        asio::error_code error;
        const std::size_t count = stream_->Read(asio::buffer(input_.get(), kInputBytes), error);
        if (error) {
            if (!IsNotReady(error)) LoseStream(error, now);
            break;
        }
        total += count;
        ourOwnUnheard_ = false;
        records_.OnReceived({input_.get(), count});
        machine_->OnBytes({input_.get(), count}, now);
        PerformActions();
        // More only for a frame that is not complete: what is complete is told first.
        if (count < kInputBytes || !events_.IsEmpty()) break;
    }
    return total;
}

void TransportDriver::Shell::LoseStream(const asio::error_code& error, link::TimePoint now) {
    const bool isEnd = error == asio::error::eof;
    const link::SystemFailure reason = link::FailureOf(error);
    records_.OnEndSeen(isEnd ? link::ConnectionEnd::ByPeer : link::ConnectionEnd::Lost,
                       isEnd ? "closed by the peer" : link::FailureText(reason));
    // Both ends have called each other, and the peer keeps the other connection: it may have
    // closed ours before we have come to accept its own.
    if (ourOwnUnheard_ && acceptor_ && OfferWaitingCaller()) return;
    ourOwnUnheard_ = false;
    if (isEnd) {
        machine_->OnClosed(now);
    } else {
        machine_->OnLost(reason, now);
    }
    PerformActions();
    // At the end of its own closing the machine has nothing more to hear from the peer.
    readingPaused_ = true;
}

void TransportDriver::Shell::Do(const link::PauseReading&) { readingPaused_ = true; }

void TransportDriver::Shell::Do(const link::ResumeReading&) { readingPaused_ = false; }

// --- output --------------------------------------------------------------------------------------

void TransportDriver::Shell::WriteOutput(link::TimePoint now) {
    if (WritesWait()) {
        if (machine_->HasOutput()) ScheduleFlush();
        return;
    }
    while (stream_ && !waitingForRoom_ && machine_->HasOutput()) {
        std::array<std::span<const std::uint8_t>, kViewsPerWrite> views;
        std::array<asio::const_buffer, kViewsPerWrite> buffers;
        const std::size_t count = machine_->Output(views);
        std::size_t offered = 0;
        for (std::size_t index = 0; index < count; ++index) {
            buffers[index] = asio::const_buffer(views[index].data(), views[index].size());
            offered += views[index].size();
        }
        asio::error_code error;
        const std::size_t written = stream_->Write(std::span(buffers).first(count), error);
        records_.OnSent(std::span(views).first(count), written);
        machine_->OnWritten(written, now);
        PerformActions();
        if (error && !IsNotReady(error)) {
            // What the peer said before it went away tells more than the failure of our write.
            // It may also have called us meanwhile: then there is another connection already.
            const std::uint64_t generation = generation_;
            if (ReadInput(now) == 0 && stream_ && generation == generation_) {
                LoseStream(error, now);
            }
            return;
        }
        if (written < offered) WaitForRoom();
    }
}

void TransportDriver::Shell::WaitForRoom() {
    if (!stream_) return;
    waitingForRoom_ = true;
    stream_->WaitForRoom(
        [self = shared_from_this(), generation = generation_](const asio::error_code& error) {
            if (generation != self->generation_) return;
            self->waitingForRoom_ = false;
            if (error) return;
            self->Turn([](link::TimePoint) {});
        });
}

void TransportDriver::Shell::Do(const link::ShutdownSend&) {
    if (stream_) stream_->ShutdownSend();
}

/// What is written shall reach the peer.
void TransportDriver::Shell::CloseStream() noexcept {
    if (!stream_) return;
    stream_->Drain(asio::buffer(input_.get(), kInputBytes));
    stream_.reset();
}

}  // namespace hexmire
