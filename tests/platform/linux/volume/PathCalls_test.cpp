#include "support/CallRecorder.h"
#include "support/VolumeTest.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

using PathCalls = VolumeTest;

bool isPresent(const char* path) { return access(path, F_OK) == 0; }

} // namespace

TEST_F(PathCalls, AreRedirectedToTheVolume) {
    volume.Write("Library/a.txt", "inside");
    char text[8] = "";
    std::FILE* const file = std::fopen("/Library/a.txt", "rb");
    ASSERT_TRUE(file);
    EXPECT_EQ(std::fread(text, 1, 6, file), 6u);
    std::fclose(file);
    EXPECT_STREQ(text, "inside");
    EXPECT_TRUE(std::filesystem::exists("/Library/a.txt")) << "calls of the C++ library are redirected";
    EXPECT_TRUE(isPresent((volume / "Library/a.txt").c_str())) << "the path on this machine stays valid";
    struct stat status {};
    EXPECT_EQ(stat("/Library/a.txt", &status), 0);
    EXPECT_EQ(status.st_size, 6);
    EXPECT_FALSE(isPresent("/Library/b.txt") || isPresent("/Library/a.txt/."));
    EXPECT_TRUE(isPresent("/usr/bin/env")) << "other paths are not redirected";
}

TEST_F(PathCalls, ChangeOnlyTheVolume) {
    ASSERT_EQ(mkdir("/Applications", 0755), 0);
    ASSERT_EQ(mkdir("/Library", 0755), 0);
    const int file = open("/Applications/new", O_WRONLY | O_CREAT | O_EXCL, 0640);
    ASSERT_GE(file, 0);
    close(file);
    struct stat status {};
    ASSERT_EQ(stat((volume / "Applications/new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    EXPECT_EQ(chmod("/Applications/new", 0600), 0);
    EXPECT_EQ(rename("/Applications/new", "/Library/moved"), 0);
    EXPECT_EQ(symlink("/Library/moved", "/Applications/link"), 0);
    EXPECT_TRUE(isPresent("/Applications/link")) << "an absolute link starts at the volume";
    EXPECT_EQ(rename("/Library/moved", (volume / "out").c_str()), 0);
    EXPECT_TRUE(std::filesystem::exists(volume / "out"));
    EXPECT_EQ(unlink("/Applications/link"), 0);
    char name[] = "/Library/tmpXXXXXX";
    const int made = mkstemp(name);
    ASSERT_GE(made, 0);
    close(made);
    EXPECT_TRUE(std::filesystem::exists(volume.Path().string() + name)) << name;
    EXPECT_EQ(remove(name), 0);
    EXPECT_EQ(setxattr("/Library", "user.test", "v", 1, 0), 0);
    EXPECT_EQ(getxattr((volume / "Library").c_str(), "user.test", nullptr, 0), 1);
}

TEST_F(PathCalls, ListAndResolveOnTheVolume) {
    volume.Write("Users/a/b.txt");
    DIR* const folder = opendir("/Users/a");
    ASSERT_TRUE(folder);
    std::string names;
    while (const dirent* const entry = readdir(folder)) {
        if (entry->d_name[0] != '.') names += entry->d_name;
    }
    closedir(folder);
    EXPECT_EQ(names, "b.txt");
    char* const resolved = realpath("/Users/a/../a/b.txt", nullptr);
    EXPECT_STREQ(resolved, "/Users/a/b.txt");
    std::free(resolved);
    std::filesystem::create_symlink("/etc/passwd", volume / "Users/out");
    EXPECT_FALSE(isPresent("/Users/out")) << "no link leads out of the volume";
    EXPECT_FALSE(isPresent("/Users/../../../../etc/passwd"));
}

extern "C" int __open_2(const char* path, int flags);

TEST_F(PathCalls, FortifiedCallsAreRedirected) {
    volume.Write("Library/a.txt");
    std::filesystem::create_symlink("/Library/a.txt", volume / "Library/link");
    const int file = __open_2("/Library/link", O_RDONLY);
    EXPECT_GE(file, 0);
    close(file);
    struct stat status {};
    EXPECT_EQ(fstatat(AT_FDCWD, "/Library/link", &status, 0), 0);
    dirent** names = nullptr;
    const int count = scandir("/Library", &names, nullptr, alphasort);
    EXPECT_EQ(count, 4) << "with \".\" and \"..\"";
    for (int i = 0; i < count; ++i) std::free(names[i]);
    std::free(names);
    EXPECT_EQ(linkat(AT_FDCWD, "/Library/link", AT_FDCWD, "/Library/second", AT_SYMLINK_FOLLOW), 0);
    EXPECT_TRUE(std::filesystem::is_regular_file(volume / "Library/second"));
}

TEST_F(PathCalls, StatCallsOfOtherLibraryVersionsAreRedirected) {
    volume.Write("Library/a.txt", "inside");
    alignas(8) char status[512];
    const int layout = sizeof(long) == 8 ? 1 : 3;
    const auto xstat = reinterpret_cast<int (*)(int, const char*, void*)>(dlsym(RTLD_DEFAULT, "__lxstat"));
    EXPECT_EQ(xstat(layout, "/Library/a.txt", status), 0);
    for (const char* const symbol : {"__xstat", "__xstat64", "__lxstat", "__lxstat64"}) {
        const auto call = reinterpret_cast<int (*)(int, const char*, void*)>(dlsym(RTLD_DEFAULT, symbol));
        EXPECT_EQ(call(layout, "/Library/none", status), -1) << symbol;
    }
    const auto xstatat =
        reinterpret_cast<int (*)(int, int, const char*, void*, int)>(dlsym(RTLD_DEFAULT, "__fxstatat"));
    EXPECT_EQ(xstatat(layout, AT_FDCWD, "/Library/a.txt", status, 0), 0);
    if (void* const wide = dlsym(RTLD_DEFAULT, "__stat64_time64")) { // only in 32-bit code
        EXPECT_EQ(reinterpret_cast<int (*)(const char*, void*)>(wide)("/Library/a.txt", status), 0);
    }
}

TEST_F(PathCalls, FillTemplatesOnTheVolume) {
    volume.Write("Library/a");
    const struct {
        const char* recordedName;
        const char* path;
        int (*make)(char*);
    } rows[] = {
        // recorded name, path, call
        {"mkstemp", "/Library/XXXXXX", [](char* path) { return mkstemp(path); }},
        {"mkstemp", "/Library/XXXXXX", [](char* path) { return mkstemp64(path); }},
        {"mkostemp", "/Library/XXXXXX", [](char* path) { return mkostemp(path, O_CLOEXEC); }},
        {"mkostemp", "/Library/XXXXXX", [](char* path) { return mkostemp64(path, O_CLOEXEC); }},
        {"mkstemps", "/Library/XXXXXX.txt", [](char* path) { return mkstemps(path, 4); }},
        {"mkstemps", "/Library/XXXXXX.txt", [](char* path) { return mkstemps64(path, 4); }},
        {"mkostemps", "/Library/XXXXXX.txt", [](char* path) { return mkostemps(path, 4, O_CLOEXEC); }},
        {"mkostemps", "/Library/XXXXXX.txt", [](char* path) { return mkostemps64(path, 4, O_CLOEXEC); }},
    };
    for (const auto& row : rows) {
        std::string path = row.path;
        EXPECT_EQ(close(row.make(path.data())), 0) << row.recordedName;
        EXPECT_TRUE(std::filesystem::exists(volume.Path().string() + path)) << path;
        macplatform::InjectFault({row.recordedName, EACCES, 0});
        path = row.path;
        EXPECT_EQ(row.make(path.data()), -1) << row.recordedName;
    }
}

TEST_F(PathCalls, NftwIsRedirected) {
    volume.Write("Library/a/b");
    static int gVisits;
    gVisits = 0;
    const auto visit = [](const char* path, const struct stat*, int, FTW*) {
        gVisits += isPresent(path) ? 1 : 0;
        return 0;
    };
    EXPECT_EQ(nftw("/Library/a", visit, 4, FTW_PHYS), 0);
    EXPECT_EQ(gVisits, 2);
}

TEST_F(PathCalls, ReadAPipeAsAnEmptyFile) {
    std::filesystem::create_directory(volume / "Library");
    ASSERT_EQ(mkfifo("/Library/pipe", 0600), 0);
    char byte = 0;
    const int pipe = open("/Library/pipe", O_RDONLY);
    EXPECT_EQ(read(pipe, &byte, 1), 0);
    close(pipe);
    std::FILE* const stream = std::fopen("/Library/pipe", "rb");
    ASSERT_TRUE(stream);
    EXPECT_EQ(std::fread(&byte, 1, 1, stream), 0U);
    EXPECT_TRUE(std::feof(stream));
    std::fclose(stream);
}

TEST_F(PathCalls, RejectEmptyAndTooLongPaths) {
    volume.Write("Library/a.txt");
    const std::string tooLong = "/Library/" + std::string(PATH_MAX - 9, 'x');
    const CallRecorder calls;
    errno = 0;
    EXPECT_EQ(rename("/Library/a.txt", ""), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(rename("", "/Library/a.txt"), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(rename(tooLong.c_str(), "/Library/b.txt"), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(calls.lines.front(), "rename(\"/Library/a.txt\", \"\") = -1: No such file or directory");
}

TEST_F(PathCalls, AreRecordedAndFailWithInjectedFaults) {
    volume.Write("Library/a.txt");
    const CallRecorder calls;
    EXPECT_FALSE(isPresent("/Library/none"));
    EXPECT_EQ(errno, ENOENT);
    macplatform::InjectFault({"fopen", EACCES, 0});
    EXPECT_EQ(std::fopen("/Library/a.txt", "rb"), nullptr);
    EXPECT_EQ(errno, EACCES);
    EXPECT_TRUE(isPresent("/etc/passwd"));
    EXPECT_EQ(link("/Library/a.txt", "/Library/b.txt"), 0);
    EXPECT_THAT(calls.lines,
                testing::ElementsAre("access(\"/Library/none\", 0) = -1: No such file or directory",
                                     "fopen(\"/Library/a.txt\", \"rb\") = NULL: Permission denied",
                                     "link(\"/Library/a.txt\", \"/Library/b.txt\") = 0"));
}
