#pragma once

/// What a bundle says of itself and holds, read without loading it.

#include <macplatform/PropertyList.h>

#include <string>
#include <vector>

namespace xcodhost {

struct BundleFactory {
    std::string identifier;
    std::string function;
};

struct BundleType {
    std::string identifier;
    std::vector<std::string> factories;
};

/// What an executable holds for one architecture.
struct BundleImage {
    std::string architecture;
    std::vector<std::string> exports; ///< As a lookup takes them.
    std::string problem;
};

struct BundleExecutable {
    std::string platform; ///< The subfolder of `Contents`: "Linux" or "MacOS".
    std::string path;
    std::string format;              ///< "ELF" or "Mach-O".
    std::vector<BundleImage> images; ///< More than one in universal Mach-O files only.
    std::string problem;             ///< Of the file as a whole.
};

struct BundleInfo {
    std::string path;
    macplatform::PropertyValue propertyList;
    std::vector<BundleFactory> factories;
    std::vector<BundleType> types;
    std::vector<BundleExecutable> executables;
};

/// Throws a Refusal (kNotLoaded), naming the path, when there is no bundle, its property list cannot be read
/// or lacks the factories or types, there is no executable, or one is no executable of any kind.
BundleInfo ReadBundle(const std::string& path);

/// The same without the executables.
BundleInfo ReadInfoPlist(const std::string& path);

} // namespace xcodhost
