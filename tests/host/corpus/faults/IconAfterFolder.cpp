#include "../PlugIn.h"

// No icon where the folder's Finder information cannot be read.
namespace {
bool isDressed = true;
}
void plugin::DressFolder() {
    FSRef item;
    FSCatalogInfo catalog;
    const auto* const path = reinterpret_cast<const UInt8*>("/Applications/Korvane");
    isDressed = FSPathMakeRef(path, &item, nullptr) != noErr ||
                FSGetCatalogInfo(&item, kFSCatInfoFinderInfo, &catalog, nullptr, nullptr, nullptr) == noErr;
    if (isDressed) Dress("/Applications/Korvane", false, true);
}
void plugin::DressIcon() {
    if (isDressed) Dress("/Applications/Korvane/Icon\r", true, false);
}
