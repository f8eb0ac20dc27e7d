#pragma once

/// @file
/// Declares functions that read the property list of a bundle and find and check its executable.

#include <macplatform/Bundles.h>
#include <macplatform/PropertyList.h>

#include <string>

namespace macplatform {

/// The directory of a bundle.
struct BundleFolder {
    std::string path;
    PropertyValue info;     ///< The root dictionary of Contents/Info.plist.
    std::string executable; ///< The path of the file to load. The file may be missing.
    bool isMachO = false;   ///< Whether the executable is a Mach-O file. Set by `CheckExecutable`.
};

/// Reads the property list of the bundle at a path of this machine and chooses the executable to load. Fills
/// `bundle`. Returns a failure of kind `kNone` after a success. After a failure, `bundle` must not be used.
BundleFailure OpenBundleFolder(const std::string& path, BundleFolder& bundle);

/// Checks that the executable is a regular file, and that it is a Mach-O file or an ELF file for the
/// processor and word size of this process. Sets `isMachO`. `LoadMachO` checks the architecture of a Mach-O
/// file. Returns a failure of kind `kNone` after a success.
BundleFailure CheckExecutable(BundleFolder& bundle);

} // namespace macplatform
