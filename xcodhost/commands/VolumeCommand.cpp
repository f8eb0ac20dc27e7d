#include "Command.h"
#include "Console.h"
#include "DisplayText.h"
#include "JsonDocument.h"
#include "SharedOptions.h"
#include "volume/SampleVolume.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace xcodhost {

namespace {

struct VolumeOptions {
    std::string folder;
    SampleVolume sample;
    bool isJson = false;
};

ExitStatus makeVolume(const VolumeOptions& options) {
    const std::size_t made = MakeSampleVolume(options.folder, options.sample);
    const std::string text =
        "DONE " + Printable(options.folder) + ": " +
        (made == 0 ? "already complete, nothing was changed" : Counted(made, "item") + " made") + '\n';
    const Json document = {
        {"command", "volume"}, {"volume", options.folder}, {"itemsMade", made}, {"exitStatus", 0}};
    WriteResult(options.isJson ? DumpDocument(document) : text);
    return ExitStatus::kDone;
}

Work describeVolume(CLI::App& parser) {
    const auto options = std::make_shared<VolumeOptions>();
    parser
        .add_option("DIR", options->folder, "A new directory, an empty one, or a sample volume to complete")
        ->type_name("")
        ->required();
    SampleVolume& sample = options->sample;
    auto* status = parser.add_option_function<std::string>(
        "--status", [&sample](const std::string& text) { sample.status = text; },
        "Contents of the updater's status file (default UpdatesEnabled; '' for an empty file)");
    parser
        .add_flag_callback(
            "--no-status", [&sample] { sample.status.reset(); }, "Make no status file")
        ->excludes(status);
    parser.add_flag_callback(
        "--no-folder", [&sample] { sample.hasFolder = false; }, "Make no /Applications/Korvane");
    parser.add_flag_callback(
        "--no-icon", [&sample] { sample.hasIcon = false; }, "Make no icon file in that folder");
    AddJson(parser, options->isJson);
    parser.footer("Examples:\n"
                  "  xcodhost volume vol\n"
                  "  xcodhost volume vol --status 'UpdatesDisabled' --no-icon");
    return [options] { return makeVolume(*options); };
}

} // namespace

const Command kVolumeCommand = {"volume", "Make or complete a sample startup volume", &describeVolume};

} // namespace xcodhost
