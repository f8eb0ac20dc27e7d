#include "TemporaryFolder.h"

#include <Kelbase/common/common_path.h>

#include <gtest/gtest.h>

namespace {

std::string text(const String& s) { return {s.Latin1(), s.GetLength()}; }

/// HOME and the working folder as a test wants them, put back at its end.
class Surroundings {
public:
    Surroundings(const char* home, const std::filesystem::path& folder)
        : oldHome(std::getenv("HOME") ? std::getenv("HOME") : ""),
          oldFolder(std::filesystem::current_path()) {
        home ? setenv("HOME", home, 1) : unsetenv("HOME");
        std::filesystem::current_path(folder);
    }
    ~Surroundings() {
        setenv("HOME", oldHome.c_str(), 1);
        std::filesystem::current_path(oldFolder);
    }

private:
    std::string oldHome;
    std::filesystem::path oldFolder;
};

struct Row {
    const char* name;
    std::string given, expected;
};

std::string rowName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

class FilePathToString : public testing::TestWithParam<Row> {};

TEST_P(FilePathToString, CleansThePath) {
    EXPECT_EQ(text(FilePath(GetParam().given.c_str(), false).ToString()), GetParam().expected);
    // A folder prints the same way, with the separator at its end.
    const std::string folder = text(FolderPath(GetParam().given.c_str(), true).ToString());
    EXPECT_EQ(folder, GetParam().expected + "/");
}

INSTANTIATE_TEST_SUITE_P(Path, FilePathToString,
                         testing::Values(Row{"CleanAlready", "/a/b.txt", "/a/b.txt"}, //
                                         Row{"Empty", "", ""},                        //
                                         Row{"Blank", " \t\n", ""},                   //
                                         Row{"Root", "/", ""},                        //
                                         Row{"OnlySeparators", "/\\//", ""},          //
                                         Row{"DoubledSeparator", "/a//b", "/a/b"},    //
                                         Row{"TwoAtStartStay", "//srv//x", "//srv/x"},
                                         Row{"ThreeAtStartAreTwo", "///a", "//a"},    //
                                         Row{"Backslashes", "\\a\\b\\\\c", "/a/b/c"}, //
                                         Row{"TrailingSeparators", "/a/b/\\/", "/a/b"},
                                         Row{"Parent", "/a//b/../c", "/a/c"}, //
                                         Row{"SecondOfTwoParentsStays", "/a/b/../../c", "/a/../c"},
                                         Row{"ThirdOfThreeParentsActs", "/a/b/../../../c", "/a/c"},
                                         Row{"DoubledSeparatorAfterParent", "/a/b/..//../c", "/a/../c"},
                                         Row{"ParentOfRoot", "/../x", "x"},         //
                                         Row{"ParentOfDoubleRoot", "//../x", "/x"}, //
                                         Row{"ParentAtEnd", "/a/b/..", "/a"},       //
                                         Row{"NothingLeft", "/..", ""},             //
                                         Row{"SingleDotStays", "/a/./b", "/a/./b"}, //
                                         Row{"NameThatBeginsLikeParent", "/a/..b/...", "/a/..b/..."},
                                         Row{"DriveIsAName", "/C:/x", "/C:/x"}, //
                                         Row{"BytesThatAreNoUtf8", "/\xff//\x80", "/\xff/\x80"}),
                         rowName);

TEST(FilePathToString, KeepsAndShares) {
    const FilePath clean("/a/b.txt", false);
    EXPECT_EQ(clean.ToString().Latin1(), clean.GetInternal().Latin1()) << "nothing to clean, nothing to copy";

    String withNul("/a");
    withNul += '\0';
    withNul += "/b/../c";
    EXPECT_EQ(text(FilePath(withNul, false).ToString()), std::string("/a\0/c", 5));
}

TEST(Path, IsMadeAbsolute) {
    const TemporaryFolder folder;
    const std::string here = folder.Path().string();
    const Surroundings surroundings("/Users/a", folder.Path());
    const Row rows[] = {
        {"relative", "docs", here + "/docs"},
        {"relative, not cleaned", "a/../b", here + "/a/../b"},
        {"drive", "C:/x", here + "/C:/x"},
        {"other user's home", "~b/x", here + "/~b/x"},
        {"absolute, not cleaned", "\\x//y", "\\x//y"},
        {"home", "~", "/Users/a/"},
        {"in home", "~/x", "/Users/a/x"},
        {"in home, backslash", "~\\x", "/Users/a/x"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(text(FilePath(row.given.c_str(), false).GetInternal()), row.expected) << row.name;
        EXPECT_EQ(text(FilePath(row.given.c_str(), true).GetInternal()), row.expected) << row.name;
    }
    EXPECT_EQ(text(FolderPath("docs", false).GetInternal()), here + "/docs/");
    EXPECT_EQ(text(FolderPath("/Users/a\\", false).GetInternal()), "/Users/a\\");

    EXPECT_TRUE(FilePath::IsRelative("C:/x"));
    EXPECT_FALSE(FolderPath::IsRelative("\\x"));
    EXPECT_FALSE(FilePath::IsRelative(""));
}

TEST(Path, IsMadeAbsoluteWithoutHomeOrWorkingFolder) {
    const TemporaryFolder folder;
    const Surroundings surroundings(nullptr, folder.Path());
    EXPECT_EQ(text(FilePath("~/x", false).GetInternal()), "/x");

    std::filesystem::create_directory(folder / "gone");
    std::filesystem::current_path(folder / "gone");
    std::filesystem::remove(folder / "gone");
    EXPECT_EQ(text(FilePath("x", false).GetInternal()), "/x");
}

TEST(FilePath, IsTakenApart) {
    struct {
        const char *path, *filename, *extension, *base, *folder;
    } const rows[] = {
        {"/a.b/c", "c", "", "c", "/a.b/"},
        {"/a/c.TXT", "c.TXT", "TXT", "c", "/a/"},
        {"/a/archive.tar.gz", "archive.tar.gz", "gz", "archive.tar", "/a/"},
        {"/.profile", ".profile", "profile", "", "/"},
        {"/a\\b/c\\name.", "name.", "", "name", "/a\\b/c/"},
        {"/a/b/\\", "b", "", "b", "/a/"},
        {"//", "", "", "", "."},
        {"\\C:", "C:", "", "C:", "/"},
        {"", "", "", "", ""},
    };
    const Surroundings surroundings("/", "/");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        const FilePath path(row.path, false);
        EXPECT_EQ(text(path.GetFilename()), row.filename);
        EXPECT_EQ(text(path.GetExtension()), row.extension);
        EXPECT_EQ(text(path.GetBaseName()), row.base);
        const std::string folder = row.folder == std::string(".") ? "//./" : row.folder;
        EXPECT_EQ(text(path.GetFolder().GetInternal()), folder);
    }
}

TEST(FilePath, KnowsDrivesWhereNothingElseSeparates) {
    const Surroundings surroundings("C:", "/"); // what HOME gives is not made absolute
    EXPECT_EQ(text(FilePath("~", false).GetInternal()), "C:/");
    EXPECT_EQ(text(FilePath("~", false).GetFilename()), "");
    EXPECT_EQ(text(FilePath("~/x", false).GetFolder().GetInternal()), "//C:/") << "made absolute again";
}

TEST(FolderPath, KnowsItsPlace) {
    for (const char* top : {"/", "//", "/a/..", "/..", ""}) {
        SCOPED_TRACE(top);
        const FolderPath folder(top, false);
        EXPECT_TRUE(folder.IsTopLevel());
        EXPECT_TRUE(folder.GetParent().IsEmpty());
        EXPECT_EQ(text(folder.GetFolderName()), "");
    }
    const FolderPath deep("/Users/a/b\\", false);
    EXPECT_FALSE(deep.IsTopLevel());
    EXPECT_EQ(text(deep.GetFolderName()), "b");
    EXPECT_EQ(text(deep.GetParent().GetInternal()), "/Users/a/");
    EXPECT_EQ(text(FolderPath("/Users", false).GetParent().GetInternal()), "/");
    EXPECT_EQ(text((FolderPath("/a", false) + "b/c.txt").GetInternal()), "/a/b/c.txt");
}

TEST(Path, ComparesCleanFormsWithoutCase) {
    struct {
        const char *a, *b;
        int order; // of a and b: negative, 0 or positive
    } const rows[] = {
        {"/Users/A/", "/users/a", 0},
        {"/x/y/../z", "\\X\\\\z/", 0},
        {"/x/a/b/../../z", "/x/z", -1},
        {"/a b", "/a", -1}, // the "/" at the end of the clean form ranks above the blank
        {"/a", "/a/b", -1},
        {"/a0", "/a", 1},
        {"/B", "/a", 1},
        {"/\xc3\x89", "/\xc3\xa9", -1}, // no other letters fold
        {"/z", "/\xc3\x89", -1},
        {"", "/", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.a) + " against " + row.b);
        const FilePath a(row.a, false), b(row.b, false);
        EXPECT_EQ(a == b, row.order == 0);
        EXPECT_EQ(a < b, row.order < 0);
        EXPECT_EQ(b<a, row.order> 0);
        EXPECT_EQ(a <= b, row.order <= 0);
        const FolderPath c(row.a, false), d(row.b, false);
        EXPECT_EQ(c == d, row.order == 0);
        EXPECT_EQ(c < d, row.order < 0);
        EXPECT_EQ(d <= c, row.order >= 0);
    }
}

} // namespace
