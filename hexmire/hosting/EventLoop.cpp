#include <hexmire/hosting/ApplicationFolder.h>
#include <hexmire/hosting/ContainerPool.h>
#include <hexmire/hosting/EventLoop.h>
#include <hexmire/hosting/PosixFiles.h>
#include <hexmire/hosting/SystemClock.h>
#include <hexmire/hosting/XmlDocument.h>
#include <hexmire/hosting/links/TransportDriver.h>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>

#include <cassert>
#include <stdexcept>
#include <thread>
#include <utility>

namespace hexmire {

using Moment = std::chrono::steady_clock::time_point;

class EventLoop::Impl {
public:
    [[nodiscard]] hexmire::Platform NewPlatform(const PlatformOptions& options);
    void RunWhile(const std::function<bool()>& wanted, Moment deadline);
    void Stop() noexcept { stopping_ = true; }
    void Post(std::function<void()> function) {
        if (function) asio::post(loop_, std::move(function));
    }
    void OnException(std::function<void(std::exception_ptr)> handler) {
        handler_ = std::move(handler);
    }
    void CheckThread() const noexcept {
        assert(std::this_thread::get_id() == owner_ &&
               "a loop and its controls are called on the thread that made the loop");
    }

private:
    void RunOne(Moment deadline);

    const std::thread::id owner_ = std::this_thread::get_id();
    asio::io_context loop_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_{loop_.get_executor()};
    PosixFiles files_;
    SystemClock clock_;
    std::shared_ptr<ContainerPool> containers_ = std::make_shared<ContainerPool>(loop_);
    std::function<void(std::exception_ptr)> handler_;
    bool running_ = false;
    bool stopping_ = false;
};

hexmire::Platform EventLoop::Impl::NewPlatform(const PlatformOptions& options) {
    ContainerPool::Leased leased = containers_->Take(options.PropertyChanged);
    auto newDriver = [this, link = options.Link, lease = leased.Lease](SECSIServiceEvents& events) {
        return std::make_unique<TransportDriver>(loop_, events, link);
    };
    return {.NewDriver = std::move(newDriver),
            .NewXMLDocument = [] { return std::make_unique<XmlDocument>(); },
            .Container = leased.Container,
            .Files = files_,
            .Clock = clock_,
            .ApplicationFolder = options.ApplicationFolder.empty() ? hexmire::ApplicationFolder()
                                                                   : options.ApplicationFolder,
            .MessageLog = options.MessageLog};
}

void EventLoop::Impl::RunWhile(const std::function<bool()>& wanted, Moment deadline) {
    if (running_) throw std::logic_error("An event loop was run from within itself.");
    struct Scope {
        explicit Scope(bool& running) : Running(running) { Running = true; }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope() { Running = false; }
        bool& Running;
    };
    const Scope scope(running_);
    stopping_ = false;
    while (wanted() && !stopping_ && std::chrono::steady_clock::now() < deadline)
        RunOne(deadline);
}

void EventLoop::Impl::RunOne(Moment deadline) {
    try {
        if (deadline == Moment::max()) {
            loop_.run_one();
        } else {
            loop_.run_one_until(deadline);
        }
    } catch (...) {
        if (!handler_) throw;
        const auto handler = handler_;  // It may replace itself.
        handler(std::current_exception());
    }
}

namespace {

Moment After(std::chrono::nanoseconds duration) {
    const Moment now = std::chrono::steady_clock::now();
    return duration < Moment::max() - now ? now + duration : Moment::max();
}

bool Always() { return true; }

}  // namespace

EventLoop::EventLoop() : impl_(std::make_unique<Impl>()) {}
EventLoop::~EventLoop() { impl_->CheckThread(); }

hexmire::Platform EventLoop::Platform() { return Platform(PlatformOptions()); }

hexmire::Platform EventLoop::Platform(const LinkSettings& link) {
    return Platform(PlatformOptions{.Link = link});
}

hexmire::Platform EventLoop::Platform(const PlatformOptions& options) {
    impl_->CheckThread();
    return impl_->NewPlatform(options);
}

void EventLoop::Run() {
    impl_->CheckThread();
    impl_->RunWhile(&Always, Moment::max());
}

void EventLoop::RunFor(std::chrono::nanoseconds duration) {
    impl_->CheckThread();
    impl_->RunWhile(&Always, After(duration));
}

bool EventLoop::RunUntil(const std::function<bool()>& predicate, std::chrono::nanoseconds timeout) {
    impl_->CheckThread();
    bool holds = false;
    impl_->RunWhile([&] { return !(holds = predicate()); }, After(timeout));
    return holds;
}

void EventLoop::Stop() {
    impl_->CheckThread();
    impl_->Stop();
}

void EventLoop::Post(std::function<void()> function) { impl_->Post(std::move(function)); }

void EventLoop::OnException(std::function<void(std::exception_ptr)> handler) {
    impl_->CheckThread();
    impl_->OnException(std::move(handler));
}

}  // namespace hexmire
