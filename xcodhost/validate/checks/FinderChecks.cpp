#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstring>

namespace xcodhost {

namespace {

/// Gives the item these flags through the platform, as the Finder would.
void setFinderFlags(const CheckRun& run, const char* macPath, std::uint16_t flags) {
    FSRef item;
    FSCatalogInfo catalog = {};
    const std::string path = run.OnVolume(macPath);
    FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &item, nullptr);
    FSGetCatalogInfo(&item, kFSCatInfoFinderInfo, &catalog, nullptr, nullptr, nullptr);
    FileInfo finder;
    std::memcpy(&finder, catalog.finderInfo, sizeof finder);
    finder.finderFlags = flags;
    std::memcpy(catalog.finderInfo, &finder, sizeof finder);
    FSSetCatalogInfo(&item, kFSCatInfoFinderInfo, &catalog);
}

std::uint16_t flagsOf(const CheckRun& run, const char* macPath) {
    const VolumeState state = run.CurrentVolume();
    const auto item = state.items.find(macPath);
    return item == state.items.end() ? std::uint16_t{0} : item->second.finderFlags;
}

/// Delivers post-install to an item with all flags and with none; only the bits of the mask are looked at.
void expectFinderFlags(CheckRun& run, const char* macPath, std::uint16_t mask, std::uint16_t wanted) {
    constexpr std::uint16_t allFlags = 0xFFFF & ~0x0001; // the lowest bit is the file system's own
    for (const std::uint16_t before :
         {std::uint16_t{0}, allFlags, mask, static_cast<std::uint16_t>(mask & ~wanted)}) {
        run.UseFreshVolume();
        run.Interface();
        setFinderFlags(run, macPath, before);
        run.Deliver(Event(kPostInstall, 4900));
        const std::uint16_t after = flagsOf(run, macPath);
        run.Expect((after & mask) == wanted,
                   Printable(macPath) + ": Finder flags " + Hex(before, 4) + " -> " +
                       Hex(static_cast<std::uint32_t>((before & ~mask) | wanted), 4),
                   Hex(after, 4));
    }
}

void folderFlagsAreSet(CheckRun& run) {
    expectFinderFlags(run, kMakersFolder, kInvisibleFlag | kCustomIconFlag, kCustomIconFlag);
}
void iconIsHidden(CheckRun& run) {
    expectFinderFlags(run, kIconFile, kInvisibleFlag | kCustomIconFlag, kInvisibleFlag);
}

void otherFlagsStay(CheckRun& run) {
    constexpr std::uint16_t others = 0xFFFE & ~(kInvisibleFlag | kCustomIconFlag);
    for (const char* const path : {kMakersFolder, kIconFile}) {
        for (const std::uint16_t before : {others, std::uint16_t{0x000E}, std::uint16_t{0x8000}}) {
            run.UseFreshVolume();
            run.Interface();
            setFinderFlags(run, path, before);
            run.Deliver(Event(kPostInstall, 4900));
            const auto after = static_cast<std::uint16_t>(flagsOf(run, path) & others);
            run.Expect(after == before,
                       std::string(Printable(path)) + ": the other Finder flags stay " + Hex(before, 4),
                       Hex(after, 4));
        }
    }
}

void otherItemsKeepFlags(CheckRun& run) {
    for (const std::int32_t product : {4900, 1234}) {
        for (const FinderFlagChange& change : run.Deliver(Event(kPostInstall, product)).changes.finderFlags) {
            run.Expect(change.path == kMakersFolder || change.path == kIconFile,
                       "no other item's Finder flags change",
                       Printable(change.path) + ": " + Describe(change.flag));
        }
    }
}

void unknownProductSetsFlags(CheckRun& run) {
    const Outcome outcome = run.Deliver(Event(kPostInstall, 1234));
    run.Expect(outcome.changes.finderFlags.size() == 2, "folder and icon get their Finder flags",
               Describe(outcome.changes));
}

void missingIconLeavesFolder(CheckRun& run) {
    SampleVolume sample;
    sample.hasIcon = false;
    run.UseFreshVolume(sample);
    run.Deliver(Event(kPostInstall, 4900));
    const std::uint16_t flags = flagsOf(run, kMakersFolder);
    run.Expect((flags & kCustomIconFlag) != 0, "the folder gets its flag without an icon file",
               Hex(flags, 4));
}

void missingItemsAreSkipped(CheckRun& run) {
    for (const bool hasFolder : {true, false}) {
        SampleVolume sample;
        sample.hasIcon = false;
        sample.hasFolder = hasFolder;
        run.UseFreshVolume(sample);
        const Outcome outcome = run.Deliver(Event(kPostInstall, 4900));
        run.Expect(outcome.flagsAfter == 0 && outcome.alerts.empty(),
                   "no error where folder or icon is missing",
                   "error flags " + Hex(outcome.flagsAfter, 8) + ", " + Describe(outcome.alerts));
        run.Expect(outcome.changes.files.empty(), "neither is made", Describe(outcome.changes));
    }
}

} // namespace

std::vector<Check> FinderChecks() {
    const std::vector<const char*> event = {"dispatch.post-install"};
    return {
        {"finder.folder", "The maker's folder gets a custom icon and becomes visible.",
         "0x0400 is set and 0x4000 cleared on /Applications/Korvane, whatever they were before.", event,
         &folderFlagsAreSet},
        {"finder.icon", "The folder's icon file becomes invisible and has no icon of its own.",
         "0x4000 is set and 0x0400 cleared on /Applications/Korvane/Icon\\r, whatever they were before.",
         event, &iconIsHidden},
        {"finder.other-flags", "All other Finder flags of the two stay as they are.",
         "Labels and locks are the user's.", event, &otherFlagsStay},
        {"finder.other-items", "No other item's Finder flags change.", "Only the two are the maker's.", event,
         &otherItemsKeepFlags},
        {"finder.unknown-product",
         "The flags are set for an unknown product, too.",
         "The folder is shared by all products.",
         {"finder.folder", "finder.icon", "finder.other-items"},
         &unknownProductSetsFlags},
        {"finder.no-icon",
         "The folder gets its flags where the icon file is missing.",
         "One must not depend on the other.",
         {"finder.folder"},
         &missingIconLeavesFolder},
        {"finder.missing", "A missing folder or icon file is skipped without an error, and not made.",
         "Users may have moved the products.", event, &missingItemsAreSkipped},
    };
}

} // namespace xcodhost
