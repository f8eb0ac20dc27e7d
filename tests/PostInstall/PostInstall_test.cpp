#include "InstallerHost.h"
#include "support/Allocations.h"
#include "support/FaultTally.h"
#include "support/FinderItem.h"
#include "support/InChild.h"
#include "support/TracedChild.h"

#include <dlfcn.h>
#include <exception>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <macplatform/CallLog.h>
#include <macplatform/FinderFlags.h>
#include <sys/stat.h>
#include <utility>

/// Called once, after the next `fstat` of this process.
static std::function<void()> gAfterNextFstat;

// Replaces the function of the C library. Its variant for large files in 32-bit code is fstat64.
extern "C" int fstat(int file, struct stat* status) noexcept {
    using Fstat = int (*)(int, struct stat*);
    const char* const name = sizeof(long) == 4 ? "fstat64" : "fstat";
    const int result = reinterpret_cast<Fstat>(dlsym(RTLD_NEXT, name))(file, status);
    if (const std::function<void()> act = std::exchange(gAfterNextFstat, nullptr)) act();
    return result;
}

namespace {

namespace fs = std::filesystem;

constexpr const char* kStatusFile = "/Library/Application Support/Korvane/Updater/install_status.txt";
constexpr const char* kFolder = "/Applications/Korvane";
constexpr const char* kIcon = "/Applications/Korvane/Icon\r";
constexpr const char* kUpdater = "com.korvane.updater";
const std::string kAnyUser = ", kCFPreferencesAnyUser, kCFPreferencesCurrentHost";

class PostInstallStep : public InstallerHost {
protected:
    void WriteStatus(const std::string& text) { volume.Write(kStatusFile + 1, text); }

    void MakeItem(const std::string& path, bool isFolder, UInt16 flags) {
        if (isFolder) {
            fs::create_directories(OnVolume(path));
        } else {
            volume.Write(path.substr(1));
        }
        ASSERT_EQ(SetFinderInfo(path, FileInfo{0, 0, flags, {}, 0}), noErr);
        effects.clear();
    }
    int Flags(const std::string& path) const {
        return macplatform::ReadFinderFlags(OnVolume(path)).value_or(UINT16_MAX);
    }
};

TEST_F(PostInstallStep, StoresPreferencesBeforeFinderFlags) {
    WriteStatus("UpdatesEnabled");
    MakeItem(kFolder, true, 0);
    MakeItem(kIcon, false, 0);
    EXPECT_EQ(Deliver({3, 4900, 11}), 0U);
    EXPECT_EQ(effects, (Texts{"fopen \"/Library/Application Support/Korvane/Updater/install_status.txt\"",
                              "set \"com.korvane.updater\" \"UpdateInterval\" = 2" + kAnyUser,
                              "synchronize \"com.korvane.updater\"" + kAnyUser,
                              "set \"com.korvane.audioplugins.Fusewright\" \"Lang\" = \"ja\"" + kAnyUser,
                              "synchronize \"com.korvane.audioplugins.Fusewright\"" + kAnyUser,
                              "FSSetCatalogInfo \"/Applications/Korvane\"",
                              "FSSetCatalogInfo \"/Applications/Korvane/Icon\\r\""}));
    EXPECT_EQ(Preferences(kUpdater), Texts{"UpdateInterval = 2"});
    EXPECT_EQ(Preferences("com.korvane.audioplugins.Fusewright"), Texts{"Lang = \"ja\""});
    EXPECT_EQ(Flags(kFolder), 0x0400);
    EXPECT_EQ(Flags(kIcon), 0x4000);
}

constexpr const char* kEnabled = "UpdateInterval = 2";
constexpr const char* kDisabled = "UpdateInterval = 0";

TEST_F(PostInstallStep, StatusTextDecidesTheInterval) {
    const std::pair<std::string, const char*> rows[] = {
        {"UpdatesEnabled", kEnabled},
        {"updatesenabled", kDisabled},
        {"UpdatesEnabled\r\n", kEnabled},
        {"UpdatesEnable", kDisabled},
        {"UpdatesEnabled=no", kEnabled},
        {"", kDisabled},
        {std::string("UpdatesEnabled\0\xFF", 16), kEnabled},
        {std::string("Updates\0Enabled", 15), kDisabled},
        {" UpdatesEnabled", kDisabled},
        {"\xFF\xFE\x80", kDisabled},
    };
    for (const auto& [text, interval] : rows) {
        WriteStatus(text);
        EXPECT_EQ(Deliver({3}), 0U);
        EXPECT_EQ(Preferences(kUpdater), Texts{interval}) << text;
    }
}

TEST_F(PostInstallStep, MissingStatusFileMeansTheDefault) {
    EXPECT_EQ(Deliver({3}), 0U);
    EXPECT_EQ(Preferences(kUpdater), Texts{kEnabled});
    fs::create_directories(fs::path(OnVolume(kStatusFile)).parent_path());
    fs::create_symlink("nowhere", OnVolume(kStatusFile));
    EXPECT_EQ(Deliver({3}), 0U);
    EXPECT_EQ(Preferences(kUpdater), Texts{kEnabled});
}

TEST_F(PostInstallStep, UnopenedStatusFileStoresTheFailureBeforeTheDefault) {
    WriteStatus("disabled");
    macplatform::InjectFault({"fopen", EACCES});
    EXPECT_EQ(Deliver({3}), 0U);
    const Texts expected = {
        "fopen \"/Library/Application Support/Korvane/Updater/install_status.txt\"",
        "set \"com.korvane.updater\" \"InstallStatus\" = \"Error opening file\"" + kAnyUser,
        "synchronize \"com.korvane.updater\"" + kAnyUser,
        "set \"com.korvane.updater\" \"UpdateInterval\" = 2" + kAnyUser,
        "synchronize \"com.korvane.updater\"" + kAnyUser,
    };
    ASSERT_GE(effects.size(), expected.size());
    EXPECT_EQ(Texts(effects.begin(), effects.begin() + 5), expected);
    EXPECT_THAT(Preferences("com.korvane.audioplugins.Fusewright"), testing::SizeIs(1));
}

TEST_F(PostInstallStep, FolderInsteadOfTheStatusFileStoresTheFailure) {
    // The entry gives the folder a size on every file system.
    const std::string inPlace = volume.Write(std::string(kStatusFile + 1) + "/entry");
    EXPECT_EQ(Deliver({3}), 0U);
    EXPECT_THAT(
        Preferences(kUpdater),
        testing::UnorderedElementsAre(
            testing::MatchesRegex("InstallStatus = \"Attempt to read [0-9]+ bytes, only read 0 bytes\""),
            kEnabled));
}

TEST_F(PostInstallStep, MissingReadPermissionStoresTheFailure) {
    WriteStatus("UpdatesEnabled");
    fs::permissions(OnVolume(kStatusFile), fs::perms::none);
    fs::create_directories(OnVolume("/Library/Preferences"));
    fs::permissions(OnVolume("/Library/Preferences"), fs::perms::all);
    fs::permissions(volume.Path(), fs::perms::all);
    EXPECT_TRUE(IsTrueForAnyUser([] { return Deliver({3}) == 0; }));
    EXPECT_THAT(Preferences(kUpdater),
                testing::UnorderedElementsAre("InstallStatus = \"Error opening file\"", kEnabled));
}

TEST_F(PostInstallStep, PipeInsteadOfTheStatusFileCountsAsEmpty) {
    fs::create_directories(fs::path(OnVolume(kStatusFile)).parent_path());
    ASSERT_EQ(mkfifo(OnVolume(kStatusFile).c_str(), 0600), 0);
    EXPECT_EQ(Deliver({3}), 0U) << "the step does not wait for a writer";
    EXPECT_EQ(Preferences(kUpdater), Texts{kDisabled});
}

/// Truncates the file at each system call of the step in turn. Each run must read the whole file, read the
/// short file, or store the failure.
TEST_F(PostInstallStep, StatusFileMayShrinkWhileItIsRead) {
    const std::string text = "UpdatesEnabled" + std::string(50000, '.');
    const auto deliver = [] { return static_cast<int>(Deliver({3})); };
    const auto shrink = [this](pid_t) { fs::resize_file(OnVolume(kStatusFile), 4); };
    unsigned stop = 0, noted = 0, lost = 0;
    for (bool goesOn = true; goesOn; ++stop) {
        WriteStatus(text);
        fs::remove_all(OnVolume("/Library/Preferences"));
        const TracedEnd end = RunTraced(stop, deliver, shrink);
        const Texts stored = Preferences(kUpdater);
        const bool isNoted = stored.size() == 2 && stored[0].find("bytes, only read") != std::string::npos &&
                             stored[1] == kEnabled;
        const bool isRead = stored == Texts{kEnabled} || stored == Texts{kDisabled};
        if (end.status != 0 || (!isNoted && !isRead)) ++lost;
        noted += isNoted ? 1 : 0;
        // The loop ends at the first run that reads the whole file before the truncation.
        goesOn = end.isReached && (noted == 0 || stored != Texts{kEnabled});
    }
    EXPECT_EQ(lost, 0U);
    EXPECT_GT(noted, 0U);
    PrintFaultTally("status file truncated at a system call of its reader", stop, lost);
}

/// Changes the size of the file directly after the first fstat of the step.
TEST_F(PostInstallStep, FirstSizeOfTheStatusFileCounts) {
    const std::string text = "UpdatesEnabled" + std::string(100, '.');
    const auto deliverWithSize = [&](std::uintmax_t size) {
        WriteStatus(text);
        fs::remove_all(OnVolume("/Library/Preferences"));
        gAfterNextFstat = [&] { fs::resize_file(OnVolume(kStatusFile), size); };
        EXPECT_EQ(Deliver({3}), 0U);
        EXPECT_FALSE(gAfterNextFstat) << "the step did not call fstat";
        return Preferences(kUpdater);
    };
    EXPECT_THAT(deliverWithSize(4),
                testing::UnorderedElementsAre(
                    "InstallStatus = \"Attempt to read 114 bytes, only read 4 bytes\"", kEnabled));
    EXPECT_EQ(deliverWithSize(100000), Texts{kEnabled});
}

TEST_F(PostInstallStep, SizeCountsModulo4GiB) {
    WriteStatus("UpdatesEnabled");
    fs::resize_file(OnVolume(kStatusFile), 0x10000000EULL);
    EXPECT_EQ(Deliver({3}), 0U);
    EXPECT_EQ(Preferences(kUpdater), Texts{kEnabled});
    fs::resize_file(OnVolume(kStatusFile), 0x10000000DULL);
    EXPECT_EQ(Deliver({3}), 0U);
    EXPECT_EQ(Preferences(kUpdater), Texts{kDisabled});
}

TEST_F(PostInstallStep, OutOfMemoryExceptionReachesTheHost) {
    WriteStatus("UpdatesEnabled");
    {
        const ScarceMemory scarce(0x7FFFFFFF);
        for (const std::uintmax_t size : {0xFFFFFFFFULL, 0xFFFFFFFEULL, 0x7FFFFFFFULL}) {
            fs::resize_file(OnVolume(kStatusFile), size);
            EXPECT_THROW(Deliver({3}), std::exception) << size;
        }
    }
    EXPECT_EQ(Preferences(kUpdater), Texts{});
}

TEST_F(PostInstallStep, MissingOrFailingItemsAreSkipped) {
    EXPECT_EQ(Deliver({3, 1234}), 0U);
    EXPECT_EQ(effects, Texts{});

    MakeItem(kFolder, true, 0); // without an icon file
    EXPECT_EQ(Deliver({3, 1234}), 0U);
    EXPECT_EQ(Flags(kFolder), 0x0400);

    MakeItem(kIcon, false, 0);
    for (const char* call :
         {"FSSetCatalogInfo", "FSGetCatalogInfo", "CFURLGetFSRef", "CFURLCreateWithFileSystemPath"}) {
        MakeItem(kFolder, true, 0x4000);
        MakeItem(kIcon, false, 0x0400);
        macplatform::InjectFault({call, permErr}); // for the folder: the icon file must get its flag
        EXPECT_EQ(Deliver({3, 1234}), 0U) << call;
        EXPECT_EQ(Flags(kFolder), 0x4000) << call;
        EXPECT_EQ(Flags(kIcon), 0x4000) << call;
    }
}

} // namespace
