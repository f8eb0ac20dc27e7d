#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>

#include "support/FinderItem.h"
#include "support/VolumeTest.h"

#include <cstdlib>
#include <unistd.h>

namespace {

/// Sends the Finder an event that moves the item to a place. Returns the result of AESend.
OSErr ask(const std::string& path, OSType target = 'MACS', DescType place = 'trsh', AEEventID id = kAEMove) {
    FSRef ref{};
    MakeRef(path, ref);
    AEDesc address, object, nowhere = {typeNull, nullptr}, property, specifier;
    AppleEvent event, reply;
    AECreateDesc(typeApplSignature, &target, sizeof target, &address);
    AECreateAppleEvent(kAECoreSuite, id, &address, kAutoGenerateReturnID, kAnyTransactionID, &event);
    AECreateDesc(typeFSRef, &ref, sizeof ref, &object);
    AEPutParamDesc(&event, keyDirectObject, &object);
    AECreateDesc(typeType, &place, sizeof place, &property);
    CreateObjSpecifier(cObject, &nowhere, formPropertyID, &property, true, &specifier);
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
            if (entry.call == "AECreateAppleEvent") arguments = entry.arguments;
        });
    }
    void TearDown() override {
        macplatform::SetCallObserver({});
        EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore);
    }
    std::filesystem::path Trash() const { return volume / (".Trash-" + std::to_string(getuid())); }

    std::size_t liveBefore = macplatform::LiveObjectCount();
    std::string note;
    std::vector<std::string> arguments;
};

} // namespace

TEST_F(AppleEvents, MoveAnItemToTheTrashWithARecord) {
    volume.Write("Users/a b/\xC3\xA9.txt", "one");
    volume.Write("Users/a b/._\xC3\xA9.txt", "sidecar");
    EXPECT_EQ(ask("/Users/a b/\xC3\xA9.txt"), noErr);
    EXPECT_EQ(note, "");
    EXPECT_EQ(arguments, (std::vector<std::string>{"'core'", "'move'", "'sign'"}));
    EXPECT_FALSE(std::filesystem::exists(volume / "Users/a b/\xC3\xA9.txt"));
    EXPECT_EQ(ReadBytes(Trash() / "files/\xC3\xA9.txt"), "one");
    EXPECT_EQ(ReadBytes(Trash() / "files/._\xC3\xA9.txt"), "sidecar");
    const std::string record = ReadBytes(Trash() / "info/\xC3\xA9.txt.trashinfo");
    EXPECT_EQ(record.substr(0, record.find("\nDeletionDate=")), "[Trash Info]\nPath=Users/a%20b/%C3%A9.txt");

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
    const char* const before = std::getenv("XDG_DATA_HOME");
    const std::string kept = before ? before : "";
    setenv("XDG_DATA_HOME", home.Path().c_str(), 1);
    const std::string file = home.Write("x.txt");
    EXPECT_EQ(ask(file), noErr);
    EXPECT_TRUE(std::filesystem::exists(home / "Trash/files/x.txt"));
    EXPECT_NE(ReadBytes(home / "Trash/info/x.txt.trashinfo").find("Path=" + file + "\n"), std::string::npos);
    EXPECT_EQ(ask((home / "Trash").string()), noErr);
    EXPECT_EQ(note, "the Finder returned -47") << "the Trash itself cannot be moved";
    before ? setenv("XDG_DATA_HOME", kept.c_str(), 1) : unsetenv("XDG_DATA_HOME");
}

TEST_F(AppleEvents, RejectOtherTargetsAndPlaces) {
    volume.Write("Users/x");
    EXPECT_EQ(ask("/Users/x", 'ttxt'), procNotFound);
    EXPECT_EQ(ask("/Users/x", 'MACS', 'desk'), noErr) << "only the reply reports the Finder's error";
    EXPECT_EQ(note, "the Finder returned -1728");
    EXPECT_EQ(ask("/Users/missing"), noErr);
    EXPECT_EQ(note, "the Finder returned -1401") << "the reference was never created";
    EXPECT_EQ(ask("/Users/x", 'MACS', 'trsh', 'delo'), errAEEventNotHandled);
    AEDesc nothing = {typeNull, nullptr}, empty;
    EXPECT_EQ(AESend(&nothing, &empty, kAEWaitReply, 0, 0, nullptr, nullptr), errAENotAEDesc);
    EXPECT_EQ(AECreateDesc('TEXT', nullptr, 0, &empty), noErr);
    AEDisposeDesc(&empty);
    macplatform::InjectFault({"AESend", procNotFound});
    EXPECT_EQ(ask("/Users/x"), procNotFound) << "the Finder does not run";
    EXPECT_TRUE(std::filesystem::exists(volume / "Users/x"));
}
