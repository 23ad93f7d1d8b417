#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace hexmire::program {

/// An option of a command, or what it takes by its place. A copy is the same option.
class CommandOption {
public:
    explicit CommandOption(CLI::Option& option) : option_(&option) {}

    /// How the help calls its value.
    CommandOption& TypeName(const std::string& name);
    /// What the help shows behind the option's name, in place of everything else.
    CommandOption& Text(const std::string& text);
    /// `problemOf` tells what is wrong with a value, "" when nothing is.
    CommandOption& Check(const std::function<std::string(const std::string&)>& problemOf);
    /// Both ends included.
    CommandOption& Range(int least, int largest);
    CommandOption& Range(float least, float largest);
    CommandOption& Range(std::size_t least, std::size_t largest);
    CommandOption& Required();
    /// Of values, one alone follows each time that the option is given.
    CommandOption& OneEachTime();
    /// The help shows what the target holds now.
    CommandOption& ShowDefault();
    CommandOption& Needs(const CommandOption& other);
    CommandOption& Excludes(const CommandOption& other);

private:
    CLI::Option* option_;
};

/// A command of the program with its options. A copy is the same command. Targets and actions are
/// used while the command line is read. A name without dashes is taken by its place.
class Command {
public:
    explicit Command(CLI::App& command) : command_(&command) {}

    /// One of the commands below this one, of which one must be given.
    [[nodiscard]] Command Add(const std::string& name, const std::string& description) const;
    /// What the command does, once all of the command line has been read.
    void Run(std::function<void()> action) const;

    // The target keeps its value when the option is not given.
    CommandOption Flag(const std::string& name, bool& target, const std::string& description) const;
    template <class Target>
    CommandOption Option(const std::string& name,
                         Target& target,
                         const std::string& description) const;
    /// `read` gets the value, which has passed every check.
    CommandOption OptionFunction(const std::string& name,
                                 const std::function<void(const std::string&)>& read,
                                 const std::string& description) const;

private:
    CLI::App* command_;
};

/// The command line of the program.
class CommandLine {
public:
    CommandLine(const std::string& name,
                const std::string& version,
                const std::string& description);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    [[nodiscard]] Command Top();

    /// Runs the command that is asked for, or writes the help or version to the standard output.
    /// Throws UsageError for what is not understood, and what the command throws.
    void Perform(int argc, const char* const* argv);

private:
    std::unique_ptr<CLI::App> program_;
};

}  // namespace hexmire::program
