// The only file that includes the parser of command lines, which takes long to compile.
#include "CommandLine.h"

#include "Failure.h"
#include <CLI/CLI.hpp>

#include <utility>

namespace hexmire::program {

namespace {

constexpr const char* kAdvice = " (see hexmire --help)";

}  // namespace

CommandOption& CommandOption::TypeName(const std::string& name) {
    option_->type_name(name);
    return *this;
}

CommandOption& CommandOption::Text(const std::string& text) {
    option_->option_text(text);
    return *this;
}

CommandOption& CommandOption::Check(
    const std::function<std::string(const std::string&)>& problemOf) {
    option_->check(problemOf);
    return *this;
}

CommandOption& CommandOption::Range(int least, int largest) {
    option_->check(CLI::Range(least, largest));
    return *this;
}

CommandOption& CommandOption::Range(float least, float largest) {
    option_->check(CLI::Range(least, largest));
    return *this;
}

CommandOption& CommandOption::Range(std::size_t least, std::size_t largest) {
    option_->check(CLI::Range(least, largest));
    return *this;
}

CommandOption& CommandOption::Required() {
    option_->required();
    return *this;
}

CommandOption& CommandOption::OneEachTime() {
    option_->allow_extra_args(false);
    return *this;
}

CommandOption& CommandOption::ShowDefault() {
    option_->capture_default_str();
    return *this;
}

CommandOption& CommandOption::Needs(const CommandOption& other) {
    option_->needs(other.option_);
    return *this;
}

CommandOption& CommandOption::Excludes(const CommandOption& other) {
    option_->excludes(other.option_);
    return *this;
}

Command Command::Add(const std::string& name, const std::string& description) const {
    command_->require_subcommand(1);
    return Command(*command_->add_subcommand(name, description));
}

void Command::Run(std::function<void()> action) const { command_->callback(std::move(action)); }

CommandOption Command::Flag(const std::string& name,
                            bool& target,
                            const std::string& description) const {
    return CommandOption(*command_->add_flag(name, target, description));
}

template <class Target>
CommandOption Command::Option(const std::string& name,
                              Target& target,
                              const std::string& description) const {
    return CommandOption(*command_->add_option(name, target, description));
}

// The kinds of targets that the commands have.
template CommandOption Command::Option(const std::string&, std::string&, const std::string&) const;
template CommandOption Command::Option(const std::string&,
                                       std::vector<std::string>&,
                                       const std::string&) const;
template CommandOption Command::Option(const std::string&, std::int32_t&, const std::string&) const;
template CommandOption Command::Option(const std::string&,
                                       std::uint16_t&,
                                       const std::string&) const;
template CommandOption Command::Option(const std::string&,
                                       std::uint32_t&,
                                       const std::string&) const;
template CommandOption Command::Option(const std::string&, std::size_t&, const std::string&) const;
template CommandOption Command::Option(const std::string&,
                                       std::optional<std::int32_t>&,
                                       const std::string&) const;
template CommandOption Command::Option(const std::string&,
                                       std::optional<float>&,
                                       const std::string&) const;

CommandOption Command::OptionFunction(const std::string& name,
                                      const std::function<void(const std::string&)>& read,
                                      const std::string& description) const {
    return CommandOption(*command_->add_option_function<std::string>(name, read, description));
}

CommandLine::CommandLine(const std::string& name,
                         const std::string& version,
                         const std::string& description)
    : program_(std::make_unique<CLI::App>(description, name)) {
    program_->set_version_flag("--version", name + ' ' + version, "Print the version");
    program_->set_help_flag("-h,--help", "Print this help");
}

CommandLine::~CommandLine() = default;

Command CommandLine::Top() { return Command(*program_); }

void CommandLine::Perform(int argc, const char* const* argv) {
    try {
        program_->parse(argc, argv);
    } catch (const CLI::Success& asked) {
        program_->exit(asked);  // Help and version.
    } catch (const CLI::RequiredError& error) {
        const auto unknown = program_->remaining();
        throw UsageError(
            (unknown.empty() ? error.what() : "unknown command '" + unknown.front() + "'") +
            kAdvice);
    } catch (const CLI::ParseError& error) {
        throw UsageError(std::string(error.what()) + kAdvice);
    }
}

}  // namespace hexmire::program
