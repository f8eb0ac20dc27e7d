#include "FileFailure.h"
#include "support/InChild.h"
#include "support/TemporaryFolder.h"

#include <Kelbase/Util/Dir.h>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <limits.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace {
int gStatCalls = 0;
const struct statfs* gVolume = nullptr; // result of statfs for every path; if null, statfs fails
} // namespace

// These definitions replace the functions of the C library in this program.
extern "C" int stat(const char* path, struct stat* status) noexcept {
    ++gStatCalls;
    return fstatat(AT_FDCWD, path, status, 0);
}
extern "C" int statfs(const char*, struct statfs* status) noexcept {
    if (gVolume) *status = *gVolume;
    return gVolume ? 0 : -1;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Util::Dir;

constexpr char kSource[] = "src/Kelbase/Util/Dir_mac";

FolderPath toPath(const std::filesystem::path& name) { return FolderPath(name.c_str(), false); }

std::vector<std::string> texts(const std::vector<String>& names) {
    std::vector<std::string> result;
    for (const String& name : names) result.emplace_back(name.Latin1(), name.GetLength());
    return result;
}

std::vector<std::string> filesIn(const std::filesystem::path& folder, const char* pattern = "",
                                 bool includeAll = false) {
    std::vector<String> names;
    Dir(toPath(folder)).GetFilenames(names, pattern, false, includeAll);
    return texts(names);
}

std::vector<std::string> foldersIn(const std::filesystem::path& folder) {
    std::vector<String> names;
    Dir(toPath(folder)).GetFoldernames(names, "", false);
    return texts(names);
}

TEST(DirListing, ReturnsNamesThatMatchThePattern) {
    const TemporaryFolder folder;
    for (const char* name : {"take.wav", "Take.Wav", "abcdef", "xabc", ".hidden", "ab*bc"})
        folder.Write(name);
    const std::vector<std::string> all = {".hidden", "Take.Wav", "ab*bc", "abcdef", "take.wav", "xabc"};
    const std::pair<const char*, std::vector<std::string>> rows[] = {{"", all},
                                                                     {"*", all},
                                                                     {"*.WAV", {"Take.Wav", "take.wav"}},
                                                                     {"abc", {"abcdef"}},
                                                                     {"T*v", {"Take.Wav", "take.wav"}},
                                                                     {"xab*bc", {"xabc"}},
                                                                     {"a*b*bc", {"ab*bc"}},
                                                                     {"a*b*BC*", {}},
                                                                     {"longer than any name*", {}}};
    for (const auto& [pattern, expected] : rows)
        EXPECT_EQ(filesIn(folder.Path(), pattern), expected) << pattern;
}

TEST(DirListing, ClassifiesEntriesByTheirTarget) {
    const TemporaryFolder folder;
    for (const char* name : {"with blank", "line\nbreak", "\xff\xfe", "sub/file", "sub/take", "sub\\file",
                             "sub\\take", "sub\\nil", "sub\\no", "sub\\none"})
        folder.Write(name);
    for (const auto& [to, link] :
         {std::pair{"with blank", "link"}, {"sub", "linked"}, {"nothing", "dead"}, {"turning", "turning"}})
        std::filesystem::create_symlink(to, folder / link);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    (folder / "socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
    const int made = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(made);

    // A backslash is a separator: the entry "sub\file" is classified as the file "file" in "sub".
    EXPECT_THAT(filesIn(folder.Path()),
                ElementsAre("line\nbreak", "link", "sub\\file", "sub\\take", "with blank", "\xff\xfe"));
    EXPECT_THAT(foldersIn(folder.Path()), ElementsAre("linked", "pipe", "socket", "sub"));
    EXPECT_THAT(filesIn(folder.Path(), "*", true),
                ElementsAre("line\nbreak", "link", "linked", "pipe", "socket", "sub", "sub\\file",
                            "sub\\take", "with blank", "\xff\xfe"));
    for (const char* end : {"", "/", "//"}) { // a path as text is used unchanged
        const String text((folder.Path().string() + end).c_str());
        std::vector<String> names;
        Dir::GetFilenames(text, names, "s", false, false);
        EXPECT_THAT(texts(names), ElementsAre("sub\\file", "sub\\nil", "sub\\no", "sub\\none", "sub\\take"));
        Dir::GetFoldernames(text, names, "s", false);
        EXPECT_THAT(texts(names), ElementsAre("socket", "sub"));
    }
}

TEST(DirListing, ClassifiesEntriesByTheirCanonicalPath) {
    const TemporaryFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    for (const char* name : {"etc/file", "tmp/file", "usr", "var"}) folder.Write(name);
    std::filesystem::current_path(folder.Path());
    // The canonical form of "/.." is "/". That of "/../etc" is "etc", a path in the working directory.
    EXPECT_THAT(foldersIn("/.."), ElementsAre("etc", "tmp"));
    EXPECT_THAT(filesIn("/.."), ElementsAre("usr", "var"));
    std::filesystem::current_path(before);
}

TEST(DirListing, AppendsAndSortsOrKeepsTheList) {
    const TemporaryFolder folder;
    folder.Write("m");
    Dir dir(toPath(folder.Path()));
    std::vector<String> names = {"z", "a"};
    dir.GetFilenames(names, "", true, false);
    EXPECT_THAT(texts(names), ElementsAre("a", "m", "z"));
    // The pattern is an element of the list that the call clears.
    dir.GetFoldernames(names, names.front(), false);
    EXPECT_THAT(names, IsEmpty());
    for (const std::string& missing :
         {(folder / "missing").string(), (folder / "m").string(), std::string()}) {
        names = {"z", "a"};
        dir.SetPath(toPath(missing));
        dir.GetFilenames(names, "", true, true);
        Dir::GetFoldernames(missing.c_str(), names, "", true);
        EXPECT_THAT(texts(names), ElementsAre("z", "a")) << missing;
        dir.GetFilenames(names, "", false, true);
        EXPECT_THAT(names, IsEmpty()) << missing;
    }
}

TEST(DirListing, OmitsUnreachableEntries) {
    const TemporaryFolder folder;
    folder.Write("closed/file");
    folder.Write("names only/file");
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
    std::filesystem::permissions(folder / "closed", std::filesystem::perms(0));
    std::filesystem::permissions(folder / "names only", std::filesystem::perms(0444));
    EXPECT_TRUE(IsTrueForAnyUser([&] {
        return filesIn(folder / "closed").empty() && filesIn(folder / "names only", "", true).empty() &&
               foldersIn(folder.Path()).size() == 2;
    }));
    std::filesystem::permissions(folder / "closed", std::filesystem::perms(0700));
    std::filesystem::permissions(folder / "names only", std::filesystem::perms(0700));

    std::filesystem::path deep = folder.Path();
    while (deep.native().size() < PATH_MAX - 210) deep /= std::string(200, 'd');
    deep /= std::string(PATH_MAX - 8 - deep.native().size(), 'd');
    std::filesystem::create_directories(deep);
    const int opened = open(deep.c_str(), O_RDONLY | O_DIRECTORY);
    for (const char* name : {"1", "12345", "123456"}) // the longest path has 5 more bytes
        close(openat(opened, name, O_CREAT | O_WRONLY, 0600));
    close(opened);
    EXPECT_THAT(filesIn(deep), ElementsAre("1", "12345"));
}

TEST(DirListing, CallsStatOnceForEachMatchAndNeverForOtherEntries) {
    const TemporaryFolder folder;
    for (int i = 0; i < 30; ++i) {
        folder.Write("file" + std::to_string(i));
        std::filesystem::create_symlink("file0", folder / ("link" + std::to_string(i)));
    }
    std::vector<String> names;
    gStatCalls = 0;
    Dir::GetFilenames(folder.Path().c_str(), names, "link", false, false);
    EXPECT_EQ(names.size(), 30U);
    EXPECT_LE(gStatCalls, 30);
}

TEST(Dir, CreatesAndRemovesDirectories) {
    const TemporaryFolder folder;
    const std::string base = folder.Path().string();
    folder.Write("file");
    EXPECT_TRUE(Dir(toPath("/")).Exists());
    EXPECT_FALSE(Dir().Exists() || Dir(toPath(base + "/file")).Exists());

    const Dir deep(toPath(base + "/a/b//c")), below(toPath(base + "/file/x")), top(toPath(base + "/a"));
    EXPECT_EQ(FailureOf(kSource, base + "/a/b/c/", [&] { deep.Create(false); }),
              "118 3 0: mkdir() failed with -1/2");
    EXPECT_EQ(FailureOf(kSource, base + "/file/x/", [&] { below.Create(true); }),
              "105 3 0: mkdir() failed with -1/17");
    const mode_t mask = umask(0);
    deep.Create(true);
    umask(mask);
    deep.Create(false);
    EXPECT_TRUE(deep.Exists());
    EXPECT_EQ(std::filesystem::status(base + "/a").permissions(), std::filesystem::perms(0755));
    EXPECT_EQ(FailureOf(kSource, base + "/a/", [&] { top.Remove(); }), "135 5 0: rmdir() failed");
    deep.Remove();
    deep.Remove();
    EXPECT_FALSE(deep.Exists());
    deep.Create(false);
    EXPECT_TRUE(deep.Exists());
}

TEST(Dir, StoresTimes) {
    const TemporaryFolder folder;
    const Dir dir(toPath(folder.Path())), missing(toPath(folder / "missing"));
    dir.SetTime({1000000000, -1});
    Util::FileTime time = {};
    dir.GetTime(&time);
    EXPECT_EQ(time.accessed, 1000000000);
    EXPECT_EQ(time.modified, -1);
    const std::string name = folder / "missing/";
    EXPECT_EQ(FailureOf(kSource, name, [&] { missing.SetTime(time); }), "158 7 0: Error setting folder time");
    EXPECT_EQ(FailureOf(kSource, name, [&] { missing.GetTime(&time); }),
              "171 7 0: Error getting folder time");
}

TEST(Dir, ComputesFreeSpaceIn32Bits) {
    struct statfs status = {};
    gVolume = &status;
    const std::pair<unsigned int, unsigned long long> rows[] = {{3, 12288},
                                                                {0x7FFFF, 0x7FFFF000},
                                                                {0x80000, 0xFFFFFFFF80000000},
                                                                {0xFFFFFFFF, 0xFFFFFFFFFFFFF000},
                                                                {0x100001, 4096}};
    Dir::DirInfo info = {};
    for (const auto& [blocks, bytes] : rows) {
        status.f_bsize = 4096;
        status.f_bavail = blocks;
        EXPECT_TRUE(Dir(toPath("/")).GetDirInfo(info));
        EXPECT_EQ(info.availableSpace, bytes);
    }
    gVolume = nullptr;
    EXPECT_FALSE(Dir(toPath("/")).GetDirInfo(info));
    EXPECT_EQ(info.availableSpace, 4096U);
}

TEST(DirFindFile, FindsOwnFilesBeforeThoseOfSubfolders) {
    const TemporaryFolder folder;
    for (const char* name : {"b", "c", "a/Take.WAV", "a/deep/only", "z/take.wav"}) folder.Write(name);
    // These links form cycles with more paths than a search can visit.
    for (const char* link : {"1", "2", "a/3", "a/4"})
        std::filesystem::create_symlink(folder.Path(), folder / link);
    const struct {
        const char* name;
        bool recursive;
        unsigned int count, after;
        std::string found;
    } rows[] = {
        // name, recursive, count, count after the search, result
        {"TAKE.wav", false, 0, 2, ""},
        {"/elsewhere/TAKE.wav", true, 0, 3, "a/Take.WAV"},
        {"only", true, 7, 11, "a/deep/only"},
        {"B", true, 0, 1, "b"},
        {"tak", true, 0, 5, ""},
        {"", true, 0, 5, ""},
        {"c", true, 4998, 5000, "c"},
        {"c", true, 4999, 5001, ""},
        {"only", true, 5000, 5001, ""},
        {"b", true, 0xFFFFFFFF, 0xFFFFFFFF, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        unsigned int count = row.count;
        const FilePath found = Dir::FindFile(folder.Path().c_str(), row.name, row.recursive, count);
        EXPECT_EQ(found.ToString().Latin1(), row.found.empty() ? "" : (folder / row.found).string());
        EXPECT_EQ(count, row.after);
    }
}

} // namespace
