#include "FileFailure.h"
#include "TemporaryFolder.h"

#include <Kelbase/Util/File.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <optional>

#include <sys/stat.h>
#include <sys/time.h>

namespace {

using Util::File;

FilePath toPath(const std::string& name) { return FilePath(name.c_str(), false); }

std::optional<unsigned long long> given(const checked_value<unsigned long long>& value) {
    return value.IsGiven() ? std::optional<unsigned long long>(value) : std::nullopt;
}

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

struct Mode {
    const char* name;
    unsigned int bits;
    int readError;  // of the first byte of a file "old!": 0 also at the end
    int writeError; // of an "X" written after that
    const char* left;
};

class FileOpen : public testing::TestWithParam<Mode> {};

TEST_P(FileOpen, ReadsAndWritesAsTheBitsSay) {
    const TemporaryFolder folder;
    const std::string name = folder.Write("file", "old!");
    const auto failed = [&](int line, int kind, const char* did, int number) {
        return "src/Kelbase/Util/File:" + std::to_string(line) + " kind " + std::to_string(kind) + " errno " +
               std::to_string(number) + ": Attempt to " + did + " 0 bytes (" + name + ")";
    };
    const Mode& mode = GetParam();
    const bool readable = mode.readError == 0 && mode.left[0] == 'o';
    File file(toPath(name));
    file.Open(mode.bits);
    char byte = 0;
    EXPECT_EQ(FailureOf([&] { file.ReadBlock(&byte, 1); }),
              readable
                  ? ""
                  : failed(mode.bits & File::Text ? 592 : 608, 2, "read 1 bytes, only read", mode.readError));
    EXPECT_EQ(FailureOf([&] {
                  file.WriteBlock("X", 1);
                  file.Close();
              }),
              mode.writeError == 0 ? "" : failed(630, 3, "write 1 bytes, only wrote", mode.writeError));
    file.SetPath(FilePath());
    EXPECT_EQ(ReadBytes(name), mode.left);
}

INSTANTIATE_TEST_SUITE_P(
    Bits, FileOpen,
    testing::Values(Mode{"None", 0, 0, EBADF, "old!"}, Mode{"Read", File::Read, 0, EBADF, "old!"},
                    Mode{"TruncateAlone", File::Truncate, 0, EBADF, "old!"},
                    Mode{"ReadTruncate", File::Read | File::Truncate, 0, EBADF, "old!"},
                    Mode{"Write", File::Write, EBADF, 0, "X"}, //
                    Mode{"ReadWriteEmpties", File::ReadWrite, 0, 0, "X"},
                    Mode{"ReadAndReadWrite", File::Read | File::ReadWrite, 0, 0, "oXd!"},
                    Mode{"ReadAndWrite", File::Read | File::Write, 0, 0, "oXd!"},
                    Mode{"ReadWriteTruncate", File::Read | File::Write | File::Truncate, 0, 0, "X"},
                    Mode{"Append", File::Append, EBADF, 0, "old!X"},
                    Mode{"WriteAppend", File::Write | File::Append, EBADF, 0, "old!X"},
                    Mode{"ReadAppend", File::Read | File::Append, 0, 0, "old!X"},
                    Mode{"ReadWriteAppendEmpties", File::ReadWrite | File::Append, 0, 0, "X"},
                    Mode{"ReadText", File::Read | File::Text, 0, EBADF, "old!"},
                    Mode{"WriteText", File::Write | File::Text, EBADF, 0, "X"},
                    Mode{"AppendText", File::Append | File::Text, EBADF, 0, "old!X"},
                    Mode{"BitsWithoutMeaning", 0x81, 0, EBADF, "old!"}),
    [](const auto& row) { return row.param.name; });

TEST(File, FailsWithPlaceAndErrno) {
    const TemporaryFolder folder;
    const std::string missing = folder / "missing";
    File file(toPath(missing));
    char buffer[4];
    const auto failed = [&](const std::string& what) {
        return "src/Kelbase/Util/File:" + what + " (" + missing + ")";
    };
    EXPECT_EQ(FailureOf([&] { file.Open(File::Read); }), failed("288 kind 1 errno 2: Error opening file"));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(FailureOf([&] { file.At(18446744073709551615ULL); }),
              failed("329 kind 7 errno 0: Attempt to seek to 18446744073709551615 when not open"));
    EXPECT_EQ(FailureOf([&] { file.ReadBlock(buffer, 4294967295U); }),
              failed("577 kind 2 errno 0: Attempt to read 4294967295 bytes when not open"));
    EXPECT_EQ(FailureOf([&] { file.WriteBlock("abc", 3); }),
              failed("623 kind 3 errno 0: Attempt to write 3 bytes when not open"));
    EXPECT_EQ(FailureOf([&] { file.SetMode(0644); }),
              failed("128 kind 7 errno 0: Error modifying file permissions"));
    EXPECT_EQ(FailureOf([&] {
                  file.SetTime({1, 2});
              }),
              failed("148 kind 7 errno 0: Error setting file time"));
    Util::FileTime time = {1, 2};
    EXPECT_EQ(FailureOf([&] { file.GetTime(&time); }), failed("179 kind 7 errno 0: Error getting file time"));
    EXPECT_EQ(time.modified, 2);
    EXPECT_EQ(FailureOf([&] { file.Remove(true); }), failed("422 kind 5 errno 2: Remove failed"));

    file.Remove(false);
    file.Close();
    file.Flush();
    file.ReadBlock(nullptr, 5);
    file.ReadBlock(buffer, 0);
    file.WriteBlock(nullptr, 5);
    EXPECT_FALSE(file.Exists() || file.IsReadable() || file.IsWritable() || file.AtEnd());
    EXPECT_EQ(given(file.Size()), std::nullopt);
    EXPECT_EQ(given(file.At()), std::nullopt);
    EXPECT_EQ(given(File().Size()), std::nullopt);
    EXPECT_TRUE(File().IsNull());
    EXPECT_FALSE(File().Exists());
}

TEST(File, ThrowsWhereTheFileEndsAndHandsOutWhatWasLeft) {
    const TemporaryFolder folder;
    const std::string name = folder.Write("file", "0123456789");
    for (const bool text : {false, true}) {
        SCOPED_TRACE(text);
        File file(toPath(name));
        file.Open(File::Read | (text ? File::Text : 0U));
        file.At(6);
        EXPECT_EQ(given(file.Remaining()), 4);
        char buffer[10] = {};
        errno = EIO; // of something earlier
        EXPECT_EQ(FailureOf([&] { file.ReadBlock(buffer, 10); }),
                  "src/Kelbase/Util/File:" + std::to_string(text ? 592 : 608) +
                      " kind 2 errno 0: Attempt to read 10 bytes, only read 4 bytes (" + name + ")");
        EXPECT_STREQ(buffer, "6789");
        EXPECT_TRUE(file.AtEnd());
        EXPECT_EQ(given(file.At()), 10);
        file.At(11);
        EXPECT_FALSE(file.AtEnd());
        EXPECT_EQ(given(file.Remaining()), 0) << "past the end";
        EXPECT_EQ(given(file.Size()), 10);
        file.Close();
        EXPECT_EQ(given(file.Remaining()), std::nullopt);
        EXPECT_EQ(given(file.Size()), 10);
    }
}

TEST(File, MayReadAndWriteInTurn) {
    const TemporaryFolder folder;
    const std::string name = folder.Write("file", "0123456789");
    File file(toPath(name));
    file.Open(File::Read | File::Write);
    char buffer[3] = {};
    file.WriteBlock("ab", 2);
    file.ReadBlock(buffer, 2);
    EXPECT_STREQ(buffer, "23");
    file.WriteBlock("cd", 2);
    EXPECT_EQ(given(file.At()), 6);
    file.ReadBlock(buffer, 2);
    EXPECT_STREQ(buffer, "67");
    file.Flush();
    file.WriteBlock("ef", 2);
    EXPECT_FALSE(FailureOf([&] { file.ReadBlock(buffer, 1); }).empty());
    file.WriteBlock("gh", 2);
    EXPECT_TRUE(file.AtEnd()) << "writing takes no note of the end back";
    file.At(1);
    file.ReadBlock(buffer, 2);
    EXPECT_STREQ(buffer, "b2");
    file.Close();
    EXPECT_EQ(ReadBytes(name), "ab23cd67efgh");
}

TEST(File, ReachesPast4GiB) {
    const TemporaryFolder folder;
    const std::string name = folder / "sparse";
    constexpr unsigned long long far = 5ULL << 30;
    File file(toPath(name));
    file.Open(File::Read | File::Write | File::Truncate);
    file.At(far);
    file.WriteBlock("end", 3);
    EXPECT_EQ(given(file.At()), far + 3);
    file.Flush();
    EXPECT_EQ(given(file.Size()), far + 3);
    file.At(far - 1);
    EXPECT_EQ(given(file.Remaining()), 4);
    char buffer[4];
    file.ReadBlock(buffer, 4);
    EXPECT_EQ(std::memcmp(buffer, "\0end", 4), 0);

    for (const char* position : {"9223372036854775808", "18446744073709551615"})
        EXPECT_EQ(FailureOf([&] { file.At(std::stoull(position)); }),
                  "src/Kelbase/Util/File:345 kind 7 errno 22: Seek to " + std::string(position) +
                      " failed (" + name + ")");
    EXPECT_EQ(given(file.At()), far + 3);
    file.Close();
    EXPECT_EQ(given(file.Size()), far + 3);
}

TEST(File, TellsWhatTheDiskRefuses) {
    const std::string failed = "src/Kelbase/Util/File:";
    File file(toPath("/dev/full"));
    file.Open(File::Read | File::Write);
    file.WriteBlock("abc", 3); // buffered
    EXPECT_EQ(FailureOf([&] { file.Close(); }), failed + "397 kind 4 errno 28: Close failed (/dev/full)");
    EXPECT_FALSE(file.IsOpen());
    file.Close();

    file.Open(File::Read | File::Write);
    const std::string large(1 << 20, 'x');
    EXPECT_EQ(FailureOf([&] { file.WriteBlock(large.data(), 1 << 20); }),
              failed + "630 kind 3 errno 28: Attempt to write 1048576 bytes, only wrote 0 bytes (/dev/full)");
    file.SetPath(FilePath()); // says nothing of what is lost

    const TemporaryFolder folder;
    const std::string name = folder.Path().string();
    file.SetPath(toPath(name));
    file.Open(File::Read); // which opens folders, too
    char byte;
    EXPECT_EQ(FailureOf([&] { file.ReadBlock(&byte, 1); }),
              failed + "608 kind 2 errno 21: Attempt to read 1 bytes, only read 0 bytes (" + name + ")");
    EXPECT_EQ(FailureOf([&] { File(toPath(name)).Open(File::Write); }),
              failed + "288 kind 1 errno 21: Error opening file (" + name + ")");
}

TEST(File, ClosesWhatItLetsGoOf) {
    const TemporaryFolder folder;
    const std::string name = folder / "file";
    const auto before = openDescriptors();
    {
        File file(toPath(name));
        file.Open(File::Write);
        file.WriteBlock("abc", 3);
        file.SetPath(toPath(name));
        EXPECT_FALSE(file.IsOpen());
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_EQ(ReadBytes(name), "abc");
        file.Open(File::Append);
        file.WriteBlock("d", 1);
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(ReadBytes(name), "abcd");

    File file(toPath(name));
    file.Open(File::Read);
    file.Remove(true);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(file.Exists());
}

TEST(File, ObeysPermissions) {
    const TemporaryFolder folder;
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
    const std::string name = folder.Write("secret", "abc");
    File file(toPath(name));
    file.SetMode(04000);
    struct stat status;
    ASSERT_EQ(stat(name.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 04000U);
    EXPECT_TRUE(HoldsForAnyUser([&] {
        return file.Exists() && !file.IsReadable() && !file.IsWritable() && given(file.Size()) == 3 &&
               FailureOf([&] { file.Open(File::Read); }) ==
                   "src/Kelbase/Util/File:288 kind 1 errno 13: Error opening file (" + name + ")";
    }));
}

TEST(File, KeepsTimesToTheSecond) {
    const TemporaryFolder folder;
    const std::string name = folder.Write("file");
    File file(toPath(name));
    for (const Util::FileTime set : {Util::FileTime{1, 2}, {1600000000, INT_MAX}, {-86400, -1}}) {
        file.SetTime(set);
        Util::FileTime read = {};
        file.GetTime(&read);
        EXPECT_EQ(read.accessed, set.accessed);
        EXPECT_EQ(read.modified, set.modified);
        struct stat status;
        ASSERT_EQ(stat(name.c_str(), &status), 0);
        EXPECT_EQ(status.st_atime, set.accessed);
    }
    if constexpr (sizeof(time_t) > 4) { // a time outside 32 bits can be made
        const timeval late[2] = {{time_t(1) << 33, 0}, {time_t(1) << 33, 0}};
        ASSERT_EQ(utimes(name.c_str(), late), 0);
        Util::FileTime read = {};
        file.GetTime(&read);
        EXPECT_EQ(read.accessed, INT_MAX);
        EXPECT_EQ(read.modified, INT_MAX);
    }
}

} // namespace
