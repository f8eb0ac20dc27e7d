#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>

#include "support/FinderItem.h"
#include "support/Variable.h"
#include "support/VolumeTest.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Sends the Finder an event that moves the item to a place. Returns the result of AESend.
OSErr ask(const std::string& path, OSType target = 'MACS', DescType place = 'trsh', AEEventID id = kAEMove,
          DescType kind = typeFSRef) {
    FSRef ref{};
    MakeRef(path, ref);
    AEDesc address, object, nowhere = {typeNull, nullptr}, property, specifier;
    AppleEvent event, reply;
    AECreateDesc(typeApplSignature, &target, sizeof target, &address);
    AECreateAppleEvent(kAECoreSuite, id, &address, kAutoGenerateReturnID, kAnyTransactionID, &event);
    AECreateDesc(kind, &ref, sizeof ref, &object);
    AEPutParamDesc(&event, keyDirectObject, &object);
    AECreateDesc(typeType, &place, sizeof place, &property);
    CreateObjSpecifier(cObject, &nowhere, formPropertyID, &property, true, &specifier);
    EXPECT_TRUE(!property.dataHandle) << "the inputs are disposed of";
    AEPutParamDesc(&event, keyAEInsertHere, &specifier);
    const OSErr result =
        AESend(&event, &reply, kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr);
    for (AEDesc* const desc : {&address, &object, &property, &specifier, &event, &reply, &reply})
        AEDisposeDesc(desc);
    return result;
}

class AppleEvents : public VolumeTest {
protected:
    void SetUp() override {
        macplatform::SetCallObserver([this](const macplatform::RecordedCall& entry) {
            if (entry.call == "AESend") note = entry.note;
        });
    }
    void TearDown() override {
        macplatform::SetCallObserver({});
        EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore);
    }
    std::filesystem::path Trash() const { return volume / (".Trash-" + std::to_string(getuid())); }

    std::size_t liveBefore = macplatform::LiveObjectCount();
    std::string note;
};

} // namespace

TEST_F(AppleEvents, MoveAnItemToTheTrashWithARecord) {
    volume.Write("Users/a b/\xC3\xA9.txt", "one");
    volume.Write("Users/a b/._\xC3\xA9.txt", "sidecar");
    EXPECT_EQ(ask("/Users/a b/\xC3\xA9.txt"), noErr);
    EXPECT_EQ(note, "");
    EXPECT_FALSE(std::filesystem::exists(volume / "Users/a b/\xC3\xA9.txt"));
    EXPECT_EQ(ReadBytes(Trash() / "files/\xC3\xA9.txt"), "one");
    EXPECT_EQ(ReadBytes(Trash() / "files/._\xC3\xA9.txt"), "sidecar");
    const std::string record = ReadBytes(Trash() / "info/\xC3\xA9.txt.trashinfo");
    EXPECT_THAT(record, testing::MatchesRegex("\\[Trash Info\\]\nPath=Users/a%20b/%C3%A9.txt\n"
                                              "DeletionDate=20..-..-..T..:..:..\n"));

    volume.Write("Users/a b/\xC3\xA9.txt", "two");
    EXPECT_EQ(ask("/Users/a b/\xC3\xA9.txt"), noErr);
    EXPECT_EQ(ReadBytes(Trash() / "files/\xC3\xA9.txt"), "one")
        << "the first item of that name does not change";
    EXPECT_EQ(ReadBytes(Trash() / "files/\xC3\xA9.2.txt"), "two");
}

TEST_F(AppleEvents, StayOnTheVolumeAndShortenLongNames) {
    const TemporaryFolder outside;
    volume.Write("Users/x");
    std::filesystem::create_directory_symlink(outside.Path(), Trash());
    EXPECT_EQ(ask("/Users/x"), noErr);
    EXPECT_EQ(note, "the Finder returned -1407");
    EXPECT_TRUE(std::filesystem::exists(volume / "Users/x"));
    EXPECT_TRUE(std::filesystem::is_empty(outside.Path()));

    std::filesystem::remove(Trash());
    const std::string name(255, 'n');
    volume.Write("Users/" + name);
    EXPECT_EQ(ask("/Users/" + name), noErr);
    EXPECT_EQ(note, "") << "the record's name is longer than the item's";
    EXPECT_TRUE(std::filesystem::exists(Trash() / "files" / name.substr(0, 230)));
}

TEST_F(AppleEvents, UseTheHomeTrashOutsideTheVolume) {
    const TemporaryFolder home;
    const Variable data("XDG_DATA_HOME", home.Path().c_str());
    const std::string file = home.Write("x.txt");
    EXPECT_EQ(ask(file), noErr);
    EXPECT_TRUE(std::filesystem::exists(home / "Trash/files/x.txt"));
    EXPECT_NE(ReadBytes(home / "Trash/info/x.txt.trashinfo").find("Path=" + file + "\n"), std::string::npos);
    EXPECT_EQ(ask((home / "Trash").string()), noErr);
    EXPECT_EQ(note, "the Finder returned -47") << "the Trash itself cannot be moved";

    const Variable noData("XDG_DATA_HOME", "relative"), user("HOME", home.Path().c_str());
    EXPECT_EQ(ask(home.Write("y.txt")), noErr);
    EXPECT_TRUE(std::filesystem::exists(home / ".local/share/Trash/files/y.txt"));
    EXPECT_EQ(std::filesystem::status(home / ".local/share/Trash").permissions(),
              std::filesystem::perms(0700));
    EXPECT_EQ(ask(home.Path().string()), noErr);
    EXPECT_EQ(note, "the Finder returned -47") << "the home directory";
}

TEST_F(AppleEvents, UseTheTrashOfAnotherFileSystem) {
    std::string folder = "/dev/shm/trash-XXXXXX";
    if (!mkdtemp(folder.data())) GTEST_SKIP() << "/dev/shm: " << std::strerror(errno);
    const auto deviceOf = [](const std::string& path) {
        struct stat status {};
        stat(path.c_str(), &status);
        return status.st_dev;
    };
    const std::string top = deviceOf("/dev") == deviceOf(folder) ? "/dev" : "/dev/shm";
    const std::string trash = top + "/.Trash-" + std::to_string(getuid());
    for (const char* const home : {volume.Path().c_str(), static_cast<const char*>(nullptr)}) {
        if (home && deviceOf(home) == deviceOf(folder)) continue;
        const Variable data("XDG_DATA_HOME", home), user("HOME", home);
        std::filesystem::create_directory(folder + "/x");
        EXPECT_EQ(ask(folder + "/x"), noErr);
        EXPECT_EQ(note, "");
        EXPECT_TRUE(std::filesystem::remove(trash + "/files/x"));
        const std::string record = ReadBytes(trash + "/info/x.trashinfo");
        EXPECT_EQ(record.find("[Trash Info]\nPath=" + folder.substr(top.size() + 1) + "/x\n"), 0u) << record;
        std::filesystem::remove(trash + "/info/x.trashinfo");
    }
    std::filesystem::remove(folder);
    for (const char* const part : {"/files", "/info", ""}) rmdir((trash + part).c_str()); // unless in use
}

TEST_F(AppleEvents, UseTheCommonTrashOfTheVolumeIfItIsSticky) {
    volume.Write(".Trash/" + std::to_string(getuid()) + "/files/x", "an item without a record");
    for (const unsigned mode : {01777u, 0777u}) {
        std::filesystem::permissions(volume / ".Trash", std::filesystem::perms(mode));
        volume.Write("Users/x");
        EXPECT_EQ(ask("/Users/x"), noErr);
    }
    EXPECT_TRUE(std::filesystem::exists(volume / ".Trash" / std::to_string(getuid()) / "files/x.2"));
    EXPECT_TRUE(std::filesystem::exists(Trash() / "files/x"));
}

TEST_F(AppleEvents, RejectOtherTargetsAndPlaces) {
    volume.Write("Users/x");
    EXPECT_EQ(ask("/Users/x", 'ttxt'), procNotFound);
    EXPECT_EQ(ask("/Users/x", 'MACS', 'desk'), noErr) << "only the reply reports the Finder's error";
    EXPECT_EQ(note, "the Finder returned -1728");
    EXPECT_EQ(ask("/Users/missing"), noErr);
    EXPECT_EQ(note, "the Finder returned -1401") << "the reference was never created";
    EXPECT_EQ(ask("/Users/x", 'MACS', 'trsh', 'delo'), errAEEventNotHandled);
    EXPECT_EQ(ask("/Users/x", 'MACS', 'trsh', kAEMove, 'alis'), noErr);
    EXPECT_EQ(note, "the Finder returned -1700");
    AEDesc nothing = {typeNull, nullptr}, empty;
    EXPECT_EQ(AESend(&nothing, &empty, kAEWaitReply, 0, 0, nullptr, nullptr), errAENotAEDesc);
    EXPECT_EQ(AECreateDesc('TEXT', nullptr, 1, &empty), paramErr);
    EXPECT_EQ(AECreateDesc('TEXT', "x", -1, &empty), paramErr);
    EXPECT_EQ(AECreateDesc('TEXT', nullptr, 0, &empty), noErr);
    AEDisposeDesc(&empty);
    macplatform::InjectFault({"AESend", procNotFound});
    EXPECT_EQ(ask("/Users/x"), procNotFound) << "the Finder does not run";
    EXPECT_TRUE(std::filesystem::exists(volume / "Users/x"));
}
