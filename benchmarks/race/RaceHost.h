#pragma once

#include <hexmire/hexmire.h>

#include "../floor/Figures.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace hexmire::bench {

/// What the host of a race sends.
struct RaceMessage {
    std::string Name;
    std::int32_t Stream = 1;
    std::int32_t Function = 1;
    std::string BodyFile;  ///< without its extension; empty: no body
};

/// The message of a race by its name: a, b, w3a, w3b. Throws for any other.
RaceMessage RaceMessageNamed(std::string_view what);

/// A host as an application writes one: a control on the loop, one template, a handler that reads
/// every value of the reply.
class RaceHost {
public:
    struct Options {
        std::uint16_t Port = 0;
        RaceMessage Message;
        std::string DataDirectory;
        std::string LogFile;   ///< empty: no message log
        std::string& Failure;  ///< takes the first error that the control tells
    };
    RaceHost(EventLoop& loop, const Options& options);
    RaceHost(const RaceHost&) = delete;
    RaceHost& operator=(const RaceHost&) = delete;
    ~RaceHost() = default;

    [[nodiscard]] bool IsConnected() const noexcept { return connected_; }
    /// Sends a copy of the template.
    void Send();
    void Close() { control_.ClosePort(); }

    /// Told when a reply has been read, and when its primary was about to be made.
    std::function<void(Clock::time_point begin)> OnReply;

private:
    static constexpr std::size_t kMostOpen = 64;

    void AddTemplate(const Options& options);
    void TakeReply(const SECSTransPtr& trans);
    void Fail(const std::string& reason);

    hexmire::Hexmire control_;
    std::string name_;
    /// By system bytes, which follow one another.
    std::array<Clock::time_point, kMostOpen> begins_{};
    bool connected_ = false;
    std::string& failure_;
};

}  // namespace hexmire::bench
