#include "FileFailure.h"
#include "TemporaryFolder.h"

#include <Kelbase/Util/Dir.h>

#include <gmock/gmock.h>

#include <cerrno>

#include <fcntl.h>
#include <limits.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace {
int statCalls = 0;
const struct statfs* volume = nullptr; // what every path is said to stand on; null: statfs fails
} // namespace

// The program's own definitions take the place of the C library's.
extern "C" int stat(const char* path, struct stat* status) noexcept {
    ++statCalls;
    return fstatat(AT_FDCWD, path, status, 0);
}
extern "C" int statfs(const char*, struct statfs* status) noexcept {
    if (volume) *status = *volume;
    return volume ? 0 : -1;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Util::Dir;

std::string text(const String& s) { return {s.Latin1(), s.GetLength()}; }

FolderPath toPath(const std::filesystem::path& name) { return FolderPath(name.c_str(), false); }

std::vector<std::string> texts(const std::vector<String>& names) {
    std::vector<std::string> result;
    for (const String& name : names) result.push_back(text(name));
    return result;
}

std::vector<std::string> filesIn(const std::filesystem::path& folder, const char* pattern = "",
                                 bool includeAll = false) {
    std::vector<String> names;
    Dir(toPath(folder)).GetFilenames(names, pattern, false, includeAll);
    return texts(names);
}

std::vector<std::string> foldersIn(const std::filesystem::path& folder, const char* pattern = "") {
    std::vector<String> names;
    Dir(toPath(folder)).GetFoldernames(names, pattern, false);
    return texts(names);
}

void makeSocket(const std::string& name) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(name.copy(address.sun_path, sizeof address.sun_path - 1), sizeof address.sun_path - 1);
    const int made = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(made);
}

TEST(DirListing, NamesWhatFitsThePattern) {
    const TemporaryFolder folder;
    for (const char* name : {"take.wav", "Take.Wav", "wav", "abcdef", "xabc", ".hidden", "ab*bc"})
        folder.Write(name);
    const struct {
        const char* pattern;
        std::vector<std::string> names;
    } rows[] = {
        {"", {".hidden", "Take.Wav", "ab*bc", "abcdef", "take.wav", "wav", "xabc"}},
        {"*", {".hidden", "Take.Wav", "ab*bc", "abcdef", "take.wav", "wav", "xabc"}},
        {"*.WAV", {"Take.Wav", "take.wav"}},
        {"abc", {"abcdef"}},
        {"T*v", {"Take.Wav", "take.wav"}},
        {"xab*bc", {"xabc"}},  // beginning and end may overlap
        {"a*b*bc", {"ab*bc"}}, // the second star is a letter
        {"a*b*BC*", {}},
        {"longer than any name*", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pattern);
        EXPECT_EQ(filesIn(folder.Path(), row.pattern), row.names);
        std::vector<String> names;
        Dir::GetFilenames(folder.Path().c_str(), names, row.pattern, false, false);
        EXPECT_EQ(texts(names), row.names);
    }
}

TEST(DirListing, JudgesEntriesByWhatTheyLeadTo) {
    const TemporaryFolder folder;
    for (const char* name : {"with blank", "line\nbreak", "\xff\xfe", "sub/in sub"}) folder.Write(name);
    std::filesystem::create_symlink("with blank", folder / "link");
    std::filesystem::create_symlink("sub", folder / "linked");
    std::filesystem::create_symlink("nothing", folder / "dead");
    std::filesystem::create_symlink("turning", folder / "turning");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    makeSocket(folder / "socket");

    EXPECT_THAT(filesIn(folder.Path()), ElementsAre("line\nbreak", "link", "with blank", "\xff\xfe"));
    EXPECT_THAT(foldersIn(folder.Path()), ElementsAre("linked", "pipe", "socket", "sub"));
    EXPECT_THAT(filesIn(folder.Path(), "*", true), ElementsAre("line\nbreak", "link", "linked", "pipe",
                                                               "socket", "sub", "with blank", "\xff\xfe"));
    EXPECT_THAT(filesIn(folder / "linked"), ElementsAre("in sub"));
}

TEST(DirListing, ReadsBackslashesAsSeparatorsUnlessTheFolderIsText) {
    const TemporaryFolder folder;
    for (const char* name : {"a/file", "a\\file", "a\\folder", "a\\missing", "b/..\\x"}) folder.Write(name);
    std::filesystem::create_directory(folder / "a/folder");
    EXPECT_THAT(filesIn(folder.Path()), ElementsAre("a\\file"));
    EXPECT_THAT(foldersIn(folder.Path()), ElementsAre("a", "a\\folder", "b"));
    for (const char* end : {"", "/", "//"}) {
        std::vector<String> names;
        Dir::GetFilenames((folder.Path().string() + end).c_str(), names, "", false, false);
        EXPECT_THAT(texts(names), ElementsAre("a\\file", "a\\folder", "a\\missing"));
        Dir::GetFoldernames((folder.Path().string() + end).c_str(), names, "", false);
        EXPECT_THAT(texts(names), ElementsAre("a", "b"));
    }
}

TEST(DirListing, AppendsAndSortsOrLeavesTheListAlone) {
    const TemporaryFolder folder;
    folder.Write("m");
    Dir dir(toPath(folder.Path()));
    std::vector<String> names = {"z", "a"};
    dir.GetFilenames(names, "", true, false);
    EXPECT_THAT(texts(names), ElementsAre("a", "m", "z"));
    dir.GetFoldernames(names, names.front(), false); // a pattern out of the list that is cleared
    EXPECT_THAT(names, IsEmpty());

    for (const std::string& missing :
         {(folder / "missing").string(), (folder / "m").string(), std::string()}) {
        SCOPED_TRACE(missing);
        names = {"z", "a"};
        dir.SetPath(toPath(missing));
        dir.GetFilenames(names, "", true, true);
        Dir::GetFoldernames(missing.c_str(), names, "", true);
        EXPECT_THAT(texts(names), ElementsAre("z", "a"));
        dir.GetFilenames(names, "", false, true);
        EXPECT_THAT(names, IsEmpty());
    }
}

TEST(DirListing, LeavesOutWhatCannotBeReached) {
    const TemporaryFolder folder;
    folder.Write("closed/file");
    folder.Write("names only/file");
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
    std::filesystem::permissions(folder / "closed", std::filesystem::perms(0));
    std::filesystem::permissions(folder / "names only", std::filesystem::perms(0444));
    EXPECT_TRUE(HoldsForAnyUser([&] {
        return filesIn(folder / "closed").empty() && filesIn(folder / "names only").empty() &&
               filesIn(folder / "names only", "", true).empty() && foldersIn(folder / "names only").empty() &&
               foldersIn(folder.Path()).size() == 2;
    }));
    std::filesystem::permissions(folder / "closed", std::filesystem::perms(0700));
    std::filesystem::permissions(folder / "names only", std::filesystem::perms(0700));

    std::filesystem::path deep = folder.Path();
    while (deep.native().size() < PATH_MAX - 210) deep /= std::string(200, 'd');
    deep /= std::string(PATH_MAX - 8 - deep.native().size(), 'd');
    std::filesystem::create_directories(deep);
    const int opened = open(deep.c_str(), O_RDONLY | O_DIRECTORY);
    for (const char* name : {"1", "12345", "123456"}) // 5 bytes are left of the longest path
        close(openat(opened, name, O_CREAT | O_WRONLY, 0600));
    close(opened);
    EXPECT_THAT(filesIn(deep), ElementsAre("1", "12345"));
}

TEST(DirListing, AsksOnceForAnEntryThatFitsAndNeverForOthers) {
    const TemporaryFolder folder;
    for (int i = 0; i < 30; ++i) {
        folder.Write("file" + std::to_string(i));
        std::filesystem::create_symlink("file0", folder / ("link" + std::to_string(i)));
    }
    std::vector<String> names;
    statCalls = 0;
    Dir::GetFilenames(folder.Path().c_str(), names, "link", false, false);
    EXPECT_EQ(names.size(), 30U);
    EXPECT_LE(statCalls, 30);
    Dir::GetFilenames(folder.Path().c_str(), names, "none of them", false, false);
    EXPECT_LE(statCalls, 30);
}

TEST(Dir, ExistsWhenItIsAFolder) {
    const TemporaryFolder folder;
    folder.Write("file");
    std::filesystem::create_symlink(".", folder / "link");
    EXPECT_TRUE(Dir(toPath(folder.Path())).Exists());
    EXPECT_TRUE(Dir(toPath(folder / "link")).Exists());
    EXPECT_TRUE(Dir(toPath("/")).Exists());
    EXPECT_FALSE(Dir().Exists());
    EXPECT_FALSE(Dir(toPath(folder / "file")).Exists());
    EXPECT_FALSE(Dir(toPath(folder / "missing")).Exists());
}

TEST(Dir, IsMadeAndRemoved) {
    const TemporaryFolder folder;
    const std::string base = folder.Path().string();
    const auto failed = [&](const std::string& what, const std::string& name) {
        return "src/Kelbase/Util/Dir_mac:" + what + " (" + base + name + ")";
    };
    const Dir deep(toPath(base + "/a/b//c"));
    EXPECT_EQ(FailureOf([&] { deep.Create(false); }),
              failed("118 kind 3 errno 0: mkdir() failed with -1/2", "/a/b/c/"));
    const mode_t mask = umask(0);
    deep.Create(true);
    umask(mask);
    deep.Create(true);
    deep.Create(false);
    EXPECT_TRUE(deep.Exists());
    struct stat status;
    ASSERT_EQ(stat((base + "/a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0755U);
    Dir(toPath(base + "/single")).Create(false);
    EXPECT_TRUE(Dir(toPath(base + "/single")).Exists());

    folder.Write("file");
    EXPECT_EQ(FailureOf([&] { Dir(toPath(base + "/file/x")).Create(true); }),
              failed("105 kind 3 errno 0: mkdir() failed with -1/17", "/file/x/"));
    EXPECT_EQ(FailureOf([&] { Dir(toPath(base + "/a")).Remove(); }),
              failed("135 kind 5 errno 0: rmdir() failed", "/a/"));
    deep.Remove();
    deep.Remove();
    EXPECT_FALSE(deep.Exists());
    EXPECT_TRUE(Dir(toPath(base + "/a/b")).Exists());

    const Dir relative(toPath("/../kelbase-made-nowhere")); // cleans to a name without a beginning
    relative.Create(true);
    EXPECT_FALSE(relative.Exists());
}

TEST(Dir, KeepsTimes) {
    const TemporaryFolder folder;
    const Dir dir(toPath(folder.Path()));
    dir.SetTime({1000000000, -1});
    Util::FileTime time = {};
    dir.GetTime(&time);
    EXPECT_EQ(time.accessed, 1000000000);
    EXPECT_EQ(time.modified, -1);

    const Dir missing(toPath(folder / "missing"));
    const std::string tail = " (" + (folder / "missing/").string() + ")";
    EXPECT_EQ(FailureOf([&] { missing.SetTime(time); }),
              "src/Kelbase/Util/Dir_mac:158 kind 7 errno 0: Error setting folder time" + tail);
    EXPECT_EQ(FailureOf([&] { missing.GetTime(&time); }),
              "src/Kelbase/Util/Dir_mac:171 kind 7 errno 0: Error getting folder time" + tail);
}

TEST(Dir, ReckonsFreeSpaceIn32Bits) {
    struct statfs told = {};
    told.f_bsize = 4096;
    const struct {
        unsigned int blocks;
        unsigned long long bytes;
    } rows[] = {
        {3, 12288},
        {0x7FFFF, 0x7FFFF000},
        {0x80000, 0xFFFFFFFF80000000},
        {0xFFFFFFFF, 0xFFFFFFFFFFFFF000},
        {0x100001, 4096},
    };
    for (const auto& row : rows) {
        told.f_bavail = row.blocks;
        volume = &told;
        Dir::DirInfo info = {};
        EXPECT_TRUE(Dir(toPath("/")).GetDirInfo(info));
        EXPECT_EQ(info.availableSpace, row.bytes);
    }
    volume = nullptr;
    Dir::DirInfo info = {7};
    EXPECT_FALSE(Dir(toPath("/")).GetDirInfo(info));
    EXPECT_EQ(info.availableSpace, 7U);
}

TEST(DirFindFile, TakesOwnFilesBeforeThoseBelow) {
    const TemporaryFolder folder;
    for (const char* name : {"b", "c", "a/Take.WAV", "a/deep/only", "z/take.wav"}) folder.Write(name);
    const String base = folder.Path().c_str();
    const auto found = [&](const char* name, bool recursive, unsigned int& count) {
        return text(Dir::FindFile(base, name, recursive, count).GetInternal());
    };
    unsigned int count = 0;
    EXPECT_EQ(found("TAKE.wav", false, count), "");
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(found("/elsewhere/TAKE.wav", true, count), (folder / "a/Take.WAV").string());
    EXPECT_EQ(count, 5U) << "shared by both searches";
    EXPECT_EQ(found("only", true, count), (folder / "a/deep/only").string());
    EXPECT_EQ(found("B", true, count), (folder / "b").string());
    EXPECT_EQ(found("tak", true, count), "");
    EXPECT_EQ(found("", true, count), "");

    count = 4998;
    EXPECT_EQ(found("c", true, count), (folder / "c").string());
    EXPECT_EQ(count, 5000U);
    count = 4999;
    EXPECT_EQ(found("c", true, count), "") << "it brought the count past the limit";
    EXPECT_EQ(count, 5001U);
    for (count = 5000; count < 5003; ++count) EXPECT_EQ(found("only", true, count), "");
    count = 0xFFFFFFFF;
    EXPECT_EQ(found("b", true, count), "");
}

TEST(DirFindFile, EndsWhereLinksTurnInCircles) {
    const TemporaryFolder folder;
    folder.Write("sub/file");
    for (const char* link : {"1", "2", "sub/3", "sub/4"})
        std::filesystem::create_symlink(folder.Path(), folder / link);
    unsigned int count = 0;
    EXPECT_TRUE(Dir::FindFile(folder.Path().c_str(), "missing", true, count).IsEmpty());
    EXPECT_EQ(count, 1U);
}

} // namespace
