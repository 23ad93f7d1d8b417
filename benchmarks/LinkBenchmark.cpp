// Round trips over HSMS-SS on the loopback interface, against an equipment that does nothing but
// answer: by a plain host, by the control without its log, and by the control with it. "S1F1" is
// answered by 18 bytes; "S2F101" carries the event report, which comes back. The number is how many
// are open at once.
#include <hexmire/control/Hexmire.h>
#include <hexmire/hosting/EventLoop.h>

#include "Benchmarks.h"
#include "Workloads.h"
#include "floor/PlainEquipment.h"
#include "floor/PlainHost.h"
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

namespace hexmire::bench {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 10s;

/// What is exchanged.
struct Exchange {
    std::string Name;
    std::int32_t Stream;
    std::int32_t Function;
    std::function<void(const SECSItemPtr& root)> Build;  ///< fills the primary; empty: no body
};

const ByteVector& RequestBody(const Exchange& exchange) {
    static const ByteVector kNone;
    return exchange.Build ? EventReport().Bytes : kNone;
}

void Plain(benchmark::State& state, const Exchange& exchange) {
    const auto open = static_cast<std::size_t>(state.range(0));
    const PlainEquipment equipment;
    PlainHost host(equipment.Port());
    ByteVector frames;
    for (std::size_t i = 0; i < open; ++i) {
        const auto frame = HsmsFrame(static_cast<std::uint8_t>(exchange.Stream | 0x80),
                                     static_cast<std::uint8_t>(exchange.Function),
                                     Data,
                                     static_cast<std::uint32_t>(i + 1),
                                     RequestBody(exchange));
        frames.insert(frames.end(), frame.begin(), frame.end());
    }
    for (auto _ : state) {
        host.Exchange(frames, open);
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

/// A folder for the log, gone when the benchmark is over.
class LogFolder {
public:
    LogFolder()
        : path_(std::filesystem::temp_directory_path() /
                ("hexmire-bench-" + std::to_string(::getpid()))) {
        std::filesystem::create_directories(path_);
    }
    LogFolder(const LogFolder&) = delete;
    LogFolder& operator=(const LogFolder&) = delete;
    ~LogFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    [[nodiscard]] std::string Path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

/// A control that is connected to the plain equipment.
class ConnectedHost {
public:
    ConnectedHost(const Exchange& exchange, bool messageLog)
        : control_(
              loop_.Platform({.ApplicationFolder = folder_.Path(), .MessageLog = messageLog})) {
        control_.ConnectionPortType(PortTypeHSMS_SS);
        control_.RemoteIPAddress("127.0.0.1");
        control_.RemoteIPPort(equipment_.Port());
        AddTemplate(exchange);
        control_.Events().Connect = [this] { connected_ = true; };
        control_.Events().ReceivedSecondary =
            [this](const SECSTransPtr&, std::int32_t, const std::string&) { ++received_; };
        control_.OpenPort();
        if (!loop_.RunUntil([this] { return connected_; }, kPatience)) {
            throw std::runtime_error("the equipment did not select");
        }
    }

    /// Sends so many and waits for as many replies.
    bool RoundTrips(std::int64_t count) {
        const std::int64_t wanted = received_ + count;
        for (std::int64_t i = 0; i < count; ++i)
            control_.NewSECSTransaction(1)->Send();
        return loop_.RunUntil([&] { return received_ == wanted; }, kPatience);
    }

private:
    void AddTemplate(const Exchange& exchange) {
        const SECSTransPtr trans = control_.SECSDictionary()->AddNewTrans(1);
        trans->Name(exchange.Name);
        trans->Primary()->Stream(exchange.Stream);
        trans->Primary()->Func(exchange.Function);
        trans->Secondary()->Stream(exchange.Stream);
        trans->Secondary()->Func(exchange.Function + 1);
        if (exchange.Build) exchange.Build(trans->Primary()->Root());
    }

    PlainEquipment equipment_;
    LogFolder folder_;
    EventLoop loop_;
    Hexmire control_;
    bool connected_ = false;
    std::int64_t received_ = 0;
};

void RoundTrip(benchmark::State& state, const Exchange& exchange, bool messageLog) {
    ConnectedHost host(exchange, messageLog);
    for (auto _ : state) {
        if (!host.RoundTrips(state.range(0))) {
            state.SkipWithError("a reply did not come");
            break;
        }
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

/// A text that comes back; the elements are its bytes.
void EchoText(benchmark::State& state) {
    const auto fill = [&](const SECSItemPtr& root) {
        const SECSItemPtr item = root->AddNew(1);
        item->Format(FormatAscii);
        item->Value(std::string(static_cast<std::size_t>(state.range(0)), 'x'));
    };
    ConnectedHost host({"S2F101", 2, 101, fill}, false);
    for (auto _ : state) {
        if (!host.RoundTrips(1)) {
            state.SkipWithError("a reply did not come");
            break;
        }
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

}  // namespace

void RegisterLinks() {
    for (const Exchange& exchange :
         {Exchange{"S1F1", 1, 1, {}}, Exchange{"S2F101", 2, 101, EventReport().Build}}) {
        const auto add = [&exchange](const char* subject, auto function) {
            benchmark::RegisterBenchmark((std::string(subject) + "/" + exchange.Name).c_str(),
                                         function)
                ->Arg(1)
                ->Arg(32)
                ->UseRealTime();
        };
        add("PlainRoundTrip", [exchange](benchmark::State& state) { Plain(state, exchange); });
        add("RoundTrip",
            [exchange](benchmark::State& state) { RoundTrip(state, exchange, false); });
        add("RoundTripLogged",
            [exchange](benchmark::State& state) { RoundTrip(state, exchange, true); });
    }
    benchmark::RegisterBenchmark("Growth/text: send a byte and take it back", EchoText)
        ->ArgsProduct({{1 << 10, 1 << 13, 1 << 16, 1 << 19, 1 << 22}})
        ->UseRealTime();
}

}  // namespace hexmire::bench
