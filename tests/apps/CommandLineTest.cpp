#include "../fakes/HeapInUse.h"
#include "../hosting/TempFolder.h"
#include "ChildProcess.h"
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace hexmire {
namespace {

using fakes::ChildProcess;
using fakes::TempFolder;
using testing::HasSubstr;
using testing::StartsWith;

using Words = std::vector<std::string>;

std::string Text(const Words& words) {
    std::string text;
    for (const std::string& word : words)
        text += ' ' + word;
    return text;
}

void ExpectFailure(const Words& words, int status, const std::string& reason) {
    SCOPED_TRACE(Text(words));
    ChildProcess program(HEXMIRE_PROGRAM, words);
    EXPECT_EQ(program.Wait(), status);
    EXPECT_THAT(program.Output(), testing::Not(HasSubstr("hexmire:")));
    EXPECT_THAT(program.Errors(), StartsWith("hexmire: "));
    EXPECT_THAT(program.Errors(), HasSubstr(reason));
    EXPECT_EQ(std::count(program.Errors().begin(), program.Errors().end(), '\n'), 1)
        << program.Errors();
}

TEST(CommandLine, what_is_not_understood_ends_with_status_2_and_one_line) {
    const struct {
        Words Line;
        std::string Reason;
    } kCases[] = {
        {{}, "subcommand is required"},
        {{"nonsense"}, "nonsense"},
        {{"demo", "--nonsense"}, "--nonsense"},
        {{"demo", "extra"}, "extra"},
        {{"demo", "--log", "x.txt"}, "must end in .log"},
        {{"demo", "--log", ".log"}, "must end in .log"},
        {{"demo", "--log", "x.log", "--no-log"}, "--no-log"},
        {{"demo", "--dictionary"}, "--dictionary"},
        {{"host"}, "--remote"},
        {{"host", "--mode", "passive"}, "--local"},
        {{"equipment"}, "--local"},
        {{"equipment", "--mode", "active"}, "--remote"},
        {{"host", "--remote", "127.0.0.1"}, "ADDR:PORT"},
        {{"host", "--remote", "127.0.0.1:0"}, "1 to 65535"},
        {{"host", "--remote", "127.0.0.1:65536"}, "1 to 65535"},
        {{"host", "--remote", ":5000"}, "ADDR:PORT"},
        {{"host", "--remote", "::1:5000"}, "ADDR:PORT"},
        {{"host", "--port-type", "carrier-pigeon"}, "rs232|hsms|tcpip|hsms-ss"},
        {{"host", "--mode", "lazy"}, "active|passive|alternating"},
        {{"host", "--device-id", "32768"}, "--device-id"},
        {{"host", "--device-id", "-1"}, "--device-id"},
        {{"host", "--port-type", "rs232"}, "an rs232 link needs --serial DEVICE"},
        {{"host", "--port-type", "rs232", "--serial"}, "--serial"},
        {{"host", "--port-type", "rs232", "--serial", "x", "--mode", "active"},
         "--mode is not for rs232 links"},
        {{"host", "--port-type", "rs232", "--serial", "x", "--local", "127.0.0.1:1"},
         "--local is not for rs232 links"},
        {{"host", "--port-type", "rs232", "--serial", "x", "--remote", "127.0.0.1:1"},
         "--remote is not for rs232 links"},
        {{"equipment", "--port-type", "rs232", "--serial", "x", "--allow", "::1"},
         "--allow is not for rs232 links"},
        {{"host", "--remote", "127.0.0.1:1", "--serial", "x"}, "--serial is for rs232 links alone"},
        {{"host", "--port-type", "tcpip", "--remote", "127.0.0.1:1", "--baud", "9600"},
         "--baud is for rs232 links alone"},
        {{"host", "--baud", "9601"}, "'9601' is none of 150|300|1200|2400|4800|9600|19200"},
        {{"host", "--port-type", "tcpip"}, "an active side needs --remote"},
        {{"equipment", "--port-type", "tcpip"}, "a passive side needs --local"},
        {{"host", "--mode", "alternating", "--local", "127.0.0.1:1"},
         "an alternating side needs --remote"},
        {{"equipment", "--mode", "alternating", "--remote", "127.0.0.1:1"},
         "an alternating side needs --local"},
        {{"host", "--retry", "32"}, "--retry"},
        {{"host", "--retry", "-1"}, "--retry"},
        {{"host", "--t1", "0.09"}, "--t1"},
        {{"host", "--t1", "10.1"}, "--t1"},
        {{"host", "--t2", "0.19"}, "--t2"},
        {{"host", "--t2", "25.1"}, "--t2"},
        {{"host", "--t4", "0"}, "--t4"},
        {{"host", "--t4", "121"}, "--t4"},
        {{"host", "--t3", "0"}, "--t3"},
        {{"host", "--t3", "121"}, "--t3"},
        {{"host", "--t5", "241"}, "--t5"},
        {{"host", "--t6", "x"}, "--t6"},
        {{"host", "--t7", "241"}, "--t7"},
        {{"host", "--t8", "121"}, "--t8"},
        {{"host", "--allow", "tool-7"}, "no numeric IPv4 or IPv6 address"},
        {{"decode", "--header", "--framing", "foo", "00"},
         "--framing: 'foo' is none of message|hsms|secs1"},
        {{"host", "--remote", "127.0.0.1:1", "--trace", ""}, "--trace: a name has no characters"},
        {{"host", "--remote", "127.0.0.1:1", "--script", ""}, "--script: a name has no"},
        {{"equipment", "--local", "127.0.0.1:1", "--model", ""}, "--model: a name has no"},
        {{"equipment", "--local", "127.0.0.1:1", "--misbehave", "S1F2 silent"},
         "'S1F2' is no primary"},
        {{"version", "extra"}, "extra"},
    };
    for (const auto& one : kCases)
        ExpectFailure(one.Line, 2, one.Reason);
}

TEST(CommandLine, what_cannot_be_done_ends_with_status_1_and_one_line) {
    const TempFolder folder;
    const std::string bad = folder.Write("bad.script", "# a comment\n\nfetch S1F1\n");
    const Words host = {"host", "--remote", "127.0.0.1:1", "--no-log"};
    const auto with = [&](Words more) {
        more.insert(more.begin(), host.begin(), host.end());
        return more;
    };
    const std::string connect = folder.Write("connect.script", "connect\n");
    ExpectFailure(
        {"equipment", "--local", "300.1.1.1:5000", "--no-log", "--json", "--script", connect},
        1,
        "connect.script:1: no connection: 3056 ");
    ExpectFailure({"host",
                   "--port-type",
                   "rs232",
                   "--serial",
                   folder / "no-port",
                   "--no-log",
                   "--json",
                   "--script",
                   connect},
                  1,
                  "connect.script:1: no connection: 3060 ");
    ExpectFailure(with({"--script", folder / "missing"}), 1, "cannot read the script");
    ExpectFailure(with({"--script", folder.Path()}), 1, "cannot read the script");
    ExpectFailure(with({"--script", "/proc/self/mem"}),
                  1,
                  "cannot read the script /proc/self/mem: Input/output error");
    ExpectFailure({"encode", "/proc/self/mem"}, 1, "cannot read /proc/self/mem: Input/output");
    ExpectFailure({"decode", "/proc/self/mem"}, 1, "cannot read /proc/self/mem: Input/output");
    ExpectFailure({"dictionary", "check", "/proc/self/mem"},
                  1,
                  "cannot read the dictionary /proc/self/mem: Input/output error");
    ExpectFailure({"equipment", "--local", "127.0.0.1:1", "--no-log", "--model", "/proc/self/mem"},
                  1,
                  "cannot read the model /proc/self/mem: Input/output error");
    ExpectFailure({"host", "--remote", "127.0.0.1:1", "--log", folder / "a/b/x.log"},
                  1,
                  "cannot write the message log " + (folder / "a/b/x_"));
    ExpectFailure({"demo", "--log", folder / "a/b/x.log"}, 1, "cannot write the message log");
    ExpectFailure({"dictionary", "list", "--dictionary", bad},
                  1,
                  "cannot read the dictionary " + bad + ": 2001");
    ExpectFailure({"dictionary", "show", "S1F1", "--dictionary", bad},
                  1,
                  "cannot read the dictionary " + bad);
    ExpectFailure(with({"--script", bad}), 2, "bad.script:3: unknown command 'fetch'");
    ExpectFailure(with({"--script", "/dev/zero"}), 2, "/dev/zero: a line is longer than 16 MiB");
    ExpectFailure(with({"--dictionary", folder / "missing.xml"}), 1, "no such dictionary file");
}

std::pair<int, std::string> RunInShell(const std::string& line) {
    ChildProcess program("/bin/sh", {"-c", std::string("exec " HEXMIRE_PROGRAM " ") + line});
    const int status = program.Wait();
    return {status, program.Errors()};
}

TEST(CommandLine, standard_input_that_cannot_be_read_is_told) {
    const std::string host = "host --remote 127.0.0.1:1 --no-log --script - ";
    EXPECT_EQ(
        RunInShell(host + "</"),
        std::pair(1, std::string("hexmire: cannot read the script <stdin>: Is a directory\n")));
    for (const char* command : {"decode", "encode -", "dictionary from-sml -"})
        EXPECT_EQ(
            RunInShell(std::string(command) + " </"),
            std::pair(1, std::string("hexmire: cannot read the standard input: Is a directory\n")))
            << command;
}

TEST(CommandLine, standard_streams_may_be_closed) {
    const std::string host = "host --remote 127.0.0.1:1 --no-log --script - ";
    EXPECT_EQ(RunInShell(host + "<&-"), std::pair(0, std::string()));
    EXPECT_EQ(RunInShell("version >&-"),
              std::pair(1, std::string("hexmire: cannot write to the standard output\n")));
    EXPECT_EQ(RunInShell("host <&- >&- 2>&-"), std::pair(2, std::string()));
}

#ifndef HEXMIRE_ADDRESS_SANITIZER  // It takes more addresses than any bound leaves.
TEST(CommandLine, memory_that_is_missing_is_told) {
    ChildProcess program("/bin/sh",
                         {"-c", "ulimit -v 300000; exec " HEXMIRE_PROGRAM " encode /dev/zero"});
    EXPECT_EQ(program.Wait(), 1);
    EXPECT_EQ(program.Errors(), "hexmire: out of memory\n");
}
#endif

TEST(CommandLine, what_is_told_moves_no_cursor) {
    const TempFolder folder;
    const std::string script = folder.Write("s", "fetch\x1B[2J\xFF\xC2\x9B\xC3\xA9\n");
    ExpectFailure({"host", "--remote", "127.0.0.1:1", "--no-log", "--script", script},
                  2,
                  "unknown command 'fetch\\x1B[2J\\xFF\\x9B\xC3\xA9'");
}

TEST(CommandLine, log_in_its_own_place_that_cannot_be_written_is_a_warning) {
    // The place is beside the program: a copy of it stands where a file has the name of the folder.
    const TempFolder folder;
    std::filesystem::copy_file(HEXMIRE_PROGRAM, folder / "hexmire");
    folder.Write("Log", "");
    const std::string script = folder.Write("s", "");
    ChildProcess program(folder / "hexmire",
                         {"host",
                          "--remote",
                          "127.0.0.1:1",
                          "--dictionary",
                          HEXMIRE_SOURCE_DIR "/dictionaries/Default.xml",
                          "--script",
                          script});
    EXPECT_EQ(program.Wait(), 0);
    EXPECT_THAT(program.Errors(),
                StartsWith("hexmire: warning: cannot write the message log " + (folder / "Log/")));
    EXPECT_EQ(std::count(program.Errors().begin(), program.Errors().end(), '\n'), 1);
}

TEST(CommandLine, output_that_cannot_be_written_ends_with_status_1) {
    const TempFolder folder;
    const std::string sml = folder.Write("one.sml", "S1F1 W.\n");
    for (const std::string& line : {std::string("version"),
                                    std::string("--version"),
                                    std::string("--help"),
                                    std::string("host --help"),
                                    std::string("dictionary list"),
                                    std::string("dictionary show S1F1"),
                                    "dictionary from-sml " + sml,
                                    std::string("demo --no-log --help")}) {
        SCOPED_TRACE(line);
        ChildProcess program(
            "/bin/sh", {"-c", std::string("exec " HEXMIRE_PROGRAM " ") + line + " >/dev/full"});
        EXPECT_EQ(program.Wait(), 1);
        EXPECT_EQ(program.Errors(), "hexmire: cannot write to the standard output\n");
    }
}

TEST(CommandLine, second_signal_ends_a_program_that_waits_for_a_file) {
    const TempFolder folder;
    const std::string script = folder / "pipe";
    ASSERT_EQ(::mkfifo(script.c_str(), 0600), 0);
    ChildProcess program(HEXMIRE_PROGRAM,
                         {"host", "--remote", "127.0.0.1:1", "--no-log", "--script", script});
    const int writer = ::open(script.c_str(), O_WRONLY | O_CLOEXEC);  // Waits for the reader.
    ASSERT_GE(writer, 0);
    program.Signal(SIGTERM);
    program.Signal(SIGINT);
    EXPECT_THAT(program.Wait(), testing::AnyOf(128 + SIGTERM, 128 + SIGINT));
    ::close(writer);
}

TEST(CommandLine, script_tells_what_is_wrong_in_one_line) {
    const TempFolder folder;
    const struct {
        const char* Script;
        int Status;
        const char* Reason;
    } kCases[] = {
        {"# x\nfetch S1F1\n", 2, "s:2: unknown command 'fetch' (see help)"},
        {"quit\nwait\n", 2, "s:2: expected 'wait SECONDS'"},  // all is read before quit is done
        {"send\nS1F3 W\n<L\n  <U1 256>\n>.\n", 2, "s:4:7: expected a whole number from 0 to 255"},
        {"send S1F3 W <L\n", 2, "found the end of the text"},
        {"set T9Timeout 1\n", 2, "s:1: unknown property 'T9Timeout'"},
        {"set T3Timeout 0\n", 1, "s:1: cannot set T3Timeout to 0: 1051 "},
        {"send S99F99\n", 1, "s:1: cannot send S99F99: 1025 "},
        {"show S99F99\n", 1, "s:1: no template 'S99F99'"},
        {"list S99*\n", 1, "s:1: no template fits 'S99*'"},
        {"reply S1F2 .\n", 1, "s:1: no received primary waits for S1F2"},
        {"reply S99F99\n", 1, "s:1: cannot reply S99F99: 1025 "},
        {"expect S1F1 0\n", 1, "s:1: S1F1 did not come"},
        {"send S1F1\n", 1, "s:1: cannot send S1F1: 3040 "},
        {"connect 0\n", 1, "s:1: no connection"},
        {"help fetch\n", 1, "s:1: no command 'fetch'"},
    };
    for (const auto& one : kCases) {
        SCOPED_TRACE(one.Script);
        const std::string script = folder.Write("s", one.Script);
        ExpectFailure({"host", "--remote", "127.0.0.1:1", "--no-log", "--json", "--script", script},
                      one.Status,
                      one.Reason);
    }
}

TEST(CommandLine, dictionary_that_cannot_be_read_is_told) {
    const TempFolder folder;
    for (const char* text : {"", "no XML", "<D><Trans></D>"}) {
        SCOPED_TRACE(text);
        const std::string bad = folder.Write("bad.xml", text);
        ExpectFailure({"equipment", "--local", "127.0.0.1:1", "--no-log", "--dictionary", bad},
                      1,
                      "cannot read the dictionary " + bad);
    }
}

TEST(CommandLine, help_is_there_for_every_command) {
    const struct {
        Words Line;
        Words Texts;
    } kCases[] = {
        {{"--help"},
         {"demo", "host", "equipment", "decode", "encode", "dictionary", "version", "--version"}},
        {{"-h"}, {"demo"}},
        {{"demo", "--help"},
         {"--log", "--no-log", "--dictionary", "--trace", "--pcap", "--recipes FOLDER"}},
        {{"host", "--help"},
         {"--port-type",
          "rs232|hsms|tcpip|hsms-ss",
          "--mode",
          "active|passive|alternating",
          "--local",
          "--remote",
          "--serial DEVICE",
          "--baud",
          "150|300|1200|2400|4800|9600|19200",
          "--retry",
          "--device-id",
          "--t1",
          "--t2",
          "--t3",
          "--t4",
          "--t5",
          "--t6",
          "--t7",
          "--t8",
          "--allow",
          "--system-bytes-check",
          "--log",
          "--no-log",
          "--trace FOLDER",
          "--pcap FOLDER",
          "--recipes FOLDER",
          "--dictionary",
          "--script",
          "--json",
          "expect SxFy [SECONDS]"}},
        {{"equipment", "--help"}, {"--local", "--script", "--json"}},
        {{"decode", "--help"},
         {"FILE|HEX", "--binary", "--header", "--framing", "--exact", "--json"}},
        {{"encode", "--help"},
         {"FILE|SML", "--binary", "--header", "--length", "--device-id", "--system-bytes"}},
        {{"dictionary", "--help"}, {"check", "list", "show", "from-sml"}},
        {{"dictionary", "check", "--help"}, {"FILE", "--json"}},
        {{"dictionary", "list", "--help"}, {"PATTERN", "--dictionary", "--json"}},
        {{"dictionary", "show", "--help"}, {"NAME", "--dictionary"}},
        {{"dictionary", "from-sml", "--help"}, {"FILE", "--latin1"}},
        {{"log", "--help"},
         {"FILE",
          "--follow",
          "--message SxFy|Sx",
          "--system-bytes",
          "--from TIME",
          "--latency",
          "--unanswered",
          "--plot FILE.svg"}},
        {{"version", "--help"}, {"version"}},
    };
    for (const auto& one : kCases) {
        SCOPED_TRACE(Text(one.Line));
        ChildProcess program(HEXMIRE_PROGRAM, one.Line);
        EXPECT_EQ(program.Wait(), 0);
        EXPECT_EQ(program.Errors(), "");
        for (const std::string& text : one.Texts)
            EXPECT_THAT(program.Output(), HasSubstr(text));
    }
}

TEST(CommandLine, version_is_printed_both_ways) {
    for (const char* word : {"version", "--version"}) {
        ChildProcess program(HEXMIRE_PROGRAM, {word});
        EXPECT_EQ(program.Wait(), 0);
        EXPECT_EQ(program.Output(), "hexmire " HEXMIRE_VERSION "\n");
        EXPECT_EQ(program.Errors(), "");
    }
}

}  // namespace
}  // namespace hexmire
