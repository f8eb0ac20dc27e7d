#include "Command.h"
#include "Console.h"
#include "DisplayText.h"
#include "JsonDocument.h"
#include "SharedOptions.h"
#include "volume/Changes.h"
#include "volume/VolumeFolder.h"
#include "volume/VolumeState.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <utility>

namespace xcodhost {

namespace {

struct ShowOptions {
    std::string volume;
    bool isJson = false;
};

std::vector<std::string> problemsOf(const VolumeState& state) {
    std::vector<std::string> problems = state.problems;
    for (const auto& [domain, file] : state.preferences) {
        if (!file.problem.empty())
            problems.push_back(Printable(domain) + ": " + Printable(file.path) + ' ' + file.problem);
    }
    return problems;
}

template <typename Visit>
void forEachFlag(const VolumeState& state, Visit visit) {
    for (const auto& [path, item] : state.items) {
        for (const FinderFlagName& flag : kFinderFlagNames) {
            const int setting = (item.finderFlags & flag.mask) >> flag.shift;
            if (setting != 0) visit(path, flag, flag.shift == 0 ? 1 : setting);
        }
    }
}

std::string showText(const VolumeState& state) {
    std::string text;
    for (const auto& [domain, file] : state.preferences) {
        for (const auto& [key, value] : file.values) {
            text += Printable(domain) + ' ' + Printable(key) + ": " + Describe(value) + '\n';
        }
    }
    forEachFlag(state, [&](const std::string& path, const FinderFlagName& flag, int setting) {
        text += Printable(path) + ": " + Describe(flag) + ' ' + DescribeSetting(flag, setting) + '\n';
    });
    if (text.empty()) text = "no preferences, no Finder flags\n";
    for (const std::string& problem : problemsOf(state)) text += problem + '\n';
    return text;
}

std::string showJson(const VolumeState& state, const std::string& volume) {
    Json document = {{"command", "show"},
                     {"volume", volume},
                     {"preferences", Json::array()},
                     {"finderFlags", Json::array()},
                     {"problems", problemsOf(state)},
                     {"exitStatus", 0}};
    for (const auto& [domain, file] : state.preferences) {
        for (const auto& [key, value] : file.values) {
            document["preferences"].push_back(
                {{"domain", domain}, {"key", key}, {"value", ValueJson(value)}});
        }
    }
    forEachFlag(state, [&](const std::string& path, const FinderFlagName& flag, int setting) {
        Json one = FlagJson(flag);
        one["path"] = path;
        one["setting"] = setting;
        document["finderFlags"].push_back(std::move(one));
    });
    return DumpDocument(document);
}

ExitStatus show(const ShowOptions& options) {
    const VolumeState state = ReadVolume(VolumeFolder(options.volume));
    WriteResult(options.isJson ? showJson(state, options.volume) : showText(state));
    return ExitStatus::kDone;
}

Work describeShow(CLI::App& parser) {
    const auto options = std::make_shared<ShowOptions>();
    parser.add_option("--volume", options->volume, "Directory that stands for the startup volume")
        ->type_name("DIR")
        ->required();
    AddJson(parser, options->isJson);
    parser.footer("Example:\n  xcodhost show --volume vol");
    return [options] { return show(*options); };
}

} // namespace

const Command kShowCommand = {"show", "Print the preferences and Finder flags on a volume", &describeShow};

} // namespace xcodhost
