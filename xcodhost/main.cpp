#include "Console.h"
#include "ExitStatus.h"
#include "JsonDocument.h"
#include "commands/ChecksCommand.h"
#include "commands/InfoCommand.h"
#include "commands/Options.h"
#include "commands/RunCommand.h"
#include "commands/ShowCommand.h"
#include "commands/ValidateCommand.h"
#include "commands/VolumeCommand.h"
#include "process/Interruption.h"
#include "process/Supervisor.h"

#include <algorithm>
#include <exception>
#include <string_view>

namespace {

using namespace xcodhost;

struct Execute {
    ExitStatus operator()(const HelpText& help) const {
        WriteResult(help.text);
        return ExitStatus::kDone;
    }
    ExitStatus operator()(const RunOptions& options) const { return RunCommand(options); }
    ExitStatus operator()(const ValidateOptions& options) const { return ValidateCommand(options); }
    ExitStatus operator()(const ListChecksOptions& options) const { return ListChecksCommand(options); }
    ExitStatus operator()(const ExplainOptions& options) const { return ExplainCommand(options); }
    ExitStatus operator()(const ShowOptions& options) const { return ShowCommand(options); }
    ExitStatus operator()(const VolumeOptions& options) const { return VolumeCommand(options); }
    ExitStatus operator()(const InfoOptions& options) const { return InfoCommand(options); }
};

/// Returns whether an argument is the name of a command that runs bundles. `main` calls this function before
/// it parses the command line: the fork of the supervisor process then copies less memory. If the argument is
/// not the command, the only effect is one unnecessary process.
bool mayRunBundles(int argc, const char* const* argv) {
    return std::any_of(argv, argv + argc,
                       [](std::string_view argument) { return argument == "run" || argument == "validate"; });
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
template <typename Work>
int guarded(bool isJson, Work work) {
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
    const bool isJson = WantsJson(argc, argv);
    const auto work = [&] {
        return guarded(isJson,
                       [&] { return static_cast<int>(std::visit(Execute(), ParseCommandLine(argc, argv))); });
    };
    return mayRunBundles(argc, argv) ? guarded(isJson, [&] { return RunInSupervisor(work); }) : work();
}
