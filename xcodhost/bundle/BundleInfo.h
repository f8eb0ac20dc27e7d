#pragma once

/// Declares functions that read the property list and the executables of a bundle without loading code.

#include <macplatform/PropertyList.h>

#include <string>
#include <vector>

namespace xcodhost {

/// An entry of `CFPlugInFactories`.
struct BundleFactory {
    std::string identifier;
    std::string function;
};

/// An entry of `CFPlugInTypes`.
struct BundleType {
    std::string identifier;
    std::vector<std::string> factories; ///< The identifiers of the factories.
};

/// The part of an executable for one architecture.
struct BundleImage {
    std::string architecture;
    std::vector<std::string> exports; ///< The names with which a function is looked up.
    std::string problem;              ///< Why the image cannot be read. Empty if it has been read.
};

/// An executable of a bundle.
struct BundleExecutable {
    std::string platform; ///< The directory in `Contents`: "Linux" or "MacOS".
    std::string path;
    std::string format;              ///< "ELF" or "Mach-O".
    std::vector<BundleImage> images; ///< More than one only in universal Mach-O files.
    std::string problem;             ///< Why the list of images cannot be read. Empty if it has been read.
};

/// The property list of a bundle, and its executables.
struct BundleInfo {
    std::string path;
    macplatform::PropertyValue propertyList;
    std::vector<BundleFactory> factories;
    std::vector<BundleType> types;
    std::vector<BundleExecutable> executables;
};

/// Reads the property list and the executables. Throws Refusal with the status kNotLoaded and the path if the
/// property list cannot be read or lacks factories or types, if there is no executable, or if an executable
/// is neither an ELF file nor a Mach-O file.
BundleInfo ReadBundle(const std::string& path);

/// Reads the property list. The result has no executables. Throws Refusal as `ReadBundle` does for the
/// property list.
BundleInfo ReadInfoPlist(const std::string& path);

} // namespace xcodhost
