#include "Command.h"
#include "Console.h"
#include "DisplayText.h"
#include "JsonDocument.h"
#include "SharedOptions.h"
#include "bundle/BundleInfo.h"
#include "contract/PluginContract.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <set>
#include <strings.h>

namespace xcodhost {

namespace {

/// Returns whether this is the identifier of installer plug-ins. Ignores case.
bool isPluginType(const std::string& identifier) {
    return strcasecmp(identifier.c_str(), Describe(kPluginType).c_str()) == 0;
}

std::vector<std::string> architecturesOf(const BundleExecutable& executable) {
    std::vector<std::string> names;
    for (const BundleImage& image : executable.images) {
        if (!image.architecture.empty()) names.push_back(image.architecture);
    }
    return names;
}

std::string executableText(const BundleExecutable& executable) {
    std::string text = "executable  " + Printable(executable.path) + ": " + executable.format + ' ' +
                       ListText(architecturesOf(executable)) + '\n';
    for (const BundleImage& image : executable.images) {
        const std::string whose = executable.images.size() > 1 ? " of " + image.architecture : "";
        text += "  exports" + whose + "  " + ListText(image.exports) + '\n';
        if (!image.problem.empty()) text += "  problem" + whose + "  " + image.problem + '\n';
    }
    if (!executable.problem.empty()) text += "  problem  " + executable.problem + '\n';
    return text;
}

Json textOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json executableJson(const BundleExecutable& executable) {
    Json images = Json::array();
    std::set<std::string> exports;
    std::string problem = executable.problem;
    for (const BundleImage& image : executable.images) {
        exports.insert(image.exports.begin(), image.exports.end());
        if (problem.empty()) problem = image.problem;
        images.push_back({{"architecture", textOrNull(image.architecture)},
                          {"exports", image.exports},
                          {"problem", textOrNull(image.problem)}});
    }
    return {{"platform", executable.platform},
            {"path", executable.path},
            {"format", executable.format},
            {"architectures", architecturesOf(executable)},
            {"exports", exports},
            {"images", std::move(images)},
            {"problem", textOrNull(problem)}};
}

std::string infoText(const BundleInfo& info, const Style& style) {
    std::string text = style.Heading("bundle  " + Printable(info.path)) + '\n';
    for (std::size_t i = 0; i < info.propertyList.keys.size(); ++i) {
        const std::string& key = info.propertyList.keys[i];
        if (key == "CFPlugInFactories" || key == "CFPlugInTypes") continue;
        text += Printable(key) + ": " + Printable(info.propertyList.values[i].Describe()) + '\n';
    }
    for (const BundleFactory& factory : info.factories) {
        text += "factory  " + Printable(factory.identifier) + ": " + Printable(factory.function) + '\n';
    }
    for (const BundleType& type : info.types) {
        text += "type  " + Printable(type.identifier) +
                (isPluginType(type.identifier) ? " (installer plug-in)" : "") + ": " +
                ListText(type.factories) + '\n';
    }
    for (const BundleExecutable& executable : info.executables) text += executableText(executable);
    return text;
}

std::string infoJson(const BundleInfo& info) {
    Json document = {{"command", "info"},
                     {"bundle", info.path},
                     {"propertyList", ValueJson(info.propertyList)["value"]},
                     {"factories", Json::array()},
                     {"types", Json::array()},
                     {"executables", Json::array()},
                     {"exitStatus", 0}};
    for (const BundleFactory& factory : info.factories) {
        document["factories"].push_back({{"identifier", factory.identifier}, {"function", factory.function}});
    }
    for (const BundleType& type : info.types) {
        document["types"].push_back({{"identifier", type.identifier}, {"factories", type.factories}});
    }
    for (const BundleExecutable& executable : info.executables) {
        document["executables"].push_back(executableJson(executable));
    }
    return DumpDocument(document);
}

struct InfoOptions {
    std::string bundle;
    bool isJson = false;
};

ExitStatus printInfo(const InfoOptions& options) {
    const BundleInfo info = ReadBundle(options.bundle);
    WriteResult(options.isJson ? infoJson(info) : infoText(info, Style()));
    return ExitStatus::kDone;
}

Work describeInfo(CLI::App& parser) {
    const auto options = std::make_shared<InfoOptions>();
    parser.add_option("BUNDLE", options->bundle, "The folder of the bundle")->type_name("DIR")->required();
    AddJson(parser, options->isJson);
    parser.footer("Example:\n  xcodhost info PostInstall.bundle");
    return [options] { return printInfo(*options); };
}

} // namespace

const Command kInfoCommand = {"info", "Print the contents of a bundle without loading its code",
                              &describeInfo};

} // namespace xcodhost
