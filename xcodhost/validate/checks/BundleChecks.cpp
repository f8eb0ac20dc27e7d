#include "Groups.h"

#include "DisplayText.h"
#include "ExitStatus.h"
#include "bundle/BundleInfo.h"
#include "bundle/ElfFile.h"
#include "validate/CheckRun.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <strings.h>

namespace xcodhost {

namespace {

constexpr std::array<const char*, 3> kExports = {kFactoryFunction, "PostInstall", "PreInstall"};

bool isSameIdentifier(const std::string& text, const CFUUIDBytes& identifier) {
    return strcasecmp(text.c_str(), Describe(identifier).c_str()) == 0;
}

/// What cannot be read is a finding and the end of the check.
template <typename Read>
auto reading(Trial& trial, const char* expected, Read read) {
    try {
        return read();
    } catch (const Refusal& refusal) {
        trial.Fail(expected, refusal.what());
        throw Stopped{};
    }
}

void propertyListIsThere(Trial& trial) {
    reading(trial, "a folder with a property list in Contents/Info.plist that names its factories and types",
            [&] { return ReadBundleList(trial.BundlePath()); });
}

std::vector<BundleFactory> pluginFactories(const BundleInfo& list) {
    std::vector<BundleFactory> found;
    for (const BundleType& type : list.types) {
        if (!isSameIdentifier(type.identifier, kPluginType)) continue;
        for (const std::string& identifier : type.factories) {
            for (const BundleFactory& factory : list.factories) {
                if (strcasecmp(factory.identifier.c_str(), identifier.c_str()) == 0) found.push_back(factory);
            }
        }
    }
    return found;
}

void typeHasFactory(Trial& trial) {
    const BundleInfo list = ReadBundleList(trial.BundlePath());
    trial.Expect(!pluginFactories(list).empty(),
                 "CFPlugInTypes lists for " + Describe(kPluginType) + " a factory of CFPlugInFactories",
                 Counted(list.types.size(), "type") + " and " + Counted(list.factories.size(), "factory") +
                     ", but none that belong together");
}

void factoryHasItsName(Trial& trial) {
    for (const BundleFactory& factory : pluginFactories(ReadBundleList(trial.BundlePath()))) {
        trial.Expect(factory.function == kFactoryFunction, std::string("function ") + kFactoryFunction,
                     "function " + factory.function);
    }
}

BundleExecutable loadableExecutable(Trial& trial) {
    const auto read = [&] { return ReadBundle(trial.BundlePath()); };
    return reading(trial, "an executable that can be read", read).executables.front();
}

void executableIsThere(Trial& trial) {
    const BundleExecutable executable = loadableExecutable(trial);
    trial.Expect(!executable.images.empty(), "an executable that can be read",
                 executable.path + ": " + executable.problem);
}

/// Of this very program, which is the processor that the bundle must be made for. Its header tells.
std::string ownArchitecture() {
    std::string header(64, '\0');
    std::ifstream("/proc/self/exe", std::ios::binary).read(header.data(), 64);
    return ReadElf(header).architecture;
}

/// The part of the executable that this program can load.
std::optional<BundleImage> ownImage(const BundleExecutable& executable) {
    const std::string own = ownArchitecture();
    for (const BundleImage& image : executable.images) {
        if (image.architecture == own) return image;
    }
    return std::nullopt;
}

void architectureFits(Trial& trial) {
    const BundleExecutable executable = loadableExecutable(trial);
    std::string seen;
    for (const BundleImage& image : executable.images)
        seen += (seen.empty() ? "" : ", ") + image.architecture;
    trial.Expect(ownImage(executable).has_value(), ownArchitecture() + ", as this tool", seen);
}

/// Of the part that this program can load.
std::vector<std::string> exportsOf(Trial& trial) {
    const std::optional<BundleImage> image = ownImage(loadableExecutable(trial));
    return image ? image->exports : std::vector<std::string>();
}

void stepsAndFactoryAreExported(Trial& trial) {
    const std::vector<std::string> exports = exportsOf(trial);
    for (const char* const name : kExports) {
        trial.Expect(std::find(exports.begin(), exports.end(), name) != exports.end(),
                     std::string("exports ") + name, std::string(name) + " is not exported");
    }
}

void nothingElseIsExported(Trial& trial) {
    std::string others;
    for (const std::string& name : exportsOf(trial)) {
        if (std::find(kExports.begin(), kExports.end(), name) == kExports.end()) others += ' ' + name;
    }
    trial.Expect(others.empty(), "exports MyFactory, PostInstall and PreInstall only", "also" + others);
}

void codeLoads(Trial& trial) { trial.Bundle().Symbol(kFactoryFunction); }

} // namespace

std::vector<Check> BundleChecks() {
    return {
        {"bundle.property-list",
         "The bundle is a folder whose property list can be read.",
         "The installer finds everything else through Contents/Info.plist. xcodhost info shows what it "
         "holds.",
         {},
         &propertyListIsThere,
         ExitStatus::kNotLoaded},
        {"bundle.factory",
         "The property list leads from the plug-in type to a factory.",
         "CFPlugInTypes must list, for the installer's plug-in type, the identifier of an entry of "
         "CFPlugInFactories. Without it the installer never calls the bundle.",
         {"bundle.property-list"},
         &typeHasFactory,
         ExitStatus::kNotLoaded},
        {"bundle.factory-name",
         "The factory's function is MyFactory.",
         "The installer calls the function that CFPlugInFactories names; the plug-ins of this installer all "
         "name MyFactory.",
         {"bundle.factory"},
         &factoryHasItsName},
        {"bundle.executable",
         "The executable that the property list names is there and can be read.",
         "CFBundleExecutable names a file of Contents/Linux or Contents/MacOS.",
         {"bundle.property-list"},
         &executableIsThere,
         ExitStatus::kNotLoaded},
        {"bundle.architecture",
         "The executable is made for this tool's processor and word size.",
         "A 32-bit plug-in needs the 32-bit build of this tool, and the other way round.",
         {"bundle.executable"},
         &architectureFits,
         ExitStatus::kNotLoaded},
        {"bundle.exports",
         "The executable exports MyFactory, PreInstall and PostInstall.",
         "The installer finds these three by name. Hidden visibility, C++ name mangling and a linker's "
         "list of exports are the usual reasons for a missing one.",
         {"bundle.architecture"},
         &stepsAndFactoryAreExported,
         ExitStatus::kNotLoaded},
        {"bundle.exports-only",
         "The executable exports nothing else.",
         "Every plug-in lives in the installer's process: a further exported symbol can take the place of "
         "another plug-in's, or be replaced by it.",
         {"bundle.architecture"},
         &nothingElseIsExported},
        {"bundle.loads",
         "The executable's code can be loaded.",
         "The dynamic linker's reason is what was seen: a library or a symbol that is missing, most often.",
         {"bundle.factory", "bundle.architecture", "bundle.exports"},
         &codeLoads,
         ExitStatus::kNotLoaded},
    };
}

} // namespace xcodhost
