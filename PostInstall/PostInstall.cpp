#include <PostInstall/FailureAlert.h>
#include <PostInstall/LanguageTable.h>
#include <PostInstall/PluginEntry.h>
#include <PostInstall/ProductTable.h>
#include <PostInstall/SystemPreferences.h>
#include <PostInstall/UpdaterStatus.h>

#include <Kelbase/Util/CFString.h>

#include <Carbon/Carbon.h>
#include <cstring>

namespace {

bool makeReference(const char* path, FSRef& reference) {
    const Util::CFString text(path, Util::CFString::kReleaseOnDestroy);
    // The last argument marks the URL as a folder, also for a file. The file reference is the same.
    const CFURLRef url =
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, text.GetRef(), kCFURLPOSIXPathStyle, true);
    if (!url) return false;
    const bool found = CFURLGetFSRef(url, &reference);
    CFRelease(url);
    return found;
}

UInt16 withBit(UInt16 flags, UInt16 bit, bool on) {
    return static_cast<UInt16>(on ? flags | bit : flags & ~bit);
}

/// Sets or clears the invisible flag and the custom-icon flag of an item. Does not change other flags.
/// Returns false if the item does not exist, or if its flags cannot be read or stored. The offset of the
/// flags is the same for files and folders.
bool setHFSAttributes(const char* path, bool /*isFolder*/, bool invisible, bool customIcon) {
    FSRef reference;
    if (!makeReference(path, reference)) return false;
    FSCatalogInfo catalog = {};
    if (FSGetCatalogInfo(&reference, kFSCatInfoFinderInfo, &catalog, nullptr, nullptr, nullptr) != noErr) {
        return false;
    }
    FileInfo finder;
    std::memcpy(&finder, catalog.finderInfo, sizeof finder);
    finder.finderFlags = withBit(finder.finderFlags, kIsInvisible, invisible);
    finder.finderFlags = withBit(finder.finderFlags, kHasCustomIcon, customIcon);
    std::memcpy(catalog.finderInfo, &finder, sizeof finder);
    return FSSetCatalogInfo(&reference, kFSCatInfoFinderInfo, &catalog) == noErr;
}

void storeLanguage(CFStringRef domain, CFStringRef language) {
    SetSystemPreference(domain, CFSTR("Lang"), language);
    SynchronizeSystemPreferences(domain);
}

} // namespace

void PostInstall(XCodParamBlock* block) {
    if (!block) return;
    if (block->selector != kXCodSelector) {
        ReportRejectedCall(*block);
        return;
    }
    const CFStringRef language = LanguageTag(block->languageCode);
    if (const CFStringRef product = FindProduct(block->productCode).bundleIdentifier) {
        SetUpdateIntervalFromStatusFile();
        storeLanguage(product, language);
    }
    // The hidden file contains the icon of the folder. A missing folder or file is not an error.
    setHFSAttributes("/Applications/Korvane", true, false, true);
    setHFSAttributes("/Applications/Korvane/Icon\r", false, true, false);
}
