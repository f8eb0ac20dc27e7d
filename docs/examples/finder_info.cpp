// Hides a file as the plug-in does, and prints the sidecar file. The sidecar holds the flags where
// the file system has no extended attributes.
#include <Carbon/Carbon.h>
#include <macplatform/FinderFlags.h>

#include <cstdio>
#include <cstring>

static bool hide(const char* path) {
    FSRef item;
    if (FSPathMakeRef(reinterpret_cast<const UInt8*>(path), &item, nullptr) != noErr) return false;
    FSCatalogInfo info;
    if (FSGetCatalogInfo(&item, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr) != noErr)
        return false;
    FileInfo finder;
    std::memcpy(&finder, info.finderInfo, sizeof finder);
    finder.fileType = 'TEXT';
    finder.finderFlags = static_cast<UInt16>(finder.finderFlags | kIsInvisible);
    std::memcpy(info.finderInfo, &finder, sizeof finder);
    return FSSetCatalogInfo(&item, kFSCatInfoFinderInfo, &info) == noErr;
}

int main() {
    std::FILE* const item = std::fopen("notes.example", "w");
    if (!item) return 1;
    std::fclose(item);

    macplatform::SimulateMissingExtendedAttributes(true); // even if this file system has them
    if (!hide("notes.example")) return 1;

    std::FILE* const sidecar = std::fopen("._notes.example", "rb");
    if (!sidecar) return 1;
    for (int place = 0, byte; (byte = std::fgetc(sidecar)) != EOF; ++place) {
        if (place % 16 == 0)
            std::printf(place ? "\n%04X " : "%04X ", static_cast<unsigned int>(place));
        std::printf(" %02X", static_cast<unsigned int>(byte));
    }
    std::printf("\n");
    std::fclose(sidecar);
    std::remove("._notes.example");
    std::remove("notes.example");
}
