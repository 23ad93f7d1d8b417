#include "commands/LogCommand.h"

#include "CommandLine.h"
#include "Failure.h"
#include "VisibleText.h"
#include "log/EntryPrinter.h"
#include "log/ExchangeSink.h"
#include "log/JsonLog.h"
#include "log/LogFiles.h"
#include "log/LogInput.h"
#include <pthread.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

namespace hexmire::program {

namespace {

constexpr long kPollNanoseconds = 200'000'000;
constexpr std::size_t kMostDrawn = 5'000;

LogFilter FilterOf(const LogOptions& options) {
    LogFilter filter;
    for (const std::string& text : options.Messages) {
        const auto name = ParseMessageName(text);
        if (!name) throw UsageError("--message: '" + text + "' is neither SxFy nor Sx");
        filter.Messages.push_back(*name);
    }
    if (!options.SystemBytes.empty()) {
        filter.SystemBytes = ParseSystemBytes(options.SystemBytes);
        if (!filter.SystemBytes)
            throw UsageError("--system-bytes: '" + options.SystemBytes +
                             "' is no number of 32 bits, decimal or 0x and hexadecimal");
    }
    const auto bound = [](const char* option, const std::string& text, auto parse) {
        std::optional<TimeBound> value;
        if (text.empty()) return value;
        value = parse(text);
        if (!value)
            throw UsageError(std::string(option) + ": '" + text +
                             "' is no time; expected 'yyyy-mm-dd', 'hh:mm[:ss[.cc]]' or both");
        return value;
    };
    filter.From = bound("--from", options.From, &ParseFirst);
    filter.To = bound("--to", options.To, &ParseLast);
    if (options.DeviceID >= 0) filter.DeviceID = options.DeviceID;
    filter.Errors = options.Errors;
    filter.Sent = options.Sent;
    filter.Received = options.Received;
    filter.SmlAlone = options.Sml;
    return filter;
}

LogSide SideOf(const std::string& text) {
    if (text == "host") return LogSide::Host;
    return text == "equipment" ? LogSide::Equipment : LogSide::Unknown;
}

void Check(const LogOptions& options) {
    if (options.Errors && (options.Latency || options.Unanswered))
        throw UsageError("--errors does not go with --latency and --unanswered");
    if (options.Sml && (options.Latency || options.Unanswered || !options.Plot.empty()))
        throw UsageError("--sml does not go with --latency, --unanswered and --plot");
    if (!options.Plot.empty() && !options.Plot.ends_with(".svg"))
        throw UsageError("--plot: '" + options.Plot + "' must end in .svg");
    if (options.Follow && (options.Files.size() != 1 || options.Files.front() == "-"))
        throw UsageError("--follow takes one FILE, and not the standard input");
    if (!options.Side.empty() && SideOf(options.Side) == LogSide::Unknown)
        throw UsageError("--side: '" + options.Side + "' is none of host|equipment");
}

void Warn(const std::string& text) {
    std::cerr << "hexmire: warning: " << VisibleText(text) << std::endl;
}

std::string Counted(std::int64_t count, const char* one, const char* several) {
    return std::to_string(count) + ' ' + (count == 1 ? one : several);
}

void Tell(const std::string& path, const LogReport& report) {
    const std::string file = path == "-" ? "the standard input" : path;
    if (report.Broken > 0)
        Warn(file + ": " + Counted(report.Broken, "line is", "lines are") +
             " no whole entry of a log, first line " + std::to_string(report.FirstBroken));
    if (report.StepsBack > 0) {
        std::array<char, 32> size{};
        std::snprintf(size.data(),
                      size.size(),
                      "%.2f s",
                      static_cast<double>(report.FirstStepSize) / kSecond);
        Warn(file + ": the clock goes back " + Counted(report.StepsBack, "time", "times") +
             ", first by " + size.data() + " at line " + std::to_string(report.FirstStepBack));
    }
    if (report.CutOff) Warn(file + ": the last entry is cut off");
}

/// Waits for the signals that end the program, and notices what is written meanwhile.
class SignalWait {
public:
    SignalWait() {
        sigemptyset(&signals_);
        sigaddset(&signals_, SIGINT);
        sigaddset(&signals_, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    }

    /// False once a signal has come.
    [[nodiscard]] bool Wait() const {
        const timespec time{.tv_sec = 0, .tv_nsec = kPollNanoseconds};
        return sigtimedwait(&signals_, nullptr, &time) < 0;
    }

private:
    sigset_t signals_{};
};

void ReadAll(const LogOptions& options, LogReader& reader) {
    std::vector<std::string> paths;
    for (const std::string& file : options.Files) {
        const std::vector<std::string> found =
            file == "-" ? std::vector<std::string>{file} : FindLogFiles(file);
        paths.insert(paths.end(), found.begin(), found.end());
    }
    const std::size_t whole = options.Follow ? paths.size() - 1 : paths.size();
    for (std::size_t i = 0; i < whole; ++i)
        Tell(paths[i], ReadLogFile(reader, paths[i]));
    if (options.Follow) {
        const SignalWait signals;
        FollowLog(
            reader, paths.back(), [&] { return signals.Wait(); }, &Tell);
    }
    reader.Finish();
    if (!std::cout) throw Failure("cannot write the standard output");
}

std::string TitleOf(const std::vector<std::string>& files) {
    std::string title;
    for (const std::string& file : files) {
        if (!title.empty()) title += ", ";
        title += file == "-" ? "standard input" : file.substr(file.find_last_of('/') + 1);
    }
    return title;
}

void WritePlot(const LogOptions& options, const SequenceDiagram& diagram) {
    std::ofstream file(options.Plot, std::ios::binary);
    diagram.Write(file, TitleOf(options.Files));
    file.close();
    if (!file) throw Failure("cannot write " + options.Plot);
    const auto drawn = static_cast<std::int64_t>(diagram.Drawn());
    if (diagram.Seen() > drawn)
        Warn("the first " + std::to_string(drawn) + " of " + std::to_string(diagram.Seen()) +
             " messages are drawn; --limit draws more, --from and --to choose others");
}

void RunExchange(const LogOptions& options) {
    SequenceDiagram diagram(SideOf(options.Side), options.Limit);
    ExchangeSink sink(std::cout,
                      {.Filter = FilterOf(options),
                       .Latency = options.Latency,
                       .Unanswered = options.Unanswered,
                       .Json = options.Json,
                       .Diagram = options.Plot.empty() ? nullptr : &diagram});
    LogReader reader(sink);
    ReadAll(options, reader);
    if (sink.Table().Beyond() > 0)
        Warn("the table is full: " + std::to_string(sink.Table().Beyond()) +
             " primaries are not in it");
    if (!options.Plot.empty()) WritePlot(options, diagram);
}

void RunEntries(const LogOptions& options) {
    std::unique_ptr<LogSink> sink;
    if (options.Json) {
        sink = std::make_unique<JsonLog>(std::cout, FilterOf(options));
    } else {
        sink = std::make_unique<EntryPrinter>(std::cout, FilterOf(options), ControlsOfOutput());
    }
    LogReader reader(*sink);
    ReadAll(options, reader);
}

void AddFilterOptions(Command command, LogOptions& options) {
    command.Option("--message", options.Messages, "Messages of this name, or of this stream")
        .TypeName("SxFy|Sx")
        .OneEachTime();
    command.Option("--system-bytes", options.SystemBytes, "Decimal, or 0x and hexadecimal")
        .TypeName("N");
    command.Option("--device-id", options.DeviceID, "The device ID of the header")
        .TypeName("N")
        .Range(0, 32767);
    command
        .Option("--from",
                options.From,
                "From this time on: yyyy-mm-dd, hh:mm[:ss[.cc]] on each day, or both")
        .TypeName("TIME");
    command.Option("--to", options.To, "Up to this time and all of it: 14:07 ends at 14:07:59.99")
        .TypeName("TIME");
    command.Flag("--errors",
                 options.Errors,
                 "Messages of stream 9 and function 0, received messages that could not be "
                 "decoded, replies that nobody waited for, broken lines");
    command.Flag("--sent", options.Sent, "Sent messages, and timer lines for them");
    command.Flag("--received", options.Received, "Received messages, and timer lines for them");
    command.Flag("--sml", options.Sml, "SML alone: no headers, lengths, bytes and timer lines");
}

}  // namespace

void AddLogOptions(Command command, LogOptions& options) {
    command
        .Option("FILE",
                options.Files,
                "A log: a daily file, a base name (NAME.log stands for all NAME_yyyy-mm-dd.log "
                "in order), or '-' for the standard input")
        .TypeName("")
        .Required();
    command.Flag("--follow",
                 options.Follow,
                 "Wait for more at the end, go on with the next day's file; ends on SIGINT or "
                 "SIGTERM");
    AddFilterOptions(command, options);
    command.Flag("--latency",
                 options.Latency,
                 "A table of the times from primaries to their replies instead of entries");
    command.Flag(
        "--unanswered", options.Unanswered, "The primaries that expected a reply and got none");
    command.Flag("--json", options.Json, "Write one JSON object a line");
    command.Option("--plot", options.Plot, "Draw the messages as a sequence diagram")
        .TypeName("FILE.svg");
    command.Option("--limit", options.Limit, "The most messages that are drawn")
        .TypeName("N")
        .ShowDefault()
        .Range(std::size_t{1}, kMostDrawn);
    command
        .Option("--side",
                options.Side,
                "Whose log it is, for the picture; else the R-bit tells, and it is the host's")
        .TypeName("host|equipment");
}

void RunLog(const LogOptions& options) {
    Check(options);
    if (options.Latency || options.Unanswered || !options.Plot.empty()) {
        RunExchange(options);
    } else {
        RunEntries(options);
    }
}

}  // namespace hexmire::program
