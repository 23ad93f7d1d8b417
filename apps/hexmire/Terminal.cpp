#include "Terminal.h"

#include "Failure.h"
#include <histedit.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <mutex>
#include <sstream>
#include <string_view>
#include <thread>
#include <utility>

namespace hexmire::program {

namespace {

constexpr int kKeptLines = 1'000;

std::size_t WidthOf(std::wstring_view text) {
    std::size_t width = 0;
    for (const wchar_t letter : text)
        width += static_cast<std::size_t>(std::max(0, ::wcwidth(letter)));
    return width;
}

std::size_t Columns() {
    winsize size{};
    const bool known = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
}

/// In columns as the terminal is wide, the first one downwards first.
std::string InColumns(const std::vector<std::string>& words) {
    std::size_t widest = 1;
    for (const std::string& word : words)
        widest = std::max(widest, word.size() + 2);
    const std::size_t across = std::max<std::size_t>(1, Columns() / widest);
    const std::size_t rows = (words.size() + across - 1) / across;
    std::string text;
    for (std::size_t row = 0; row < rows; ++row) {
        std::string line;
        for (std::size_t i = row; i < words.size(); i += rows) {
            line += words[i];
            if (i + rows < words.size()) line.append(widest - words[i].size(), ' ');
        }
        text += line + '\n';
    }
    return text;
}

/// Lines read from one run to the next.
class LineHistory {
public:
    LineHistory() : history_(::history_init()) {
        HistEvent event{};
        ::history(history_, &event, H_SETSIZE, kKeptLines);
        ::history(history_, &event, H_SETUNIQUE, 1);
    }
    LineHistory(const LineHistory&) = delete;
    LineHistory& operator=(const LineHistory&) = delete;
    ~LineHistory() { ::history_end(history_); }

    [[nodiscard]] ::History* Get() const noexcept { return history_; }

    /// The file is cut to what is kept; lines are appended then, for other programs append too.
    void Load(const std::string& path) {
        path_ = path;
        HistEvent event{};
        if (path.empty() || ::history(history_, &event, H_LOAD, path.c_str()) < 0) return;
        ::history(history_, &event, H_SAVE, path.c_str());
    }

    void Add(const std::string& line) {
        HistEvent event{};
        if (line.find_first_not_of(" \t") == std::string::npos ||
            ::history(history_, &event, H_ENTER, line.c_str()) <= 0 || path_.empty())
            return;
        std::FILE* file = std::fopen(path_.c_str(), "a");
        if (file == nullptr) return;
        ::fchmod(::fileno(file), 0600);
        // So many lines before the newest are saved with it.
        ::history(history_, &event, H_NSAVE_FP, std::size_t{0}, file);
        std::fclose(file);
    }

private:
    ::History* history_;
    std::string path_;
};

}  // namespace

class Terminal::Impl {
public:
    explicit Impl(EventLoop& loop) : loop_(loop), buffer_(*this), out_(&buffer_) {}
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl();

    [[nodiscard]] std::ostream& Out() noexcept { return out_; }
    void Start(LineCompletion completion, const std::string& historyFile);
    std::optional<std::string> Next(const std::string& prompt,
                                    const std::function<bool()>& givenUp);
    void Print(const std::string& text);

private:
    /// Hands over what was written at each flush.
    class Buffer final : public std::stringbuf {
    public:
        explicit Buffer(Impl& owner) : owner_(owner) {}

    protected:
        int sync() override {
            if (!view().empty()) owner_.Print(str());
            str("");
            return 0;
        }

    private:
        Impl& owner_;
    };

    static Impl& Of(EditLine* line);
    static char* ShowPrompt(EditLine* line);
    static int ReadLetter(EditLine* line, wchar_t* letter);
    static unsigned char CompleteLine(EditLine* line, int);
    int WaitForLetter(wchar_t* letter);
    unsigned char Complete();
    void HideLine();
    void Edit();
    void Wake() const;

    EventLoop& loop_;
    Buffer buffer_;
    std::ostream out_;

    // The editing thread holds the mutex but while it waits: for a key or for the next prompt.
    std::mutex mutex_;
    std::condition_variable wanted_;
    std::string prompt_;
    bool isWanted_ = false;
    bool isEditing_ = false;
    bool isCancelled_ = false;
    bool isEnding_ = false;
    EditLine* line_ = nullptr;
    LineHistory history_;
    std::optional<LineCompletion> completion_;
    int wake_[2] = {-1, -1};
    std::thread editor_;

    // The loop's thread alone touches these.
    bool hasEnded_ = false;
    std::optional<std::string> typed_;
};

Terminal::Impl::~Impl() {
    if (editor_.joinable()) {
        {
            const std::scoped_lock lock(mutex_);
            isEnding_ = true;
        }
        wanted_.notify_one();
        Wake();
        editor_.join();
    }
    if (line_ != nullptr) ::el_end(line_);
    for (const int end : wake_) {
        if (end >= 0) ::close(end);
    }
}

void Terminal::Impl::Start(LineCompletion completion, const std::string& historyFile) {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // The program speaks UTF-8 at its edges.
    if (::pipe(wake_) != 0) throw Failure("cannot watch the terminal");
    completion_.emplace(std::move(completion));
    history_.Load(historyFile);
    line_ = ::el_init("hexmire", stdin, stdout, stderr);
    if (line_ == nullptr) throw Failure("cannot use the terminal");
    ::el_set(line_, EL_CLIENTDATA, static_cast<void*>(this));
    ::el_set(line_, EL_PROMPT, &ShowPrompt);
    ::el_set(line_, EL_EDITOR, "emacs");
    ::el_set(line_, EL_HIST, &::history, history_.Get());
    // Wide texts are kept as they are; narrow ones would be copied and never freed.
    ::el_wset(line_, EL_ADDFN, L"complete-line", L"Complete the word", &CompleteLine);
    ::el_set(line_, EL_BIND, "^I", "complete-line", nullptr);
    ::el_set(line_, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    ::el_set(line_, EL_GETCFN, &ReadLetter);
    ::el_source(line_, nullptr);  // What the user prefers: ~/.editrc.
    editor_ = std::thread([this] { Edit(); });
}

std::optional<std::string> Terminal::Impl::Next(const std::string& prompt,
                                                const std::function<bool()>& givenUp) {
    out_.flush();
    typed_.reset();
    hasEnded_ = false;
    {
        const std::scoped_lock lock(mutex_);
        prompt_ = prompt;
        isWanted_ = true;
        isCancelled_ = false;
    }
    wanted_.notify_one();
    const auto decided = [this] { return typed_ || hasEnded_; };
    constexpr auto kForever = std::chrono::nanoseconds::max();
    loop_.RunUntil([&] { return decided() || givenUp(); }, kForever);
    if (!decided()) {
        {
            const std::scoped_lock lock(mutex_);
            isCancelled_ = true;
        }
        Wake();
        // A line that was ended before the signal came is still taken, to be given up when it runs.
        loop_.RunUntil(decided, kForever);
    }
    return typed_;
}

void Terminal::Impl::Wake() const {
    const char byte = 0;
    static_cast<void>(::write(wake_[1], &byte, 1) == 1);
}

void Terminal::Impl::Edit() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wanted_.wait(lock, [this] { return isWanted_ || isEnding_; });
        if (isEnding_) return;
        isWanted_ = false;
        isEditing_ = true;
        ::el_resize(line_);
        ::el_set(line_, EL_PREP_TERM, 1);  // Before the prompt shows: no key is taken otherwise.
        int count = 0;
        const char* text = ::el_gets(line_, &count);
        isEditing_ = false;
        std::optional<std::string> typed;
        if (text != nullptr && count > 0) {
            typed.emplace(text, static_cast<std::size_t>(count));
            while (typed->ends_with('\n') || typed->ends_with('\r'))
                typed->pop_back();
            history_.Add(*typed);
        } else {
            std::fputs("\n", stdout);
            std::fflush(stdout);
        }
        loop_.Post([this, typed = std::move(typed)] {
            typed_ = typed;
            hasEnded_ = !typed;
        });
    }
}

void Terminal::Impl::Print(const std::string& text) {
    const std::scoped_lock lock(mutex_);
    if (isEditing_) HideLine();
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    if (isEditing_) ::el_set(line_, EL_REFRESH);
}

void Terminal::Impl::HideLine() {
    const LineInfoW* info = ::el_wline(line_);
    const std::wstring_view toCursor(info->buffer,
                                     static_cast<std::size_t>(info->cursor - info->buffer));
    const std::size_t rows = (prompt_.size() + WidthOf(toCursor)) / Columns();
    for (std::size_t i = 0; i < rows; ++i)
        std::fputs("\033[A", stdout);
    std::fputs("\r\033[J", stdout);
}

Terminal::Impl& Terminal::Impl::Of(EditLine* line) {
    void* data = nullptr;
    ::el_get(line, EL_CLIENTDATA, &data);
    return *static_cast<Impl*>(data);
}

char* Terminal::Impl::ShowPrompt(EditLine* line) { return Of(line).prompt_.data(); }

int Terminal::Impl::ReadLetter(EditLine* line, wchar_t* letter) {
    return Of(line).WaitForLetter(letter);
}

int Terminal::Impl::WaitForLetter(wchar_t* letter) {
    std::mbstate_t state{};
    for (;;) {
        mutex_.unlock();
        pollfd watched[] = {{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0},
                            {.fd = wake_[0], .events = POLLIN, .revents = 0}};
        const int ready = ::poll(watched, 2, -1);
        mutex_.lock();
        if (ready < 0 && errno != EINTR) return -1;
        char byte = 0;
        if (watched[1].revents != 0) static_cast<void>(::read(wake_[0], &byte, 1) == 1);
        if (isCancelled_ || isEnding_) return -1;
        if (watched[0].revents == 0) continue;
        const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return 0;
        const std::size_t used = std::mbrtowc(letter, &byte, 1, &state);
        if (used == static_cast<std::size_t>(-2)) continue;  // More bytes of this letter come.
        if (used == static_cast<std::size_t>(-1)) *letter = L'?';
        return 1;
    }
}

unsigned char Terminal::Impl::CompleteLine(EditLine* line, int) { return Of(line).Complete(); }

unsigned char Terminal::Impl::Complete() {
    const LineInfo* info = ::el_line(line_);
    const std::string_view toCursor(info->buffer,
                                    static_cast<std::size_t>(info->cursor - info->buffer));
    const Completions found = completion_->At(toCursor);
    if (found.Candidates.empty()) return CC_REFRESH_BEEP;
    std::string text = CommonBeginning(found.Candidates);
    const bool isLonger = text.size() > found.Replaced;
    if (found.Candidates.size() == 1) text += ' ';
    if (!isLonger && found.Candidates.size() > 1) {
        std::fputs(("\n" + InColumns(found.Candidates)).c_str(), stdout);
        std::fflush(stdout);
        return CC_REDISPLAY;
    }
    // Names are ASCII or ISO 8859-1: the editor counts letters, as many as what is replaced has.
    const std::string_view replaced = toCursor.substr(toCursor.size() - found.Replaced);
    const auto letters = std::ranges::count_if(
        replaced, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; });
    ::el_deletestr(line_, static_cast<int>(letters));
    ::el_insertstr(line_, text.c_str());
    return CC_REFRESH;
}

bool Terminal::IsThere() {
    const char* kind = std::getenv("TERM");
    const std::string_view name = kind == nullptr ? "" : kind;
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1 &&
           ::tcgetpgrp(STDIN_FILENO) == ::getpgrp() && !name.empty() && name != "dumb";
}

Terminal::Terminal(EventLoop& loop) : impl_(std::make_unique<Impl>(loop)) {}

Terminal::~Terminal() = default;

std::ostream& Terminal::Out() noexcept { return impl_->Out(); }

void Terminal::Start(LineCompletion completion, const std::string& historyFile) {
    impl_->Start(std::move(completion), historyFile);
}

std::optional<std::string> Terminal::Next(const std::string& prompt,
                                          const std::function<bool()>& givenUp) {
    return impl_->Next(prompt, givenUp);
}

std::string HistoryFile() {
    namespace fs = std::filesystem;
    const char* state = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    fs::path folder;
    if (state != nullptr && *state == '/') {
        folder = state;
    } else if (home != nullptr && *home == '/') {
        folder = fs::path(home) / ".local" / "state";
    } else {
        return {};
    }
    folder /= "hexmire";
    std::error_code error;
    if (fs::create_directories(folder, error)) fs::permissions(folder, fs::perms::owner_all, error);
    return fs::is_directory(folder, error) ? (folder / "history").string() : std::string();
}

}  // namespace hexmire::program
