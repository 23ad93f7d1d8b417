#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>

namespace hexmire::fakes {

namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
    Pipe() {
        if (::pipe2(Ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    }
    int Ends[2] = {-1, -1};
};

[[noreturn]] void Become(const std::string& program,
                         const std::vector<std::string>& arguments,
                         const std::string& folder) {
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    if (folder.empty() || ::chdir(folder.c_str()) == 0) ::execv(program.c_str(), words.data());
    ::_exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program,
                           const std::vector<std::string>& arguments,
                           const std::string& folder) {
    const Pipe in;
    const Pipe out;
    const Pipe err;
    process_ = ::fork();
    if (process_ < 0) throw std::runtime_error("fork");
    if (process_ == 0) {
        ::dup2(in.Ends[0], STDIN_FILENO);
        ::dup2(out.Ends[1], STDOUT_FILENO);
        ::dup2(err.Ends[1], STDERR_FILENO);
        Become(program, arguments, folder);
    }
    ::close(in.Ends[0]);
    ::close(out.Ends[1]);
    ::close(err.Ends[1]);
    input_ = in.Ends[1];
    output_.Descriptor = out.Ends[0];
    errors_.Descriptor = err.Ends[0];
}

ChildProcess::~ChildProcess() {
    CloseInput();
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    for (const Stream& stream : {output_, errors_}) {
        if (stream.Descriptor >= 0) ::close(stream.Descriptor);
    }
}

void ChildProcess::Write(const std::string& text) {
    if (::write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        throw std::runtime_error("write");
}

void ChildProcess::CloseInput() {
    if (input_ >= 0) ::close(input_);
    input_ = -1;
}

void ChildProcess::Read(Stream& stream) {
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(stream.Descriptor, buffer.data(), buffer.size());
    if (count > 0) {
        stream.Text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
        ::close(stream.Descriptor);
        stream.Descriptor = -1;
    }
}

bool ChildProcess::ReadSome(Clock::time_point end) {
    if (output_.Descriptor < 0 && errors_.Descriptor < 0) return false;
    pollfd watched[] = {{.fd = output_.Descriptor, .events = POLLIN, .revents = 0},
                        {.fd = errors_.Descriptor, .events = POLLIN, .revents = 0}};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    if (left <= 0 || ::poll(watched, 2, static_cast<int>(left)) <= 0) return false;
    if (watched[0].revents != 0) Read(output_);
    if (watched[1].revents != 0) Read(errors_);
    return true;
}

std::optional<std::string> ChildProcess::ReadLine() {
    const auto end = Clock::now() + kBound;
    for (;;) {
        const std::size_t stop = output_.Text.find('\n', output_.Taken);
        if (stop != std::string::npos) {
            const std::string line = output_.Text.substr(output_.Taken, stop - output_.Taken);
            output_.Taken = stop + 1;
            return line;
        }
        if (!ReadSome(end)) return std::nullopt;
    }
}

bool ChildProcess::ReadUntil(const std::string& text) {
    while (const auto line = ReadLine()) {
        if (line->find(text) != std::string::npos) return true;
    }
    return false;
}

void ChildProcess::Signal(int signal) { ::kill(process_, signal); }

int ChildProcess::Wait() {
    const auto end = Clock::now() + kBound;
    while (ReadSome(end)) {
    }
    if (Clock::now() >= end) ::kill(process_, SIGKILL);
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace hexmire::fakes
