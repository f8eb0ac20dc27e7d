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
void dress(const Trial& trial, const char* macPath, std::uint16_t flags) {
    FSRef item;
    FSCatalogInfo catalog = {};
    const std::string path = trial.OnVolume(macPath);
    FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &item, nullptr);
    FSGetCatalogInfo(&item, kFSCatInfoFinderInfo, &catalog, nullptr, nullptr, nullptr);
    FileInfo finder;
    std::memcpy(&finder, catalog.finderInfo, sizeof finder);
    finder.finderFlags = flags;
    std::memcpy(catalog.finderInfo, &finder, sizeof finder);
    FSSetCatalogInfo(&item, kFSCatInfoFinderInfo, &catalog);
}

std::uint16_t flagsOf(const Trial& trial, const char* macPath) {
    const VolumeState state = trial.Look();
    const auto item = state.items.find(macPath);
    return item == state.items.end() ? std::uint16_t{0} : item->second.finderFlags;
}

/// Delivers post-install to an item with all flags and with none; only the bits of the mask are looked at.
void expectDressed(Trial& trial, const char* macPath, std::uint16_t mask, std::uint16_t wanted) {
    constexpr std::uint16_t allFlags = 0xFFFF & ~0x0001; // the lowest bit is the file system's own
    for (const std::uint16_t before :
         {std::uint16_t{0}, allFlags, mask, static_cast<std::uint16_t>(mask & ~wanted)}) {
        trial.UseFreshVolume();
        trial.Interface();
        dress(trial, macPath, before);
        trial.Deliver(Event(kPostInstall, 4900));
        const std::uint16_t after = flagsOf(trial, macPath);
        trial.Expect((after & mask) == wanted,
                     Printable(macPath) + ": Finder flags " + Hex(before, 4) + " -> " +
                         Hex(static_cast<std::uint32_t>((before & ~mask) | wanted), 4),
                     Hex(after, 4));
    }
}

void folderIsDressed(Trial& trial) {
    expectDressed(trial, kMakersFolder, kInvisibleFlag | kCustomIconFlag, kCustomIconFlag);
}
void iconIsHidden(Trial& trial) {
    expectDressed(trial, kIconFile, kInvisibleFlag | kCustomIconFlag, kInvisibleFlag);
}

void otherFlagsStay(Trial& trial) {
    constexpr std::uint16_t others = 0xFFFE & ~(kInvisibleFlag | kCustomIconFlag);
    for (const char* const path : {kMakersFolder, kIconFile}) {
        for (const std::uint16_t before : {others, std::uint16_t{0x000E}, std::uint16_t{0x8000}}) {
            trial.UseFreshVolume();
            trial.Interface();
            dress(trial, path, before);
            trial.Deliver(Event(kPostInstall, 4900));
            const auto after = static_cast<std::uint16_t>(flagsOf(trial, path) & others);
            trial.Expect(after == before,
                         std::string(Printable(path)) + ": the other Finder flags stay " + Hex(before, 4),
                         Hex(after, 4));
        }
    }
}

void noOtherItemIsDressed(Trial& trial) {
    for (const std::int32_t product : {4900, 1234}) {
        for (const FinderFlagChange& change :
             trial.Deliver(Event(kPostInstall, product)).changes.finderFlags) {
            trial.Expect(change.path == kMakersFolder || change.path == kIconFile,
                         "no other item's Finder flags change",
                         Printable(change.path) + ": " + Describe(change.flag));
        }
    }
}

void unknownProductIsDressed(Trial& trial) {
    const Outcome outcome = trial.Deliver(Event(kPostInstall, 1234));
    trial.Expect(outcome.changes.finderFlags.size() == 2, "folder and icon get their Finder flags",
                 Describe(outcome.changes));
}

void missingIconLeavesFolder(Trial& trial) {
    SampleVolume sample;
    sample.hasIcon = false;
    trial.UseFreshVolume(sample);
    trial.Deliver(Event(kPostInstall, 4900));
    const std::uint16_t flags = flagsOf(trial, kMakersFolder);
    trial.Expect((flags & kCustomIconFlag) != 0, "the folder gets its flag without an icon file",
                 Hex(flags, 4));
}

void missingItemsAreSkipped(Trial& trial) {
    for (const bool hasFolder : {true, false}) {
        SampleVolume sample;
        sample.hasIcon = false;
        sample.hasFolder = hasFolder;
        trial.UseFreshVolume(sample);
        const Outcome outcome = trial.Deliver(Event(kPostInstall, 4900));
        trial.Expect(outcome.flagsAfter == 0 && outcome.alerts.empty(),
                     "no error where folder or icon is missing",
                     "error flags " + Hex(outcome.flagsAfter, 8) + ", " + Describe(outcome.alerts));
        trial.Expect(outcome.changes.files.empty(), "neither is made", Describe(outcome.changes));
    }
}

} // namespace

std::vector<Check> FinderChecks() {
    const std::vector<const char*> event = {"dispatch.post-install"};
    return {
        {"finder.folder", "The maker's folder gets a custom icon and becomes visible.",
         "0x0400 is set and 0x4000 cleared on /Applications/Korvane, whatever they were before.", event,
         &folderIsDressed},
        {"finder.icon", "The folder's icon file becomes invisible and has no icon of its own.",
         "0x4000 is set and 0x0400 cleared on /Applications/Korvane/Icon\\r, whatever they were before.",
         event, &iconIsHidden},
        {"finder.other-flags", "All other Finder flags of the two stay as they are.",
         "Labels and locks are the user's.", event, &otherFlagsStay},
        {"finder.other-items", "No other item's Finder flags change.", "Only the two are the maker's.", event,
         &noOtherItemIsDressed},
        {"finder.unknown-product",
         "The flags are set for an unknown product, too.",
         "The folder is shared by all products.",
         {"finder.folder", "finder.icon", "finder.other-items"},
         &unknownProductIsDressed},
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
