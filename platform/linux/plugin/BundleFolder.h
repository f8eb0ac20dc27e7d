#pragma once

/// A bundle's folder, as far as loading its code needs it.

#include <macplatform/Bundles.h>
#include <macplatform/PropertyList.h>

#include <string>

namespace macplatform {

struct BundleFolder {
    std::string path;
    PropertyValue info;     ///< The dictionary of Contents/Info.plist.
    std::string executable; ///< The file of the code to load; whether it is there is not asked.
    bool isMachO = false;   ///< It is the Mac's own; known once it was checked.
};

/// Reads the property list of the bundle at a path of this machine.
BundleFailure OpenBundleFolder(const std::string& path, BundleFolder& bundle);

/// Whether the executable is there and made for this processor and word size, and for this system or, where
/// this process can run it, for the Mac.
BundleFailure CheckExecutable(BundleFolder& bundle);

} // namespace macplatform
