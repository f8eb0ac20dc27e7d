#include "Console.h"
#include "ExitStatus.h"
#include "InfoCommand.h"
#include "Interruption.h"
#include "JsonDocument.h"
#include "Options.h"
#include "RunCommand.h"
#include "ShowCommand.h"
#include "VolumeCommand.h"

#include <exception>

namespace {

using namespace xcodhost;

struct Execute {
    ExitStatus operator()(const HelpText& help) const {
        WriteResult(help.text);
        return ExitStatus::Done;
    }
    ExitStatus operator()(const RunOptions& options) const { return RunCommand(options); }
    ExitStatus operator()(const ShowOptions& options) const { return ShowCommand(options); }
    ExitStatus operator()(const VolumeOptions& options) const { return VolumeCommand(options); }
    ExitStatus operator()(const InfoOptions& options) const { return InfoCommand(options); }
};

int Refused(ExitStatus status, const std::string& text, bool isJson) {
    Note(text);
    try {
        if (isJson) WriteResult(ErrorDocument(status, text));
    } catch (const Refusal&) { // nowhere to write it to; the line above has said what is wrong
    }
    return static_cast<int>(status);
}

} // namespace

int main(int argc, char** argv) {
    PrepareStandardStreams();
    const bool isJson = WantsJson(argc, argv);
    try {
        return static_cast<int>(std::visit(Execute(), ParseCommandLine(argc, argv)));
    } catch (const Interrupted& interrupted) {
        DieOf(interrupted.signal);
    } catch (const Refusal& refusal) {
        return Refused(refusal.status, refusal.what(), isJson);
    } catch (const std::exception& fault) {
        return Refused(ExitStatus::ToolFault, fault.what(), isJson);
    }
}
