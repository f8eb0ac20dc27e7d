#include "TextBytes.h"
#include "support/TemporaryFolder.h"

#include <Kelbase/common/common_path.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>

namespace {

/// Sets HOME and the working directory. The destructor restores both.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* home, const std::filesystem::path& folder)
        : oldFolder(std::filesystem::current_path()) {
        if (const char* const old = std::getenv("HOME")) oldHome = old;
        SetHome(home);
        std::filesystem::current_path(folder);
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
    ~ScopedEnvironment() {
        std::filesystem::current_path(oldFolder);
        SetHome(oldHome ? oldHome->c_str() : nullptr);
    }

private:
    static void SetHome(const char* home) { home ? setenv("HOME", home, 1) : unsetenv("HOME"); }

    std::filesystem::path oldFolder;
    std::optional<std::string> oldHome;
};

TEST(Path, ToStringReturnsTheCanonicalForm) {
    // Pairs of a text and its canonical form as a folder. The canonical form of a file has no
    // separator at the end.
    std::istringstream pairs(R"(
        /a/b.txt /a/b.txt/   / /          /\// /           /a//b /a/b/        \a\b\\c /a/b/c/   /a/b/\/ /a/b/
        //srv//x //srv/x/    ///a //a/    /a//b/../c /a/c/  /a/b/.. /a/      /a/./..b/... /a/./..b/.../
        /a/b/../../c /a/../c/   /a/b/../../../c /a/c/   /a/b/..//../c /a/../c/
        /../x x/             //../x /x/   /.. /
    )");
    for (std::string given, clean; pairs >> given >> clean;) {
        EXPECT_EQ(Bytes(FilePath(given.c_str(), false).ToString()) + "/", clean) << given;
        EXPECT_EQ(Bytes(FolderPath(given.c_str(), true).ToString()), clean) << given;
    }
    for (const char* blank : {"", " \t\n"})
        EXPECT_TRUE(FilePath(blank, false).IsEmpty() && FolderPath(blank, true).IsEmpty());
    EXPECT_EQ(Bytes(FilePath().ToString() + "|" + FolderPath().ToString()), "|/");
    EXPECT_EQ(Bytes(FilePath("/\xff//\x80", false).ToString()), "/\xff/\x80");

    const FilePath clean("/a/b.txt", false);
    EXPECT_EQ(clean.ToString().Latin1(), clean.GetInternal().Latin1()) << "a canonical path shares the bytes";
    const std::string longName(600, 'n');
    EXPECT_EQ(Bytes(FilePath(("/a//" + longName).c_str(), false).ToString()), "/a/" + longName);
    String withNul("/a");
    withNul += '\0';
    withNul += "/b/../c";
    EXPECT_EQ(Bytes(FilePath(withNul, false).ToString()), std::string("/a\0/c", 5));
}

TEST(Path, MakesRelativePathsAbsolute) {
    const TemporaryFolder folder;
    const std::string here = folder.Path().string();
    const ScopedEnvironment environment("/Users/a", folder.Path());
    const std::string rows[][2] = {{"a/../b", here + "/a/../b"}, {"C:/x", here + "/C:/x"},
                                   {"~b/x", here + "/~b/x"},     {"\\x//y", "\\x//y"},
                                   {"~", "/Users/a/"},           {"~/x", "/Users/a/x"},
                                   {"~\\x", "/Users/a/x"}};
    for (const auto& [given, expected] : rows)
        EXPECT_EQ(Bytes(FilePath(given.c_str(), false).GetInternal()), expected) << given;
    EXPECT_EQ(Bytes(FolderPath("docs", false).GetInternal()), here + "/docs/");
    EXPECT_EQ(Bytes(FolderPath("/Users/a\\", false).GetInternal()), "/Users/a\\");
    EXPECT_TRUE(FilePath::IsRelative("C:/x"));
    EXPECT_FALSE(FolderPath::IsRelative("\\x") || FolderPath::IsRelative(""));

    const ScopedEnvironment nothing(nullptr, folder.Path());
    EXPECT_EQ(Bytes(FilePath("~/x", false).GetInternal()), "/x");
    std::filesystem::create_directory(folder / "gone");
    std::filesystem::current_path(folder / "gone");
    std::filesystem::remove(folder / "gone");
    EXPECT_EQ(Bytes(FilePath("x", false).GetInternal()), "/x");
}

TEST(Path, SplitsIntoItsParts) {
    const char* const rows[][5] = {
        // path, file name, extension, base name, folder
        {"/a.b/c", "c", "", "c", "/a.b/"},
        {"/a/archive.tar.GZ", "archive.tar.GZ", "GZ", "archive.tar", "/a/"},
        {"/.profile", ".profile", "profile", "", "/"},
        {"/a\\b/c\\name.\\", "name.", "", "name", "/a\\b/c/"},
        {"", "", "", "", ""},
        {"~", "", "", "", "//C:/"} // HOME is used unchanged; GetFolder makes the path absolute
    };
    const ScopedEnvironment environment("C:", "/");
    for (const auto& [given, name, extension, base, folder] : rows) {
        SCOPED_TRACE(given);
        const FilePath path(given, false);
        EXPECT_EQ(Bytes(path.GetFilename()), name);
        EXPECT_EQ(Bytes(path.GetExtension()), extension);
        EXPECT_EQ(Bytes(path.GetBaseName()), base);
        EXPECT_EQ(Bytes(path.GetFolder().GetInternal()), folder);
    }
    for (const char* top : {"/", "//", "/a/..", "/..", ""}) {
        const FolderPath folder(top, false);
        EXPECT_TRUE(folder.IsTopLevel() && folder.GetParent().IsEmpty()) << top;
        EXPECT_EQ(Bytes(folder.GetFolderName()), "") << top;
    }
    const FolderPath deep("/Users/a/b\\", false);
    EXPECT_EQ(Bytes(deep.GetFolderName()), "b");
    EXPECT_EQ(Bytes(deep.GetParent().GetInternal()), "/Users/a/");
    EXPECT_EQ(Bytes(FolderPath("/Users", false).GetParent().GetInternal()), "/");
    EXPECT_EQ(Bytes((deep + "c/d.txt").GetInternal()), "/Users/a/b\\c/d.txt");
}

TEST(Path, ComparesCanonicalFormsWithoutCase) {
    struct {
        const char *a, *b;
        int order; // expected order of a and b: negative, 0 or positive
    } const rows[] = {{"/Users/A/", "/users/a", 0},
                      {"/x/y/../z", "\\X\\\\z/", 0},
                      {"/x/a/b/../../z", "/x/z", -1},
                      {"/a", "/a/b", -1},
                      {"/a b", "/a", -1},
                      {"/a0", "/a", 1}, // the comparison includes the "/" at the end
                      {"/B", "/a", 1},
                      {"/\xc3\x89", "/\xc3\xa9", -1},
                      {"/z", "/\xc3\x89", -1},
                      {"/../x", "/../y", -1}, // canonical forms without a "/" at the start
                      {"", "/", 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.a) + " against " + row.b);
        const FilePath a(row.a, false), b(row.b, false);
        EXPECT_EQ(a == b, row.order == 0);
        EXPECT_EQ(a < b, row.order < 0);
        EXPECT_EQ(b<a, row.order> 0);
        EXPECT_EQ(a <= b, row.order <= 0);
    }
    // The forms are equal if they are equal up to the first NUL.
    String shorter("/a"), longer("/A");
    (shorter += '\0') += "b";
    (longer += '\0') += "cd";
    EXPECT_TRUE(FilePath(shorter, false) == FilePath(longer, false));
    EXPECT_TRUE(FolderPath("/A", false) == FolderPath("/a/", false));
    EXPECT_TRUE(FolderPath("/A", false) <= FolderPath("/a/", false));
    EXPECT_TRUE(FolderPath("/A", false) < FolderPath("/b", false));
}

} // namespace
