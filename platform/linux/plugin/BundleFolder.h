#pragma once

/// @file
/// Finds and checks the executable in the directory of a bundle.

#include <macplatform/Bundles.h>
#include <macplatform/PropertyList.h>

#include <string>

namespace macplatform {

/// The directory of a bundle.
struct BundleFolder {
    std::string path;
    PropertyValue info;     ///< The dictionary of Contents/Info.plist.
    std::string executable; ///< The path of the file to load. The file may be missing.
    bool isMachO = false;   ///< Whether the executable is a Mach-O file. `CheckExecutable` sets this member.
};

/// Reads the property list of the bundle at a host path and chooses the executable to load.
BundleFailure OpenBundleFolder(const std::string& path, BundleFolder& bundle);

/// Checks that the executable is a regular file, and that it is either an ELF file for the processor and word
/// size of this process or a Mach-O file. The architecture of a Mach-O file is not checked here:
/// `LoadMachO` does that.
BundleFailure CheckExecutable(BundleFolder& bundle);

} // namespace macplatform
