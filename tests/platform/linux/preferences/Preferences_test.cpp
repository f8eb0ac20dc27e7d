#include <CoreFoundation/CoreFoundation.h>

#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>
#include <macplatform/PropertyList.h>

#include "PreferenceCalls.h"
#include "support/BinaryPlist.h"
#include "support/CommandOutput.h"
#include "support/InChild.h"
#include "support/VolumeTest.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using macplatform::PropertyValue;

namespace {

class Preferences : public VolumeTest {
protected:
    std::filesystem::path File() const { return volume / "Library/Preferences/com.example.app.plist"; }
    PropertyValue Stored() const { return macplatform::ReadPropertyList(File().string()).root; }
    /// Returns the contents of the file as Python's plistlib reads them.
    std::string Python() const {
        return Printed(
            "/usr/bin/python3 -c 'import plistlib,sys; print(plistlib.load(open(sys.argv[1],\"rb\")))' '" +
            File().string() + "'");
    }
};

} // namespace

TEST_F(Preferences, AreStoredBySynchronise) {
    Set("Lang", "ja");
    SetNumber("UpdateInterval", 2);
    EXPECT_FALSE(std::filesystem::exists(File()));
    EXPECT_TRUE(Synchronise());
    EXPECT_EQ(Python(), "{'Lang': 'ja', 'UpdateInterval': 2}\n");
    EXPECT_EQ(ReadBytes(File()).substr(0, 8), "bplist00");
    EXPECT_EQ(ReadBytes(File()).size(), 8 + 5 + 3 + 15 + 2 + 5 + 5 + 32u);
    struct stat status {};
    ASSERT_EQ(stat(File().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644u);
    ASSERT_EQ(stat((volume / "Library/Preferences").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0775u);
}

TEST_F(Preferences, StoreEveryNumberAndString) {
    const auto add = [](const std::string& value, CFTypeRef object) {
        const CFStringRef key = NewText(value.c_str());
        CFPreferencesSetValue(key, object, CFSTR("com.example.app"), kCFPreferencesAnyUser,
                              kCFPreferencesCurrentHost);
        CFRelease(key);
        CFRelease(object);
    };
    for (const std::int64_t number :
         {std::int64_t{0}, std::int64_t{-1}, std::int64_t{255}, std::int64_t{256}, std::int64_t{65535},
          std::int64_t{65536}, std::int64_t{1} << 32, INT64_MAX, INT64_MIN})
        add(std::to_string(number), CFNumberCreate(nullptr, kCFNumberSInt64Type, &number));
    for (const double number : {-0.0, 0.5, 1e300})
        add(std::to_string(number), CFNumberCreate(nullptr, kCFNumberDoubleType, &number));
    for (const std::size_t length : {14U, 15U, 300U})
        add(std::string(length, 's'), NewText(std::string(length, 's').c_str()));
    EXPECT_TRUE(Synchronise());
    EXPECT_EQ(Printed("/usr/bin/python3 -c 'import plistlib,sys\nfor k, v in "
                      "plistlib.load(open(sys.argv[1],\"rb\")).items(): assert (\"%f\" % v if type(v) is "
                      "float else str(v)) == k, k' '" +
                      File().string() + "'"),
              "");
    EXPECT_EQ(Stored().keys.size(), 15u);
}

TEST_F(Preferences, AreStoredOnTheVolumeThatTheyWereSetOn) {
    const TemporaryFolder other;
    Set("Lang", "ja");
    macplatform::SetStartupVolume(other.Path().string());
    EXPECT_TRUE(Synchronise());
    EXPECT_TRUE(std::filesystem::is_empty(other.Path()));
    macplatform::SetStartupVolume(volume.Path().string());
    EXPECT_TRUE(Synchronise());
    EXPECT_EQ(Python(), "{'Lang': 'ja'}\n");
}

TEST_F(Preferences, WriteNothingIfNothingChanges) {
    Set("Lang", "ja");
    ASSERT_TRUE(Synchronise());
    struct stat before {
    }, after{};
    ASSERT_EQ(stat(File().c_str(), &before), 0);
    Set("Lang", "ja");
    Set("Missing", nullptr);
    EXPECT_TRUE(Synchronise());
    ASSERT_EQ(stat(File().c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    Set("Lang", nullptr);
    EXPECT_TRUE(Synchronise());
    EXPECT_FALSE(std::filesystem::exists(File())) << "no key is left";
}

TEST_F(Preferences, KeepFilesThatCannotBeRead) {
    for (const std::string content : {"rubbish", "", "<plist><array/></plist>", "bplist00\x01\x02"}) {
        volume.Write("Library/Preferences/com.example.app.plist", content);
        Set("Lang", "ja");
        EXPECT_FALSE(Synchronise()) << content;
        EXPECT_EQ(ReadBytes(File()), content);
    }
    std::filesystem::remove(File());
    EXPECT_TRUE(Synchronise()) << "the value is still pending";
    EXPECT_EQ(Stored().Find("Lang")->text, "ja");

    std::filesystem::remove(File());
    std::filesystem::create_symlink("nowhere", File());
    Set("Lang", "de");
    EXPECT_FALSE(Synchronise());
    EXPECT_TRUE(std::filesystem::is_symlink(File())) << "a dangling link";
    std::filesystem::remove(File());
    std::filesystem::create_directory(File());
    EXPECT_FALSE(Synchronise());
    EXPECT_TRUE(std::filesystem::is_directory(File()));
}

TEST_F(Preferences, KeepAllOtherBytesOfXml) {
    const std::string
        head = "\xEF\xBB\xBF<?xml version='1.0'?>\n<!-- a --><plist><dict b='c'>\r\n  <!-- d -->",
        value = "\r\n  <key>v</key> <array><string>\r\n\r</string><real>-0.0</real><date>1904-01-01T00:00:00Z"
                "</date><data>&#65; AE\n</data><integer>0x10</integer></array>",
        tail = "<!-- e -->\n</dict></plist> behind";
    const auto changed = [this](const std::string& before) {
        volume.Write("Library/Preferences/com.example.app.plist", before);
        EXPECT_TRUE(Synchronise());
        return ReadBytes(File());
    };
    const std::string lang = "\r\n  <key>Lang</key>\r\n  <string>de</string>";
    Set("Lang", "ja\r<&>");
    EXPECT_EQ(changed(head + value + tail),
              head + value + "\r\n  <key>Lang</key>\r\n  <string>ja&#13;&#60;&#38;&#62;</string>" + tail);
    EXPECT_EQ(Stored().Find("Lang")->text, "ja\r<&>");
    Set("Lang", "fr");
    EXPECT_EQ(changed(head + lang + lang + value + tail),
              head + lang + "\r\n  <key>Lang</key>\r\n  <string>fr</string>" + value + tail);
    Set("Lang", nullptr);
    EXPECT_EQ(changed(head + lang + value + lang + tail), head + value + tail);
    Set("Lang", "de");
    EXPECT_EQ(changed("<dict a='b'/>"), "<dict a='b'>\n\t<key>Lang</key>\n\t<string>de</string>\n</dict>");
    Set("Lang", "de");
    EXPECT_EQ(changed("<dict a=//>"), "<dict a=/ >\n\t<key>Lang</key>\n\t<string>de</string>\n</dict>");
}

TEST_F(Preferences, UpdateFilesThatLoseTheirForm) {
    const std::string oldStyle = "// c\n{ b = (<0a0b0c0d>, 'x & y', {}); a = b; }";
    std::string utf16 = "\xFF\xFE";
    for (const char c : std::string("<plist><dict/></plist>")) (utf16 += c) += '\0';
    std::string note;
    macplatform::SetCallObserver([&note](const macplatform::RecordedCall& entry) { note = entry.note; });
    const auto noteOf = [&](const std::string& before) {
        volume.Write("Library/Preferences/com.example.app.plist", before);
        Set("Lang", "ja");
        EXPECT_TRUE(Synchronise());
        return note;
    };
    EXPECT_EQ(noteOf(oldStyle),
              File().string() + ": lost the comments and the old style; the file is XML now");
    EXPECT_EQ(Python(), "{'b': [b'\\n\\x0b\\x0c\\r', 'x & y', {}], 'a': 'b', 'Lang': 'ja'}\n");
    EXPECT_EQ(noteOf(utf16), File().string() + ": lost the encoding UTF-16LE; the file is UTF-8 now");
    EXPECT_EQ(Python(), "{'Lang': 'ja'}\n");
    EXPECT_EQ(noteOf("<dict/>"), "");
    macplatform::SetCallObserver({});
}

TEST_F(Preferences, KeepUnusualBinaryObjects) {
    const std::string aSet("\xC1\x03"), loneSurrogate("\x61\xD8\x00", 3), nul("\122a\0", 3),
        latin1("\x51\xE9"), null("\0", 1), oldDate("\x33\xC2\x2D\x6B\x4A\xF0\0\0\0", 9),
        minusZero("\x23\x80\0\0\0\0\0\0\0", 9);
    for (const std::string& object : {aSet, loneSurrogate, nul, latin1, null, oldDate, minusZero}) {
        const std::string plist = BinaryPlist({"\xD2\x01\x03\x02\x03", "\x51k", object, "\x10\x07"});
        volume.Write("Library/Preferences/com.example.app.plist", plist);
        Set("Lang", "ja");
        EXPECT_TRUE(Synchronise());
        EXPECT_EQ(Stored().keys, (std::vector<std::string>{"k", "\xFFinteger 7", "Lang"}));
        const bool hasMember = object == aSet; // The number of its member has changed.
        EXPECT_NE(ReadBytes(File()).find(hasMember ? "\xC1" : object), std::string::npos);
    }
    volume.Write("Library/Preferences/com.example.app.plist",
                 BinaryPlist({"\xD3\x01\x01\x02\x03\x04\x03", "\124Lang", "\x51k", "\x09", "\x08"}));
    EXPECT_TRUE(Synchronise());
    Set("Lang", "ja");
    EXPECT_TRUE(Synchronise());
    EXPECT_EQ(Python(), "{'Lang': 'ja', 'k': True}\n") << "the repeated key has one value now";
}

TEST_F(Preferences, KeepSharedObjectsOnceAndDropUnusedObjects) {
    const std::string shared = BinaryPlist(
        {"\xD3\x01\x02\x03\x04\x04\x05", "\121a", "\121b", "\121c", "\xA1\x06", "\127dropped", "\126shared"});
    volume.Write("Library/Preferences/com.example.app.plist", shared);
    Set("c", "changed");
    ASSERT_TRUE(Synchronise());
    EXPECT_EQ(Python(), "{'a': ['shared'], 'b': ['shared'], 'c': 'changed'}\n");
    const std::string bytes = ReadBytes(File());
    EXPECT_EQ(bytes.find("shared"), bytes.rfind("shared"));
    EXPECT_EQ(bytes.find("dropped"), std::string::npos);
    Set("c", nullptr);
    Set("a", "\xE6\x97\xA5");
    ASSERT_TRUE(Synchronise());
    EXPECT_EQ(Python(), "{'a': '\xE6\x97\xA5', 'b': ['shared']}\n");
}

TEST_F(Preferences, FailIfTheDirectoryIsReadOnly) {
    volume.Write("Library/Preferences/com.example.app.plist",
                 "<plist><dict><key>a</key><true/></dict></plist>");
    std::filesystem::permissions(volume.Path(), std::filesystem::perms(0755));
    const std::string before = ReadBytes(File());
    std::filesystem::permissions(volume / "Library/Preferences", std::filesystem::perms(0555));
    EXPECT_TRUE(IsTrueForAnyUser([] {
        Set("Lang", "ja");
        return !Synchronise();
    }));
    std::filesystem::permissions(volume / "Library/Preferences", std::filesystem::perms(0755));
    EXPECT_EQ(ReadBytes(File()), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(volume / "Library/Preferences"), {}), 1);
}

TEST_F(Preferences, RejectDomainsThatAreNotFileNames) {
    const UniChar withNul[] = {'a', 0, 'b'};
    const CFStringRef nul = CFStringCreateWithCharacters(nullptr, withNul, 3);
    for (const CFStringRef bad : {CFSTR("../../x"), CFSTR("a/b"), CFSTR(""), CFSTR(".."), CFSTR("."), nul}) {
        CFPreferencesSetValue(CFSTR("k"), CFSTR("v"), bad, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
        EXPECT_FALSE(Synchronise(bad));
    }
    CFRelease(nul);
    EXPECT_FALSE(
        CFPreferencesSynchronize(CFSTR("com.example.app"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
    // The constants are compared as objects. A string with the same contents is the name of a user.
    EXPECT_FALSE(CFPreferencesSynchronize(CFSTR("com.example.app"), CFSTR("kCFPreferencesAnyUser"),
                                          kCFPreferencesCurrentHost));
    EXPECT_TRUE(std::filesystem::is_empty(volume.Path()));
}

TEST_F(Preferences, WaitForALockAndRemoveOldTemporaryFiles) {
    const std::string leftover = volume.Write("Library/Preferences/.cf#1-0", "half a file");
    const int folder = open((volume / "Library/Preferences").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(folder); // Otherwise the child would hold the lock too.
        Set("Lang", "ja");
        _exit(Synchronise() ? 0 : 1);
    }
    EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0) << "it waits";
    close(folder);
    int status = 1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(std::filesystem::exists(leftover));
    EXPECT_EQ(Stored().Find("Lang")->text, "ja");
}

TEST_F(Preferences, ReportTheReasonOfAFailure) {
    std::vector<macplatform::RecordedCall> calls;
    macplatform::SetCallObserver(
        [&calls](const macplatform::RecordedCall& entry) { calls.push_back(entry); });
    volume.Write("Library/Preferences/com.example.app.plist", "not a list");
    Set("Lang", "ja");
    calls.clear();
    EXPECT_FALSE(Synchronise());
    macplatform::SetCallObserver({});
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].call, "CFPreferencesSynchronize");
    EXPECT_EQ(calls[0].result, "false");
    EXPECT_EQ(calls[0].note, File().string() + ": not a property list: line 1: ';' is missing");
    volume.Write("Library/Preferences/com.example.app.plist", "()");
    macplatform::SetCallObserver([&calls](const macplatform::RecordedCall& entry) { calls = {entry}; });
    EXPECT_FALSE(Synchronise());
    EXPECT_EQ(calls[0].note, File().string() + ": the root of the property list is not a dictionary");
    macplatform::SetCallObserver({});

    std::filesystem::remove(File());
    macplatform::InjectFault({"CFPreferencesSynchronize"});
    EXPECT_FALSE(Synchronise());
    EXPECT_FALSE(std::filesystem::exists(File()));
    EXPECT_TRUE(Synchronise());
}
