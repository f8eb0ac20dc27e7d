#include "InfoCommand.h"

#include "BundleInfo.h"
#include "Console.h"
#include "DisplayText.h"
#include "JsonDocument.h"
#include "PluginContract.h"

#include <strings.h>

namespace xcodhost {

namespace {

/// Identifiers may be written in either case.
bool IsPluginType(const std::string& identifier) {
    return strcasecmp(identifier.c_str(), Describe(kPluginType).c_str()) == 0;
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + Printable(text);
    return joined.empty() ? "none" : joined;
}

std::string ExecutableText(const BundleExecutable& executable) {
    std::string text = "executable  " + Printable(executable.path) + ": " + executable.format + ' ' +
                       Joined(executable.architectures) + '\n';
    if (executable.format == "ELF") text += "  exports  " + Joined(executable.exports) + '\n';
    if (!executable.problem.empty()) text += "  problem  " + executable.problem + '\n';
    return text;
}

std::string InfoText(const BundleInfo& info, const Style& style) {
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
                (IsPluginType(type.identifier) ? " (installer plug-in)" : "") + ": " +
                Joined(type.factories) + '\n';
    }
    for (const BundleExecutable& executable : info.executables) text += ExecutableText(executable);
    return text;
}

std::string InfoJson(const BundleInfo& info) {
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
        document["executables"].push_back(
            {{"platform", executable.platform},
             {"path", executable.path},
             {"format", executable.format},
             {"architectures", executable.architectures},
             {"exports", executable.exports},
             {"problem", executable.problem.empty() ? Json() : Json(executable.problem)}});
    }
    return DumpDocument(document);
}

} // namespace

ExitStatus InfoCommand(const InfoOptions& options) {
    const BundleInfo info = ReadBundle(options.bundle);
    WriteResult(options.isJson ? InfoJson(info) : InfoText(info, Style()));
    return ExitStatus::Done;
}

} // namespace xcodhost
