#pragma once

#include <hexmire/hosting/EventLoop.h>

#include "LineCompletion.h"

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace hexmire::program {

/// A terminal with a line that is typed below what is printed. The line is edited in a thread of
/// its own, so that a key half pressed does not stop the loop.
class Terminal {
public:
    /// Standard input and output are terminals that can move the cursor, and this process is in
    /// the foreground.
    [[nodiscard]] static bool IsThere();

    /// The loop outlives this object.
    explicit Terminal(EventLoop& loop);
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    /// The terminal is left as it was found.
    ~Terminal();

    /// What is written appears, at each flush, above the line that is typed. UTF-8.
    [[nodiscard]] std::ostream& Out() noexcept;

    /// Lines are kept in the history file, and come back from it; "" for none.
    void Start(LineCompletion completion, const std::string& historyFile);

    /// Shows the prompt and runs the loop until a line was typed. None for an end of the input
    /// (Ctrl-D in an empty line), and when `givenUp` holds: then what was typed is dropped.
    [[nodiscard]] std::optional<std::string> Next(const std::string& prompt,
                                                  const std::function<bool()>& givenUp);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

/// hexmire/history below $XDG_STATE_HOME or ~/.local/state, its folder made for the user alone; ""
/// when there is no such place.
[[nodiscard]] std::string HistoryFile();

}  // namespace hexmire::program
