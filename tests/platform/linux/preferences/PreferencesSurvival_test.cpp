// Preferences survive failures of their synchronisation: a killed process, a held lock, a full disk.

#include <macplatform/PropertyList.h>

#include "PreferenceCalls.h"
#include "support/FaultTally.h"
#include "support/InChild.h"
#include "support/TracedChild.h"
#include "support/VolumeTest.h"

#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <functional>
#include <optional>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// While a value is set, `nanosleep` returns at once and counts its calls here. A test of a held lock takes
/// no time then.
std::optional<unsigned> gNaps;

} // namespace

extern "C" int nanosleep(const timespec* time, timespec* left) {
    static const auto next =
        reinterpret_cast<int (*)(const timespec*, timespec*)>(dlsym(RTLD_NEXT, "nanosleep"));
    if (!gNaps) return next(time, left);
    ++*gNaps;
    return 0;
}

namespace {

/// Runs the work in a child and kills the child at its system call number `stop`. Returns false if the work
/// ends before that call.
bool isKilledAt(unsigned stop, const std::function<int()>& work) {
    const TracedEnd end = RunTraced(stop, work, [](pid_t child) { kill(child, SIGKILL); });
    EXPECT_TRUE(end.isReached || end.status == 0) << "the child cannot be traced, or its work fails";
    return end.isReached;
}

class PreferencesSurvival : public VolumeTest {
protected:
    std::filesystem::path Folder() const { return volume / "Library/Preferences"; }
    std::filesystem::path File() const { return Folder() / "com.example.app.plist"; }
    void WriteOld() const { volume.Write("Library/Preferences/com.example.app.plist", old); }
    std::ptrdiff_t FilesInFolder() const {
        return std::distance(std::filesystem::directory_iterator(Folder()), {});
    }

    const std::string old = "<plist version=\"1.0\"><dict><key>Lang</key><string>de</string></dict></plist>";
};

} // namespace

TEST_F(PreferencesSurvival, OfAKillAtEverySystemCall) {
    const auto change = [] {
        Set("Lang", "ja");
        return Synchronise() ? 0 : 1;
    };
    WriteOld();
    ASSERT_FALSE(isKilledAt(1U << 30, change));
    const std::string fresh = ReadBytes(File());
    ASSERT_NE(fresh, old);
    unsigned stop = 0, lost = 0;
    std::filesystem::permissions(File(), std::filesystem::perms(0644));
    for (WriteOld(); isKilledAt(stop, change); WriteOld(), ++stop) {
        const std::string left = ReadBytes(File());
        struct stat status {};
        ASSERT_EQ(stat(File().c_str(), &status), 0);
        if ((left != old && left != fresh) || (status.st_mode & 07777) != 0644) ++lost;
        Set("Lang", "ja");
        if (!Synchronise() || ReadBytes(File()) != fresh || FilesInFolder() != 1) ++lost;
    }
    EXPECT_GT(stop, 40U);
    EXPECT_EQ(lost, 0U);
    PrintFaultTally("synchronisation killed at a system call", stop, lost);
}

TEST_F(PreferencesSurvival, OfManyWritersAtOnce) {
    constexpr unsigned writers = 32, keys = 100;
    for (unsigned writer = 0; writer < writers; ++writer) {
        if (fork() != 0) continue;
        for (unsigned key = 0; key < keys; ++key) {
            SetNumber(("w" + std::to_string(writer) + "-" + std::to_string(key)).c_str(), 1);
            while (key % 20 == 19 && !Synchronise()) {
            } // If another writer holds the lock too long, the values stay pending.
        }
        _exit(0);
    }
    for (unsigned writer = 0; writer < writers; ++writer) ASSERT_GT(wait(nullptr), 0);
    const auto stored = macplatform::ReadPropertyList(File().string()).root.keys.size();
    EXPECT_EQ(stored, writers * keys);
    PrintFaultTally("keys set by 32 processes at once", writers * keys,
                    static_cast<unsigned>(writers * keys - stored));
}

TEST_F(PreferencesSurvival, OfALockHeldByAnotherWriter) {
    WriteOld();
    const int folder = open(Folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    gNaps = 0;
    Set("Lang", "ja");
    EXPECT_FALSE(Synchronise());
    EXPECT_GT(*gNaps, 1000U);
    gNaps.reset();
    EXPECT_EQ(ReadBytes(File()), old);
    close(folder);
    EXPECT_TRUE(Synchronise()) << "the value is still pending";
}

TEST_F(PreferencesSurvival, OfAFileSizeLimit) {
    WriteOld();
    EXPECT_EQ(InChild([] {
                  const rlimit none = {0, 0};
                  signal(SIGXFSZ, SIG_IGN);
                  if (setrlimit(RLIMIT_FSIZE, &none) != 0) return 77;
                  Set("Lang", "ja");
                  return Synchronise() ? 1 : 0;
              }),
              0);
    EXPECT_EQ(ReadBytes(File()), old);
    EXPECT_EQ(FilesInFolder(), 1);
}

TEST_F(PreferencesSurvival, OfAFullDiskAndAReadOnlyVolume) {
    const int outcome = InChild([this] {
        if (unshare(geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) != 0) return 77;
        const char* const path = volume.Path().c_str();
        if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", path, "tmpfs", 0, "size=64k") != 0 || !macplatform::SetStartupVolume(path)) {
            return 77;
        }
        WriteOld();
        volume.Write("filler", std::string(1 << 20, 'x'));
        Set("Lang", "ja");
        if (Synchronise() || ReadBytes(File()) != old || FilesInFolder() != 1) return 1;
        std::filesystem::remove(volume / "filler");
        if (mount("none", path, nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) return 77;
        if (Synchronise() || ReadBytes(File()) != old) return 2;
        if (mount("none", path, nullptr, MS_REMOUNT, nullptr) != 0) return 77;
        return Synchronise() && ReadBytes(File()) != old ? 0 : 3;
    });
    if (outcome == 77) GTEST_SKIP() << "this process may not mount file systems";
    EXPECT_EQ(outcome, 0);
}
