#include <macplatform/CallLog.h>
#include <macplatform/FinderFlags.h>
#include <macplatform/StartupVolume.h>

#include "support/CommandOutput.h"
#include "support/FinderItem.h"
#include "support/InChild.h"
#include "support/NewText.h"
#include "support/TemporaryFolder.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace macplatform;

namespace {

constexpr char kAttribute[] = "user.com.apple.FinderInfo";

/// Reads the first 16 bytes of the Finder information as FileInfo or FolderInfo.
template <typename Info>
OSStatus readInfo(const std::string& path, Info& info) {
    FSRef ref;
    FSCatalogInfo catalog{};
    if (const OSStatus result = MakeRef(path, ref)) return result;
    const OSErr result = FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, &catalog, nullptr, nullptr, nullptr);
    std::memcpy(&info, catalog.finderInfo, sizeof info);
    return result;
}

std::string readAttribute(const std::string& path) {
    char bytes[64];
    const ssize_t size = getxattr(path.c_str(), kAttribute, bytes, sizeof bytes);
    return size < 0 ? strerrorname_np(errno) : std::string(bytes, static_cast<std::size_t>(size));
}

std::string toBytes(std::initializer_list<int> values) { return {values.begin(), values.end()}; }

/// A text file of creator "ttxt" that is invisible, has a custom icon, and is at (258, 3).
constexpr FileInfo kSampleFile{'TEXT', 'ttxt', kIsInvisible | kHasCustomIcon, {258, 3}, 0};
const std::string kSampleBytes = "TEXTttxt" + toBytes({0x44, 0, 1, 2, 0, 3, 0, 0}) + std::string(16, '\0');

class FinderInfoTest : public testing::Test {
protected:
    ~FinderInfoTest() override { SimulateMissingExtendedAttributes(false); }

    TemporaryFolder folder;
    std::string file = folder.Write("file", "data");
};

TEST_F(FinderInfoTest, IsStoredBigEndianInTheAttribute) {
    ASSERT_EQ(SetFinderInfo(file, kSampleFile), noErr);
    EXPECT_EQ(readAttribute(file), kSampleBytes);
    EXPECT_EQ(ReadFinderFlags(file), 0x4400);

    FileInfo read{};
    EXPECT_EQ(readInfo(file, read), noErr);
    EXPECT_EQ(std::memcmp(&read, &kSampleFile, sizeof read), 0);

    EXPECT_THAT(Printed("getfattr --absolute-names -e hex -n " + std::string(kAttribute) + " " + file),
                testing::HasSubstr("FinderInfo=0x544558547474787444000102000300000000"));
}

TEST_F(FinderInfoTest, OfADirectoryHasAnotherLayout) {
    const FolderInfo info{{1, 2, 3, 4}, kHasCustomIcon, {5, 6}, 7};
    ASSERT_EQ(SetFinderInfo(folder.Path(), info), noErr);
    EXPECT_EQ(readAttribute(folder.Path()),
              toBytes({0, 1, 0, 2, 0, 3, 0, 4, 4, 0, 0, 5, 0, 6, 0, 7}) + std::string(16, '\0'));
    FolderInfo read{};
    EXPECT_EQ(readInfo(folder.Path(), read), noErr);
    EXPECT_EQ(read.windowBounds.right, 4);
    EXPECT_EQ(read.finderFlags, kHasCustomIcon);
}

TEST_F(FinderInfoTest, KeepsTheExtendedHalfAndRemovesAnEmptyAttribute) {
    const std::string extended = kSampleBytes.substr(0, 16) + std::string(16, 'e');
    ASSERT_EQ(setxattr(file.c_str(), kAttribute, extended.data(), 32, 0), 0);
    ASSERT_EQ(SetFinderInfo(file, FileInfo{}), noErr);
    EXPECT_EQ(readAttribute(file), std::string(16, '\0') + std::string(16, 'e'));

    ASSERT_EQ(setxattr(file.c_str(), kAttribute, kSampleBytes.data(), 32, 0), 0);
    ASSERT_EQ(SetFinderInfo(file, FileInfo{}), noErr);
    EXPECT_EQ(readAttribute(file), "ENODATA");
    EXPECT_EQ(SetFinderInfo(file, FileInfo{}), noErr);

    ASSERT_EQ(setxattr(file.c_str(), kAttribute, "short", 5, 0), 0);
    EXPECT_EQ(SetFinderInfo(file, kSampleFile), ioErr);
    EXPECT_EQ(readAttribute(file), "short");
    EXPECT_EQ(ReadFinderFlags(file), std::nullopt);
}

TEST_F(FinderInfoTest, CanBeChangedByTheOwnerOnly) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
    const std::string own = folder.Write("own");
    fs::permissions(folder.Path(), fs::perms(0755));
    ASSERT_EQ(chown(own.c_str(), kOtherUser, kOtherUser), 0);
    chmod(own.c_str(), 0444);
    ASSERT_EQ(SetFinderInfo(file, kSampleFile), noErr);
    chmod(file.c_str(), 0444);
    EXPECT_TRUE(IsTrueForAnyUser([&] { return SetFinderInfo(own, kSampleFile) == noErr; }));
    EXPECT_EQ(readAttribute(own), kSampleBytes);
    EXPECT_EQ(fs::status(own).permissions(), fs::perms(0444));
    // Any user may set the bytes that the item already has.
    EXPECT_TRUE(IsTrueForAnyUser([&] { return SetFinderInfo(file, kSampleFile) == noErr; }));
    EXPECT_TRUE(IsTrueForAnyUser([&] { return SetFinderInfo(file, FileInfo{}) == permErr; }));
    EXPECT_EQ(readAttribute(file), kSampleBytes);
}

TEST_F(FinderInfoTest, IsStoredInASidecarWithoutAttributeSupport) {
    SimulateMissingExtendedAttributes(true);
    ASSERT_EQ(SetFinderInfo(file, kSampleFile), noErr);
    const std::string header = toBytes({0, 5, 0x16, 7, 0, 2, 0, 0}) + std::string(16, '\0') +
                               toBytes({0, 2, 0, 0, 0, 9, 0, 0, 0, 50, 0, 0, 0, 32}) +
                               toBytes({0, 0, 0, 2, 0, 0, 0, 82, 0, 0, 0, 0});
    EXPECT_EQ(ReadBytes(folder / "._file"), header + kSampleBytes);
    EXPECT_EQ(ReadFinderFlags(file), 0x4400);
    EXPECT_EQ(readAttribute(file), "ENODATA");

    fs::create_directory(folder / "sub");
    ASSERT_EQ(SetFinderInfo(folder / "sub", FolderInfo{{}, kIsInvisible, {}, 0}), noErr);
    EXPECT_EQ(fs::file_size(folder / "._sub"), 82U);
    EXPECT_TRUE(fs::is_empty(folder / "sub"));

    // When attributes are supported again, the sidecar is still used while the item has no attribute.
    SimulateMissingExtendedAttributes(false);
    ASSERT_EQ(SetFinderInfo(file, FileInfo{}), noErr);
    EXPECT_EQ(ReadBytes(folder / "._file"), header + std::string(32, '\0'));
    EXPECT_EQ(readAttribute(file), "ENODATA");
}

/// Returns a sidecar that has another entry before the Finder information (entry 9), extra bytes in that
/// entry, and more bytes after it.
std::string foreignSidecar() {
    return toBytes({0, 5, 0x16, 7, 0, 2, 0, 0}) + "Mac OS X        " +
           toBytes({0, 2, 0, 0, 0, 2, 0, 0, 0, 120, 0, 0, 0, 30, 0, 0, 0, 9, 0, 0, 0, 60, 0, 0, 0, 60}) +
           std::string(10, 'p') + kSampleBytes + std::string(60, 'q');
}

TEST_F(FinderInfoTest, ChangesOnly32BytesOfASidecarOfAnotherProgram) {
    folder.Write("._file", foreignSidecar());
    FileInfo info{};
    ASSERT_EQ(readInfo(file, info), noErr);
    EXPECT_EQ(info.fileType, kSampleFile.fileType);
    info.finderFlags = kIsAlias;
    ASSERT_EQ(SetFinderInfo(file, info), noErr);
    std::string expected = foreignSidecar();
    expected[68] = '\x80';
    expected[69] = 0;
    EXPECT_EQ(ReadBytes(folder / "._file"), expected);
    folder.Write("._file", foreignSidecar().replace(5, 1, "\1"));
    ASSERT_EQ(readInfo(file, info), noErr);
    EXPECT_EQ(info.fileType, kSampleFile.fileType) << "the version before";
}

TEST_F(FinderInfoTest, IgnoresAndKeepsADamagedSidecar) {
    SimulateMissingExtendedAttributes(true);
    std::vector<std::string> broken;
    for (std::size_t length = 0; length < 92; ++length) broken.push_back(foreignSidecar().substr(0, length));
    const auto change = [&](std::size_t at, const std::string& bytes) {
        broken.push_back(foreignSidecar().replace(at, bytes.size(), bytes));
    };
    change(3, "\6");                           // wrong magic number
    change(5, "\3");                           // unknown version
    change(24, toBytes({0, 1}));               // the entry is after the last counted one
    change(46, toBytes({0, 0, 0, 31}));        // a length below 32
    change(42, toBytes({0, 0, 0, 49}));        // an offset inside the table
    change(42, toBytes({255, 255, 255, 240})); // an offset after the end of the file
    for (const auto& bytes : broken) {
        folder.Write("._file", bytes);
        FileInfo info = kSampleFile;
        EXPECT_EQ(readInfo(file, info), noErr);
        EXPECT_EQ(info.fileType, 0U) << bytes.size();
        EXPECT_EQ(SetFinderInfo(file, kSampleFile), ioErr);
        EXPECT_EQ(ReadBytes(folder / "._file"), bytes);
    }
    fs::remove(folder / "._file");
    fs::create_symlink("file", folder / "._file");
    EXPECT_EQ(SetFinderInfo(file, kSampleFile), ioErr);
    EXPECT_EQ(ReadBytes(file), "data");
}

TEST_F(FinderInfoTest, FSRefReportsAMissingItem) {
    FSRef ref;
    FSCatalogInfo info{};
    const auto get = [&] {
        return FSGetCatalogInfo(&ref, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr);
    };
    ASSERT_EQ(MakeRef(folder.Path(), ref), noErr);
    EXPECT_EQ(get(), noErr);
    EXPECT_EQ(info.nodeFlags, kFSNodeIsDirectoryMask);
    ASSERT_EQ(MakeRef(file, ref), noErr);
    EXPECT_EQ(get(), noErr);
    EXPECT_EQ(info.nodeFlags, 0);
    fs::rename(file, folder / "moved");
    EXPECT_EQ(get(), fnfErr);
    folder.Write("file", "another");
    EXPECT_EQ(get(), fnfErr);

    // Only the last 4096 paths are kept. A path that is used again does not count again.
    ASSERT_EQ(MakeRef(file, ref), noErr);
    for (int i = 0; i < 5000; ++i) {
        FSRef again;
        ASSERT_EQ(MakeRef(folder / (i % 2 ? "file" : "moved"), again), noErr);
    }
    EXPECT_EQ(get(), noErr);
    FSRef others[4096];
    for (FSRef& other : others)
        ASSERT_EQ(MakeRef(folder.Write(std::to_string(&other - others)), other), noErr);
    EXPECT_EQ(FSGetCatalogInfo(&others[4000], kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), noErr);
    EXPECT_EQ(get(), errFSBadFSRef);
    std::memset(ref.hidden, 0x5A, sizeof ref.hidden);
    EXPECT_EQ(get(), errFSBadFSRef);
}

TEST_F(FinderInfoTest, FSPathMakeRefReturnsTheErrorOfThePath) {
    fs::create_symlink("loop", folder / "loop");
    fs::create_directory_symlink(folder.Path(), folder / "link");
    struct Row {
        const char* condition;
        std::string name;
        OSStatus result;
    };
    const Row rows[] = {
        {"link to a directory", "link", noErr},
        {"missing", "missing", fnfErr},
        {"missing directory", "missing/x", fnfErr},
        {"file instead of a directory", "file/x", errFSNotAFolder},
        {"link to itself", "loop", fnfErr},
        {"not UTF-8", "caf\xE9", bdNamErr},
        {"name too long", std::string(256, 'n'), errFSNameTooLong},
    };
    FSRef ref;
    for (const auto& row : rows) EXPECT_EQ(MakeRef(folder / row.name, ref), row.result) << row.condition;
    EXPECT_EQ(MakeRef("", ref), fnfErr);
    EXPECT_EQ(FSPathMakeRef(nullptr, &ref, nullptr), paramErr);
    InjectFault({"FSPathMakeRef", tmfoErr});
    EXPECT_EQ(MakeRef(file, ref), tmfoErr);
    EXPECT_EQ(MakeRef(file, ref), noErr);
    EXPECT_EQ(FSSetCatalogInfo(&ref, kFSCatInfoNodeFlags, nullptr), paramErr);
    FSCatalogInfo info{};
    EXPECT_EQ(FSSetCatalogInfo(&ref, kFSCatInfoNodeFlags, &info), errFSBadInfoBitmap);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), noErr);
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNodeFlags, nullptr, nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(FSExchangeObjects(&ref, &ref), errFSOperationNotSupported);
}

Boolean refOfUrl(const char* path) {
    const CFURLRef url = NewURL(path);
    FSRef ref;
    const Boolean found = CFURLGetFSRef(url, &ref);
    CFRelease(url);
    return found;
}

TEST_F(FinderInfoTest, IsSetOnTheStartupVolume) {
    folder.Write("Applications/App");
    ASSERT_TRUE(SetStartupVolume(folder.Path()));
    EXPECT_EQ(SetFinderInfo("/Applications/App", kSampleFile), noErr);
    EXPECT_EQ(refOfUrl("/Applications/App"), 1);
    EXPECT_EQ(refOfUrl("/Applications/Other"), 0);
    SetStartupVolume("");
    EXPECT_EQ(ReadFinderFlags(folder / "Applications/App"), 0x4400);
}

} // namespace
