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

/// Returns the result of `read`. If `read` rejects the bundle, reports a finding and ends the check.
template <typename Read>
auto reading(CheckRun& run, const char* expected, Read read) {
    try {
        return read();
    } catch (const Refusal& refusal) {
        run.Fail(expected, refusal.what());
        throw RunStopped{};
    }
}

void propertyListIsThere(CheckRun& run) {
    reading(run, "a directory whose Contents/Info.plist names factories and types",
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
               "an entry of CFPlugInTypes for " + Describe(kPluginType) +
                   " that lists a factory of CFPlugInFactories",
               Counted(list.types.size(), "type") + " and " + Counted(list.factories.size(), "factory") +
                   ", but no such entry");
}

BundleExecutable loadableExecutable(CheckRun& run) {
    const auto read = [&] { return ReadBundle(run.BundlePath()); };
    return reading(run, "a readable executable", read).executables.front();
}

void executableIsThere(CheckRun& run) {
    const BundleExecutable executable = loadableExecutable(run);
    run.Expect(!executable.images.empty(), "a readable executable",
               executable.path + ": " + executable.problem);
}

/// Returns the architecture of this program, which is the one that a bundle must have.
std::string ownArchitecture() {
    std::string header(64, '\0');
    std::ifstream("/proc/self/exe", std::ios::binary).read(header.data(), 64);
    return ReadElf(header).architecture;
}

/// Returns the part of the executable that this program can load, if there is one.
std::optional<BundleImage> ownImage(const BundleExecutable& executable) {
    const std::string own = ownArchitecture();
    for (const BundleImage& image : executable.images) {
        if (image.architecture == own) return image;
    }
    return std::nullopt;
}

void architectureFits(CheckRun& run) {
    const BundleExecutable executable = loadableExecutable(run);
    std::vector<std::string> seen;
    for (const BundleImage& image : executable.images) seen.push_back(image.architecture);
    run.Expect(ownImage(executable).has_value(), ownArchitecture() + ", as for this tool", Join(seen, ", "));
}

/// Returns the exported symbols of the part that this program can load.
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
    run.Expect(others.empty(), "exports only MyFactory, PostInstall and PreInstall", "also exports" + others);
}

} // namespace

void FactoryHasItsName(CheckRun& run) {
    for (const BundleFactory& factory : pluginFactories(ReadInfoPlist(run.BundlePath()))) {
        run.Expect(factory.function == kFactoryFunction, std::string("function ") + kFactoryFunction,
                   "function " + factory.function);
    }
}

void CodeLoads(CheckRun& run) { run.Bundle().Symbol(kFactoryFunction); }

const CheckGroup kBundleChecks = {
    "bundle",
    {
        Check("property-list", &propertyListIsThere)
            .Claim("The bundle is a directory with a readable property list.")
            .Reason("The installer finds the executable and the factories through Contents/Info.plist. "
                    "\"xcodhost info BUNDLE\" prints the property list.")
            .FailsWith(ExitStatus::kNotLoaded),
        Check("factory", &typeHasFactory, {&propertyListIsThere})
            .Claim("The property list assigns a factory to the installer's plug-in type.")
            .Reason("CFPlugInTypes must list, for the installer's plug-in type, the identifier of an entry "
                    "of CFPlugInFactories. Without this identifier the installer never calls the bundle.")
            .FailsWith(ExitStatus::kNotLoaded),
        Check("factory-name", &FactoryHasItsName, {&typeHasFactory})
            .Claim("The factory function is MyFactory.")
            .Reason("The installer calls the function that CFPlugInFactories names. All plug-ins of this "
                    "installer name MyFactory."),
        Check("executable", &executableIsThere, {&propertyListIsThere})
            .Claim("The executable that the property list names exists and is readable.")
            .Reason("CFBundleExecutable names a file in Contents/Linux or Contents/MacOS.")
            .FailsWith(ExitStatus::kNotLoaded),
        Check("architecture", &architectureFits, {&executableIsThere})
            .Claim("The executable is built for the processor and the word size of this tool.")
            .Reason("A 32-bit plug-in needs the 32-bit build of this tool. A 64-bit plug-in needs the 64-bit "
                    "build.")
            .FailsWith(ExitStatus::kNotLoaded),
        Check("exports", &stepsAndFactoryAreExported, {&architectureFits})
            .Claim("The executable exports MyFactory, PreInstall and PostInstall.")
            .Reason("The installer finds these three functions by name. Usual reasons for a missing function "
                    "are hidden visibility, C++ name mangling and the linker's export list.")
            .FailsWith(ExitStatus::kNotLoaded),
        Check("exports-only", &nothingElseIsExported, {&architectureFits})
            .Claim("The executable exports no other symbol.")
            .Reason("All plug-ins share the installer's process. A further exported symbol can replace a "
                    "symbol of another plug-in, or be replaced by one."),
        Check("loads", &CodeLoads, {&typeHasFactory, &architectureFits, &stepsAndFactoryAreExported})
            .Claim("The dynamic linker loads the executable.")
            .Reason(
                "The report shows the error of the dynamic linker. Usually a library or a symbol is missing.")
            .FailsWith(ExitStatus::kNotLoaded),
    }};

} // namespace xcodhost
