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
auto reading(CheckRun& run, const char* expected, Read read) {
    try {
        return read();
    } catch (const Refusal& refusal) {
        run.Fail(expected, refusal.what());
        throw Stopped{};
    }
}

void propertyListIsThere(CheckRun& run) {
    reading(run, "a folder with a property list in Contents/Info.plist that names its factories and types",
            [&] { return ReadInfoPlist(run.BundlePath()); });
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

void typeHasFactory(CheckRun& run) {
    const BundleInfo list = ReadInfoPlist(run.BundlePath());
    run.Expect(!pluginFactories(list).empty(),
               "CFPlugInTypes lists for " + Describe(kPluginType) + " a factory of CFPlugInFactories",
               Counted(list.types.size(), "type") + " and " + Counted(list.factories.size(), "factory") +
                   ", but none that belong together");
}

void factoryHasItsName(CheckRun& run) {
    for (const BundleFactory& factory : pluginFactories(ReadInfoPlist(run.BundlePath()))) {
        run.Expect(factory.function == kFactoryFunction, std::string("function ") + kFactoryFunction,
                   "function " + factory.function);
    }
}

BundleExecutable loadableExecutable(CheckRun& run) {
    const auto read = [&] { return ReadBundle(run.BundlePath()); };
    return reading(run, "an executable that can be read", read).executables.front();
}

void executableIsThere(CheckRun& run) {
    const BundleExecutable executable = loadableExecutable(run);
    run.Expect(!executable.images.empty(), "an executable that can be read",
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

void architectureFits(CheckRun& run) {
    const BundleExecutable executable = loadableExecutable(run);
    std::string seen;
    for (const BundleImage& image : executable.images)
        seen += (seen.empty() ? "" : ", ") + image.architecture;
    run.Expect(ownImage(executable).has_value(), ownArchitecture() + ", as this tool", seen);
}

/// Of the part that this program can load.
std::vector<std::string> exportsOf(CheckRun& run) {
    const std::optional<BundleImage> image = ownImage(loadableExecutable(run));
    return image ? image->exports : std::vector<std::string>();
}

void stepsAndFactoryAreExported(CheckRun& run) {
    const std::vector<std::string> exports = exportsOf(run);
    for (const char* const name : kExports) {
        run.Expect(std::find(exports.begin(), exports.end(), name) != exports.end(),
                   std::string("exports ") + name, std::string(name) + " is not exported");
    }
}

void nothingElseIsExported(CheckRun& run) {
    std::string others;
    for (const std::string& name : exportsOf(run)) {
        if (std::find(kExports.begin(), kExports.end(), name) == kExports.end()) others += ' ' + name;
    }
    run.Expect(others.empty(), "exports MyFactory, PostInstall and PreInstall only", "also" + others);
}

void codeLoads(CheckRun& run) { run.Bundle().Symbol(kFactoryFunction); }

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
