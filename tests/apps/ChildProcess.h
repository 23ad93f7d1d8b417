#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace hexmire::fakes {

/// A real child process with pipes to its standard streams. It is killed, and waited for, at the
/// end.
class ChildProcess {
public:
    using Bound = std::chrono::milliseconds;
    /// Longer than anything here takes; it only ends a test that fails.
    static constexpr Bound kBound{30'000};

    explicit ChildProcess(const std::string& program,
                          const std::vector<std::string>& arguments = {},
                          const std::string& folder = {});
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    void Write(const std::string& text);
    void CloseInput();
    /// The next line of the standard output, without its end; none when that has ended or nothing
    /// came.
    std::optional<std::string> ReadLine();
    /// Reads up to and with the first line that contains the text; false when it does not come.
    bool ReadUntil(const std::string& text);

    void Signal(int signal);
    /// Reads both streams to their end and waits: exit status, or minus the signal that ended it.
    int Wait();

    /// Everything that was read so far.
    [[nodiscard]] const std::string& Output() const { return output_.Text; }
    [[nodiscard]] const std::string& Errors() const { return errors_.Text; }

private:
    struct Stream {
        int Descriptor = -1;
        std::string Text;
        std::size_t Taken = 0;
    };

    /// Waits for bytes of either stream and reads them; false at the end of both or of the time.
    bool ReadSome(std::chrono::steady_clock::time_point end);
    static void Read(Stream& stream);

    pid_t process_ = -1;
    int input_ = -1;
    Stream output_;
    Stream errors_;
};

}  // namespace hexmire::fakes
