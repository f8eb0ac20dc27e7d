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

[[noreturn]] void Refuse(const std::string& path, const std::string& reason) {
    throw Refusal(ExitStatus::NotLoaded, Printable(path) + ": " + reason);
}

PropertyValue ReadInfoList(const std::string& bundle) {
    std::error_code error;
    const std::string path = bundle + "/Contents/Info.plist";
    if (!fs::is_directory(bundle, error)) Refuse(bundle, error ? error.message() : "no bundle: not a folder");
    if (!fs::exists(path, error)) Refuse(path, "missing, so this is no bundle");
    if (!fs::is_regular_file(path, error)) Refuse(path, "not a file");
    macplatform::PropertyListFile list = macplatform::ReadPropertyList(path);
    if (!list.error.empty()) Refuse(path, list.error);
    if (list.root.kind != PropertyValue::Kind::Dictionary) Refuse(path, "its root is not a dictionary");
    return std::move(list.root);
}

const PropertyValue& DictionaryAt(const PropertyValue& list, const std::string& key,
                                  const std::string& bundle) {
    const PropertyValue* value = list.Find(key);
    if (!value) Refuse(bundle, "its property list has no key " + key);
    if (value->kind != PropertyValue::Kind::Dictionary) Refuse(bundle, key + " is not a dictionary");
    return *value;
}

std::vector<BundleFactory> FactoriesOf(const PropertyValue& list, const std::string& bundle) {
    std::vector<BundleFactory> factories;
    const PropertyValue& entries = DictionaryAt(list, "CFPlugInFactories", bundle);
    for (std::size_t i = 0; i < entries.keys.size(); ++i) {
        if (entries.values[i].kind != PropertyValue::Kind::Text) {
            Refuse(bundle, "CFPlugInFactories has no function name for " + Printable(entries.keys[i]));
        }
        factories.push_back({entries.keys[i], entries.values[i].text});
    }
    return factories;
}

std::vector<BundleType> TypesOf(const PropertyValue& list, const std::string& bundle) {
    std::vector<BundleType> types;
    const PropertyValue& entries = DictionaryAt(list, "CFPlugInTypes", bundle);
    for (std::size_t i = 0; i < entries.keys.size(); ++i) {
        BundleType type{entries.keys[i], {}};
        const PropertyValue& named = entries.values[i];
        if (named.kind == PropertyValue::Kind::Text) type.factories.push_back(named.text);
        for (const PropertyValue& item : named.items) type.factories.push_back(item.text);
        types.push_back(std::move(type));
    }
    return types;
}

/// `CFBundleExecutable`, or the bundle's own name without its extension.
std::string ExecutableName(const PropertyValue& list, const std::string& bundle) {
    const PropertyValue* name = list.Find("CFBundleExecutable");
    if (!name) return fs::canonical(bundle).stem().string(); // canonical: without a separator at its end
    const bool isName = name->kind == PropertyValue::Kind::Text && !name->text.empty() &&
                        name->text.find('/') == std::string::npos;
    if (!isName) Refuse(bundle, "CFBundleExecutable is not a file's name");
    return name->text;
}

std::string ReadWhole(const std::string& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) Refuse(path, "not a file");
    const std::uintmax_t size = fs::file_size(path, error);
    if (error || size > kLargestExecutable)
        Refuse(path, error ? error.message() : "too large for an executable");
    std::ifstream in(path, std::ios::binary);
    if (!in) Refuse(path, std::strerror(errno));
    std::string bytes(static_cast<std::size_t>(size), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    return bytes;
}

BundleExecutable ReadExecutable(const std::string& platform, const std::string& path) {
    const std::string bytes = ReadWhole(path);
    if (IsElf(bytes)) {
        ElfFile elf = ReadElf(bytes);
        return {platform,
                path,
                "ELF",
                {{std::move(elf.architecture), std::move(elf.exports), std::move(elf.problem)}},
                {}};
    }
    if (!IsMachO(bytes)) Refuse(path, "neither an ELF nor a Mach-O executable");
    MachOFile mach = ReadMachO(bytes);
    BundleExecutable executable{platform, path, "Mach-O", {}, std::move(mach.problem)};
    for (MachOImage& image : mach.images) {
        executable.images.push_back(
            {std::move(image.architecture), std::move(image.exports), std::move(image.problem)});
    }
    return executable;
}

} // namespace

BundleInfo ReadBundleList(const std::string& path) {
    BundleInfo info;
    info.path = path;
    info.propertyList = ReadInfoList(path);
    info.factories = FactoriesOf(info.propertyList, path);
    info.types = TypesOf(info.propertyList, path);
    return info;
}

BundleInfo ReadBundle(const std::string& path) {
    BundleInfo info = ReadBundleList(path);
    const std::string name = ExecutableName(info.propertyList, path);
    for (const char* platform : {"Linux", "MacOS"}) {
        const std::string file = (fs::path(path) / "Contents" / platform / name).string();
        std::error_code ignored;
        if (fs::exists(file, ignored)) info.executables.push_back(ReadExecutable(platform, file));
    }
    if (info.executables.empty()) {
        Refuse(path, "no executable " + PrintableQuoted(name) + " in Contents/Linux or Contents/MacOS");
    }
    return info;
}

} // namespace xcodhost
