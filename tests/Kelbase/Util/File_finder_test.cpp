#include "FileFailure.h"
#include "support/FinderItem.h"
#include "support/TemporaryFolder.h"

#include <Kelbase/Util/File.h>
#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using Util::File;

FilePath toPath(const std::string& name) { return FilePath(name.c_str(), false); }

class FileFinder : public testing::Test {
protected:
    void SetUp() override {
        setenv("HOME", folder.Path().c_str(), 1);
        macplatform::SetCallObserver([this](const auto& entry) { calls.push_back(entry.call); });
        setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    }
    void TearDown() override {
        macplatform::SetCallObserver({});
        EXPECT_EQ(macplatform::CancelInjectedFaults(), 0U) << "each injected fault has occurred";
        EXPECT_EQ(macplatform::LiveObjectCount(), 0U);
    }

    std::vector<std::string> calls; // platform calls, by name
    const TemporaryFolder folder;
    const std::string old = folder.Write("old", "old bytes");
    const std::string name = folder.Write("new", "new bytes");
};

TEST_F(FileFinder, RenameExchangesFilesIfTheVolumeSupportsIt) {
    macplatform::InjectFault(
        {"FSExchangeObjects", noErr}); // reports success, but does not exchange the files
    File::Rename(toPath(name), toPath(old));
    EXPECT_EQ(ReadBytes(old), "old bytes");
    EXPECT_FALSE(std::filesystem::exists(name));
}

TEST_F(FileFinder, RenameMovesTheFileOrThrows) {
    File::Rename(toPath(name), toPath(old));
    EXPECT_THAT(calls, ElementsAre("FSPathMakeRef", "FSPathMakeRef", "FSExchangeObjects"));
    EXPECT_EQ(ReadBytes(old), "new bytes");
    EXPECT_EQ(FailureOf("src/Kelbase/Util/File", name, [&] { File::Rename(toPath(name), toPath(old)); }),
              "547 6 2: Rename failed");
    File::Rename(toPath(old), toPath(name));
    EXPECT_EQ(ReadBytes(name), "new bytes");
    File::Rename(toPath(name), toPath(name));
    EXPECT_EQ(ReadBytes(name), "new bytes");
}

TEST_F(FileFinder, ReturnsTheFileTypeOrZero) {
    const File file(toPath(name));
    EXPECT_EQ(file.GetOSXFileType(), 0U) << "no Finder information";
    ASSERT_EQ(SetFinderInfo(name, FileInfo{'WAVE', 'ttxt', 0, {}, 0}), noErr);
    EXPECT_EQ(file.GetOSXFileType(), 0x57415645U);

    macplatform::InjectFault({"FSGetCatalogInfo", ioErr});
    EXPECT_EQ(file.GetOSXFileType(), 0U);
    EXPECT_EQ(File(toPath(folder / "missing")).GetOSXFileType(), 0U);
}

TEST_F(FileFinder, RecycleMovesTheFileToTheTrash) {
    EXPECT_EQ(File::Recycle(name.c_str()), noErr);
    EXPECT_FALSE(std::filesystem::exists(name));
    EXPECT_EQ(ReadBytes(folder / "data/Trash/files/new"), "new bytes");
    EXPECT_THAT(calls, ElementsAre("FSPathMakeRef", "AECreateDesc", "AECreateAppleEvent", "AEDisposeDesc", //
                                   "AECreateDesc", "AEPutParamDesc", "AEDisposeDesc", // the file
                                   "AECreateDesc", "CreateObjSpecifier", "AEPutParamDesc", "AEDisposeDesc",
                                   "AEDisposeDesc", // the Trash
                                   "AESend", "AEDisposeDesc", "AEDisposeDesc"));
}

TEST_F(FileFinder, RecycleReturnsTheErrorsOfItsPreparation) {
    EXPECT_EQ(File::Recycle((folder / "missing").c_str()), fnfErr);
    const struct {
        macplatform::InjectedFault fault;
        int result;
    } rows[] = {
        {{"FSPathMakeRef", ioErr}, ioErr},
        {{"AECreateDesc", memFullErr}, memFullErr},
        {{"AECreateAppleEvent", memFullErr}, noErr}, // AEDisposeDesc of the target replaces this error
        {{"AECreateDesc", memFullErr, 1}, memFullErr},
        {{"AEPutParamDesc", memFullErr}, memFullErr},
        {{"AECreateDesc", memFullErr, 2}, memFullErr},
        {{"CreateObjSpecifier", memFullErr}, memFullErr},
        {{"AEPutParamDesc", memFullErr, 1}, memFullErr},
        {{"AESend", procNotFound}, noErr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault.call + " " + std::to_string(row.fault.skip));
        macplatform::InjectFault(row.fault);
        EXPECT_EQ(File::Recycle(name.c_str()), row.result);
        EXPECT_EQ(ReadBytes(name), "new bytes");
        EXPECT_EQ(macplatform::LiveObjectCount(), 0U);
    }
}

} // namespace
