#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstring>

namespace xcodhost {

namespace {

/// Sets the item's Finder flags through the platform, as the Finder does.
void setFinderFlags(const CheckRun& run, const char* macPath, std::uint16_t flags) {
    run.Trace("flags", macPath + (": " + Hex(flags, 4)));
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

/// Delivers post-install for several earlier flags of the item. Expects that the bits of `mask` become
/// `wanted`, and ignores the other bits.
void expectFinderFlags(CheckRun& run, const char* macPath, std::uint16_t mask, std::uint16_t wanted) {
    constexpr std::uint16_t allFlags = 0xFFFF & ~0x0001; // the lowest bit belongs to the file system
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

void otherFlagsStay(CheckRun& run) {
    constexpr std::uint16_t others = 0xFFFE & ~(kInvisibleFlag | kCustomIconFlag);
    for (const char* const path : {kVendorFolder, kIconFile}) {
        for (const std::uint16_t before : {others, std::uint16_t{0x000E}, std::uint16_t{0x8000}}) {
            run.UseFreshVolume();
            run.Interface();
            setFinderFlags(run, path, before);
            run.Deliver(Event(kPostInstall, 4900));
            const auto after = static_cast<std::uint16_t>(flagsOf(run, path) & others);
            run.Expect(after == before,
                       std::string(Printable(path)) + ": the other Finder flags keep the value " +
                           Hex(before, 4),
                       Hex(after, 4));
        }
    }
}

void unknownProductSetsFlags(CheckRun& run) {
    const Outcome outcome = run.Deliver(Event(kPostInstall, 1234));
    run.Expect(outcome.changes.finderFlags.size() == 2, "the folder and its icon file get their Finder flags",
               Describe(outcome.changes));
}

void missingIconLeavesFolder(CheckRun& run) {
    SampleVolume sample;
    sample.hasIcon = false;
    run.UseFreshVolume(sample);
    run.Deliver(Event(kPostInstall, 4900));
    const std::uint16_t flags = flagsOf(run, kVendorFolder);
    run.Expect((flags & kCustomIconFlag) != 0,
               "the custom icon flag of the folder is set without an icon file", Hex(flags, 4));
}

void missingItemsAreSkipped(CheckRun& run) {
    for (const bool hasFolder : {true, false}) {
        SampleVolume sample;
        sample.hasIcon = false;
        sample.hasFolder = hasFolder;
        run.UseFreshVolume(sample);
        const Outcome outcome = run.Deliver(Event(kPostInstall, 4900));
        run.Expect(outcome.flagsAfter == 0 && outcome.alerts.empty(),
                   "no error if the folder or the icon file is missing",
                   "error flags " + Hex(outcome.flagsAfter, 8) + ", " + Describe(outcome.alerts));
        run.Expect(outcome.changes.files.empty(), "neither is created", Describe(outcome.changes));
    }
}

} // namespace

void FolderFlagsAreSet(CheckRun& run) {
    expectFinderFlags(run, kVendorFolder, kInvisibleFlag | kCustomIconFlag, kCustomIconFlag);
}

void IconIsHidden(CheckRun& run) {
    expectFinderFlags(run, kIconFile, kInvisibleFlag | kCustomIconFlag, kInvisibleFlag);
}

void OtherItemsKeepFlags(CheckRun& run) {
    for (const std::int32_t product : {4900, 1234}) {
        for (const FinderFlagChange& change : run.Deliver(Event(kPostInstall, product)).changes.finderFlags) {
            run.Expect(change.path == kVendorFolder || change.path == kIconFile,
                       "no other item's Finder flags change",
                       Printable(change.path) + ": " + Describe(change.flag));
        }
    }
}

const std::vector<Check::Body> kNeedsEvent = {&PostInstallReturns};

const CheckGroup kFinderChecks = {
    "finder",
    {
        Check("folder", &FolderFlagsAreSet, kNeedsEvent)
            .Claim("Post-install makes the vendor's folder visible and gives the folder a custom icon.")
            .Reason("Post-install sets flag 0x0400 and clears flag 0x4000 of /Applications/Korvane. The "
                    "result does not depend on the earlier flags."),
        Check("icon", &IconIsHidden, kNeedsEvent)
            .Claim("Post-install makes the folder's icon file invisible and clears its custom icon flag.")
            .Reason("Post-install sets flag 0x4000 and clears flag 0x0400 of /Applications/Korvane/Icon\\r. "
                    "The result does not depend on the earlier flags."),
        Check("other-flags", &otherFlagsStay, kNeedsEvent)
            .Claim("Post-install keeps all other Finder flags of the folder and of its icon file.")
            .Reason("Labels and locks belong to the user."),
        Check("other-items", &OtherItemsKeepFlags, kNeedsEvent)
            .Claim("Post-install changes the Finder flags of no other item.")
            .Reason("Only the folder and its icon file belong to the vendor."),
        Check("unknown-product", &unknownProductSetsFlags,
              {&FolderFlagsAreSet, &IconIsHidden, &OtherItemsKeepFlags})
            .Claim("Post-install also sets the Finder flags for an unknown product.")
            .Reason("All products share the folder."),
        Check("no-icon", &missingIconLeavesFolder, {&FolderFlagsAreSet})
            .Claim("Post-install sets the folder's Finder flags if the icon file is missing.")
            .Reason("The two items must not depend on each other."),
        Check("missing", &missingItemsAreSkipped, kNeedsEvent)
            .Claim(
                "Post-install skips a missing folder or icon file without an error and does not create it.")
            .Reason("The user may have moved the products."),
    }};

} // namespace xcodhost
