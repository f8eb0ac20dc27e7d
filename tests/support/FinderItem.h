#pragma once

/// Declares functions that set the Finder information of an item in a test.

#include <Carbon/Carbon.h>

#include <cstring>
#include <string>

/// Sets `ref` to a reference to the item at the path. Returns a result code.
inline OSStatus MakeRef(const std::string& path, FSRef& ref) {
    return FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, nullptr);
}

/// Sets the first 16 bytes of the Finder information. `Info` is FileInfo or FolderInfo. Returns a result
/// code.
template <typename Info>
OSStatus SetFinderInfo(const std::string& path, const Info& info) {
    FSRef ref;
    FSCatalogInfo catalog{};
    if (const OSStatus result = MakeRef(path, ref)) return result;
    std::memcpy(catalog.finderInfo, &info, sizeof info);
    return FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &catalog);
}
