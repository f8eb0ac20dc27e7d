#include "BundleInfo.h"

#include "DisplayText.h"
#include "ElfFile.h"
#include "ExitStatus.h"
#include "MachOFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace xcodhost {

namespace fs = std::filesystem;
using macplatform::PropertyValue;

namespace {

constexpr std::uintmax_t kLargestExecutable = std::uintmax_t{512} << 20;

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw Refusal(ExitStatus::kNotLoaded, Printable(path) + ": " + reason);
}

PropertyValue readInfoPlist(const std::string& bundle) {
    std::error_code error;
    const std::string path = bundle + "/Contents/Info.plist";
    if (!fs::is_directory(bundle, error))
        refuse(bundle, error ? error.message() : "not a bundle: not a folder");
    if (!fs::exists(path, error)) refuse(path, "missing; the folder is not a bundle");
    if (!fs::is_regular_file(path, error)) refuse(path, "not a file");
    macplatform::PropertyListFile plist = macplatform::ReadPropertyList(path);
    if (!plist.error.empty()) refuse(path, plist.error);
    if (plist.root.kind != PropertyValue::Kind::kDictionary) refuse(path, "its root is not a dictionary");
    return std::move(plist.root);
}

const PropertyValue& dictionaryAt(const PropertyValue& plist, const std::string& key,
                                  const std::string& bundle) {
    const PropertyValue* value = plist.Find(key);
    if (!value) refuse(bundle, "its property list has no key " + key);
    if (value->kind != PropertyValue::Kind::kDictionary) refuse(bundle, key + " is not a dictionary");
    return *value;
}

std::vector<BundleFactory> factoriesOf(const PropertyValue& plist, const std::string& bundle) {
    std::vector<BundleFactory> factories;
    const PropertyValue& entries = dictionaryAt(plist, "CFPlugInFactories", bundle);
    for (std::size_t i = 0; i < entries.keys.size(); ++i) {
        if (entries.values[i].kind != PropertyValue::Kind::kString) {
            refuse(bundle, "CFPlugInFactories has no function name for " + Printable(entries.keys[i]));
        }
        factories.push_back({entries.keys[i], entries.values[i].text});
    }
    return factories;
}

std::vector<BundleType> typesOf(const PropertyValue& plist, const std::string& bundle) {
    std::vector<BundleType> types;
    const PropertyValue& entries = dictionaryAt(plist, "CFPlugInTypes", bundle);
    for (std::size_t i = 0; i < entries.keys.size(); ++i) {
        BundleType type{entries.keys[i], {}};
        const PropertyValue& named = entries.values[i];
        if (named.kind == PropertyValue::Kind::kString) type.factories.push_back(named.text);
        for (const PropertyValue& item : named.items) type.factories.push_back(item.text);
        types.push_back(std::move(type));
    }
    return types;
}

/// Returns `CFBundleExecutable`, or the name of the bundle without its extension if the key is missing.
std::string executableName(const PropertyValue& plist, const std::string& bundle) {
    const PropertyValue* name = plist.Find("CFBundleExecutable");
    if (!name) return fs::canonical(bundle).stem().string(); // `canonical` removes a separator at the end
    const bool isName = name->kind == PropertyValue::Kind::kString && !name->text.empty() &&
                        name->text.find('/') == std::string::npos;
    if (!isName) refuse(bundle, "CFBundleExecutable is not a file name");
    return name->text;
}

std::string readWhole(const std::string& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) refuse(path, "not a file");
    const std::uintmax_t size = fs::file_size(path, error);
    if (error || size > kLargestExecutable)
        refuse(path, error ? error.message() : "too large for an executable");
    std::ifstream in(path, std::ios::binary);
    if (!in) refuse(path, std::strerror(errno));
    std::string bytes(static_cast<std::size_t>(size), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    return bytes;
}

BundleExecutable readExecutable(const std::string& platform, const std::string& path) {
    const std::string bytes = readWhole(path);
    if (IsElf(bytes)) {
        ElfFile elf = ReadElf(bytes);
        return {platform,
                path,
                "ELF",
                {{std::move(elf.architecture), std::move(elf.exports), std::move(elf.problem)}},
                {}};
    }
    if (!IsMachO(bytes)) refuse(path, "neither an ELF nor a Mach-O executable");
    MachOFile mach = ReadMachO(bytes);
    BundleExecutable executable{platform, path, "Mach-O", {}, std::move(mach.problem)};
    for (MachOImage& image : mach.images) {
        executable.images.push_back(
            {std::move(image.architecture), std::move(image.exports), std::move(image.problem)});
    }
    return executable;
}

} // namespace

BundleInfo ReadInfoPlist(const std::string& path) {
    BundleInfo info;
    info.path = path;
    info.propertyList = readInfoPlist(path);
    info.factories = factoriesOf(info.propertyList, path);
    info.types = typesOf(info.propertyList, path);
    return info;
}

BundleInfo ReadBundle(const std::string& path) {
    BundleInfo info = ReadInfoPlist(path);
    const std::string name = executableName(info.propertyList, path);
    for (const char* platform : {"Linux", "MacOS"}) {
        const std::string file = (fs::path(path) / "Contents" / platform / name).string();
        std::error_code ignored;
        if (fs::exists(file, ignored)) info.executables.push_back(readExecutable(platform, file));
    }
    if (info.executables.empty()) {
        refuse(path, "no executable " + PrintableQuoted(name) + " in Contents/Linux or Contents/MacOS");
    }
    return info;
}

} // namespace xcodhost
