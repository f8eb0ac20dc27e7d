#include "Console.h"
#include "DisplayText.h"
#include "ExitStatus.h"
#include "JsonDocument.h"
#include "commands/Command.h"
#include "process/Interruption.h"
#include "process/Supervisor.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <exception>
#include <numeric>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#ifndef XCODHOST_VERSION
#error "the build files must define the version"
#endif

namespace {

using namespace xcodhost;

constexpr std::array kCommands = {&kRunCommand,  &kValidateCommand, &kShowCommand,   &kVolumeCommand,
                                  &kInfoCommand, &kListCommand,     &kExplainCommand};

bool isJsonWanted(int argc, const char* const* argv) {
    return std::any_of(argv, argv + argc, [](std::string_view argument) { return argument == "--json"; });
}

/// Returns whether an argument is the name of a command that runs bundles. `main` calls this function before
/// it parses the command line: the fork of the supervisor process then copies less memory. If the argument is
/// not the command, the only effect is one unnecessary process.
bool mayRunBundles(int argc, const char* const* argv) {
    return std::any_of(argv, argv + argc, [](std::string_view argument) {
        return std::any_of(kCommands.begin(), kCommands.end(), [&](const Command* command) {
            return command->runsBundles && command->name == argument;
        });
    });
}

/// Returns how many characters must be inserted, removed or replaced to turn one word into the other.
std::size_t distance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < other.size(); ++j) {
            const std::size_t replaced = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// Returns the error for a word in the place of a command, or an empty string if there is no such word.
std::string unknownCommand(const CLI::App& app) {
    const CLI::App* parser = &app;
    while (!parser->get_subcommands().empty()) parser = parser->get_subcommands().front();
    const auto commands = parser->get_subcommands([](const CLI::App*) { return true; });
    const std::vector<std::string> words = parser->remaining();
    const auto word = std::find_if(words.begin(), words.end(),
                                   [](const std::string& one) { return one.rfind('-', 0) != 0; });
    if (commands.empty() || word == words.end()) return {};
    const auto* nearest = *std::min_element(commands.begin(), commands.end(), [&](auto* one, auto* other) {
        return distance(*word, one->get_name()) < distance(*word, other->get_name());
    });
    return "command " + PrintableQuoted(*word) + ": unknown; the nearest is " + nearest->get_name();
}

/// Returns the error of the parser as one line.
UsageError fromParser(const CLI::ParseError& error, const CLI::App& app) {
    std::string text = unknownCommand(app);
    if (text.empty()) text = error.what();
    for (char& c : text) {
        if (c == '\n') c = ' ';
    }
    return UsageError(text + "; see xcodhost --help");
}

/// Parses the command line and executes its command.
ExitStatus execute(int argc, const char* const* argv) {
    CLI::App app(
        "Loads an installer plug-in as the installer does, delivers events to it, and reports its effects.\n"
        "A directory stands for the startup volume.",
        "xcodhost");
    app.set_version_flag("--version", "xcodhost " XCODHOST_VERSION);
    app.require_subcommand(1);
    Work work;
    for (const Command* command : kCommands) {
        CLI::App* const parser = app.add_subcommand(command->name, command->summary);
        // Only the options of the given command are made.
        parser->preparse_callback(
            [&work, command, parser](std::size_t) { work = command->describe(*parser); });
    }
    // Set last: a command that is added later inherits the footer.
    app.footer("xcodhost COMMAND --help prints the options of a command, and examples.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) {
        std::ostringstream out;
        app.exit(request, out, out);
        WriteResult(out.str());
        return ExitStatus::kDone;
    } catch (const CLI::ParseError& error) {
        throw fromParser(error, app);
    }
    return work();
}

int reportFailure(ExitStatus status, const std::string& text, bool isJson) {
    Note(text);
    try {
        if (isJson) WriteResult(ErrorDocument(status, text));
    } catch (const Refusal&) { // standard output cannot be written; `Note` has reported the first error
    }
    return static_cast<int>(status);
}

/// Returns the exit status of `work`. Reports an exception and returns its exit status. Ends the process with
/// the signal if a signal interrupted `work`.
template <typename Function>
int guarded(bool isJson, Function work) {
    try {
        return work();
    } catch (const Interrupted& interrupted) {
        EndBySignal(interrupted.signal);
    } catch (const Refusal& refusal) {
        return reportFailure(refusal.status, refusal.what(), isJson);
    } catch (const std::exception& fault) {
        return reportFailure(ExitStatus::kToolFault, fault.what(), isJson);
    }
}

} // namespace

int main(int argc, char** argv) {
    PrepareStandardStreams();
    const bool isJson = isJsonWanted(argc, argv);
    const auto work = [&] { return guarded(isJson, [&] { return static_cast<int>(execute(argc, argv)); }); };
    return mayRunBundles(argc, argv) ? guarded(isJson, [&] { return RunInSupervisor(work); }) : work();
}
