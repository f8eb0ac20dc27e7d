#include <macplatform/StartupVolume.h>

#include "support/TemporaryFolder.h"

#include <cerrno>
#include <climits>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using namespace macplatform;

namespace {

class StartupVolumeTest : public testing::Test {
protected:
    StartupVolumeTest() {
        folder.Write("Mac/Library/Preferences/file");
        folder.Write("Mac/Users/ann/notes");
        folder.Write("outside/secret");
        fs::create_directory_symlink("/Library/Preferences", folder / "Mac/Library/absolute");
        fs::create_directory_symlink("Preferences", folder / "Mac/Library/relative");
        fs::create_directory_symlink("../../../../../outside", folder / "Mac/Library/escape");
        fs::create_symlink("/Users/new", folder / "Mac/Library/dangling");
        fs::create_symlink("/Library/loop", folder / "Mac/Library/loop");
        fs::create_symlink("file", folder / "Mac/Library/Preferences/toFile");
        EXPECT_TRUE(SetStartupVolume(folder / "Mac"));
        root = StartupVolume();
    }
    ~StartupVolumeTest() override { SetStartupVolume(""); }

    TemporaryFolder folder;
    std::string root;
};

TEST_F(StartupVolumeTest, RedirectsMacPaths) {
    struct Row {
        const char* condition;
        const char* path;
        const char* onVolume; ///< Relative to the directory of the volume.
    };
    const Row rows[] = {
        {"path without links", "/Library/Preferences/file", "/Library/Preferences/file"},
        {"only one component", "/System", "/System"},
        {"empty and dot components", "//./Library/.//Preferences", "/Library/Preferences"},
        {"trailing slash", "/Users/ann/", "/Users/ann/"},
        {"missing tail", "/Volumes/Disk/a/b", "/Volumes/Disk/a/b"},
        {"file as a directory", "/Users/ann/notes/x", "/Users/ann/notes/x"},
        {"absolute link", "/Library/absolute/file", "/Library/Preferences/file"},
        {"relative link", "/Library/relative/toFile", "/Library/Preferences/file"},
        {"link as a directory", "/Library/relative/", "/Library/Preferences/"},
        {"link out of the volume", "/Library/escape/secret", "/outside/secret"},
        {"dangling link", "/Library/dangling", "/Users/new"},
        {"dot-dot after a link", "/Library/absolute/../Preferences", "/Library/Preferences"},
        {"dot-dot at the root", "/Library/../../../etc/passwd", "/etc/passwd"},
        {"dot-dot before the first name", "/nowhere/../Users/ann", "/Users/ann"},
    };
    for (const auto& row : rows) EXPECT_EQ(HostPath(row.path), root + row.onVolume) << row.condition;
    EXPECT_EQ(HostPath("/Library/relative", LastLink::kNoFollow), root + "/Library/relative");
    EXPECT_EQ(HostPath("/Library/relative/toFile", LastLink::kNoFollow),
              root + "/Library/Preferences/toFile");
    EXPECT_EQ(HostPath("/Library/relative/", LastLink::kNoFollow), root + "/Library/Preferences/");
}

TEST_F(StartupVolumeTest, DoesNotRedirectOtherPaths) {
    for (const std::string path :
         {"/", "/etc/passwd", "/Librarys/x", "/tmp/../etc", "Library/x", "", "/library/x"})
        EXPECT_EQ(HostPath(path), path);
    const std::string inside = root + "/Library/relative";
    EXPECT_EQ(HostPath(inside), inside);
    EXPECT_EQ(MacPath(inside), "/Library/relative");
    EXPECT_EQ(MacPath(root), "/");
    EXPECT_EQ(MacPath(root + "x"), root + "x");
}

TEST_F(StartupVolumeTest, ReportsWhyAPathCannotBeResolved) {
    struct Row {
        const char* condition;
        std::string path;
        int error;
    };
    fs::create_symlink(std::string(4090, '/'), folder / "Mac/Library/long");
    const Row rows[] = {
        {"loop", "/Library/loop/x", ELOOP},
        {"link and rest too long", "/Library/long/Library", ENAMETOOLONG},
        {"dot-dot after a missing name", "/Library/missing/../../../../outside/secret", ENOENT},
        {"dot-dot after a file", "/Users/ann/notes/../x", ENOTDIR},
        {"dot-dot after a dangling link", "/Library/dangling/../x", ENOENT},
        {"name too long", "/Library/" + std::string(256, 'x'), ENAMETOOLONG},
        {"path too long", "/Library/" + std::string(PATH_MAX, '/'), ENAMETOOLONG},
        {"NUL", std::string("/Library/a\0b", 12), EINVAL},
    };
    for (const auto& row : rows) {
        errno = 0;
        EXPECT_EQ(HostPath(row.path), "") << row.condition;
        EXPECT_EQ(errno, row.error) << row.condition;
    }
}

TEST_F(StartupVolumeTest, FollowsAtMostFortyLinks) {
    fs::create_symlink("/Users/ann/notes", folder / "Mac/Users/link1");
    for (int i = 2; i <= 41; ++i)
        fs::create_symlink("link" + std::to_string(i - 1), folder / ("Mac/Users/link" + std::to_string(i)));
    EXPECT_EQ(HostPath("/Users/link40"), root + "/Users/ann/notes");
    EXPECT_EQ(HostPath("/Users/link41"), "");
    EXPECT_EQ(errno, ELOOP);
}

TEST_F(StartupVolumeTest, KeepsTheOldSettingIfTheNewOneIsNoDirectory) {
    EXPECT_FALSE(SetStartupVolume(folder / "missing"));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(SetStartupVolume(folder / "outside/secret"));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(StartupVolume(), root);

    fs::create_directory_symlink("Mac", folder / "link");
    EXPECT_TRUE(SetStartupVolume((folder / "link").string() + "/"));
    EXPECT_EQ(StartupVolume(), root);

    EXPECT_TRUE(SetStartupVolume(""));
    EXPECT_EQ(StartupVolume(), "");
    EXPECT_EQ(HostPath("/Library/x"), "/Library/x");
}

} // namespace
