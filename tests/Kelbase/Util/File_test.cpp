#include "FileFailure.h"
#include "support/InChild.h"
#include "support/TemporaryFolder.h"

#include <Kelbase/Util/File.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <optional>

#include <sys/stat.h>
#include <sys/time.h>

namespace {

using Util::File;

FilePath toPath(const std::string& name) { return FilePath(name.c_str(), false); }

/// Returns `FailureOf` for an exception of File about the file `name`.
template <typename Call>
std::string failure(const std::string& name, Call call) {
    return FailureOf("src/Kelbase/Util/File", name, call);
}

std::optional<unsigned long long> given(const checked_value<unsigned long long>& value) {
    return value.IsGiven() ? std::optional<unsigned long long>(value) : std::nullopt;
}

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST(File, OpenFollowsItsModeBits) {
    EXPECT_EQ(File::Read, 2u);
    EXPECT_EQ(File::Write, 4u);
    EXPECT_EQ(File::ReadWrite, 8u);
    constexpr unsigned int r = 0x02, w = 0x04, rw = 0x08, a = 0x10, t = 0x20;
    struct {
        unsigned int bits;
        int readError;    // errno of a read of the first byte; 0 if no error, or if the file is empty
        int writeError;   // errno of a write of "X" after the read
        const char* left; // contents of the file after the write
    } const rows[] = {
        // clang-format off
        // mode bits, read error, write error, contents after the write; the file begins as "old!"
        {0, 0, EBADF, "old!"},
        {r, 0, EBADF, "old!"},
        {t, 0, EBADF, "old!"},
        {r | t, 0, EBADF, "old!"},
        {w, EBADF, 0, "X"},
        {rw, 0, 0, "X"},
        {r | rw, 0, 0, "oXd!"},
        {r | w, 0, 0, "oXd!"},
        {r | w | t, 0, 0, "X"},
        {a, EBADF, 0, "old!X"},
        {w | a, EBADF, 0, "old!X"},
        {r | a, 0, 0, "old!X"},
        {rw | a, 0, 0, "X"},
        // clang-format on
    };
    for (const unsigned int text : {0U, unsigned{File::Text}})
        for (const auto& row : rows) {
            SCOPED_TRACE(row.bits | text);
            const TemporaryFolder folder;
            const std::string name = folder.Write("file", "old!");
            const std::string notRead = std::string(text ? "592" : "608") + " 2 " +
                                        std::to_string(row.readError) +
                                        ": Attempt to read 1 bytes, only read 0 bytes";
            File file(toPath(name));
            file.Open(row.bits | text);
            char byte = 0;
            const bool isRead = row.readError == 0 && row.left[0] == 'o';
            EXPECT_EQ(failure(name, [&] { file.ReadBlock(&byte, 1); }), isRead ? "" : notRead);
            EXPECT_EQ(failure(name, [&] { file.WriteBlock("X", 1); }),
                      row.writeError == 0 ? "" : "630 3 9: Attempt to write 1 bytes, only wrote 0 bytes");
            file.SetPath(FilePath());
            EXPECT_EQ(ReadBytes(name), row.left);
        }
}

TEST(File, ThrowsWithLineKindAndErrno) {
    const TemporaryFolder folder;
    const std::string name = folder / "missing";
    File file(toPath(name));
    char buffer[4];
    Util::FileTime time = {1, 2};
    EXPECT_EQ(failure(name, [&] { file.Open(File::Read); }), "288 1 2: Error opening file");
    EXPECT_EQ(failure(name, [&] { file.At(1ULL << 63); }),
              "329 7 0: Attempt to seek to 9223372036854775808 when not open");
    EXPECT_EQ(failure(name, [&] { file.ReadBlock(buffer, 4294967295U); }),
              "577 2 0: Attempt to read 4294967295 bytes when not open");
    EXPECT_EQ(failure(name, [&] { file.WriteBlock("abc", 3); }),
              "623 3 0: Attempt to write 3 bytes when not open");
    EXPECT_EQ(failure(name, [&] { file.SetMode(0644); }), "128 7 0: Error modifying file permissions");
    EXPECT_EQ(failure(name, [&] { file.SetTime(time); }), "148 7 0: Error setting file time");
    EXPECT_EQ(failure(name, [&] { file.GetTime(&time); }), "179 7 0: Error getting file time");
    EXPECT_EQ(failure(name, [&] { file.Remove(true); }), "422 5 2: Remove failed");

    file.Remove(false);
    file.Close();
    file.ReadBlock(nullptr, 5);
    file.WriteBlock("abc", 0);
    EXPECT_FALSE(file.IsOpen() || file.Exists() || file.IsReadable() || file.IsWritable() || file.AtEnd());
    EXPECT_FALSE(file.Size().IsGiven() || file.At().IsGiven() || File().Size().IsGiven() || File().Exists());
}

TEST(File, ReadPastTheEndThrowsAndStoresTheRest) {
    const TemporaryFolder folder;
    const std::string name = folder.Write("file", "0123456789");
    for (const unsigned int text : {0U, unsigned{File::Text}}) {
        File file(toPath(name));
        file.Open(File::Read | text);
        file.At(6);
        EXPECT_EQ(given(file.Remaining()), 4);
        char buffer[10] = {};
        errno = EIO; // a value of an earlier call
        EXPECT_EQ(failure(name, [&] { file.ReadBlock(buffer, 10); }),
                  std::string(text ? "592" : "608") + " 2 0: Attempt to read 10 bytes, only read 4 bytes");
        EXPECT_STREQ(buffer, "6789");
        EXPECT_TRUE(file.AtEnd());
        file.At(11);
        EXPECT_EQ(given(file.Remaining()), 0) << "past the end";
        file.Close();
        EXPECT_EQ(given(file.Remaining()), std::nullopt);
        EXPECT_EQ(given(file.Size()), 10);
    }
}

TEST(File, AlternatesReadsAndWrites) {
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
    file.WriteBlock("ef", 2);
    EXPECT_NE(failure(name, [&] { file.ReadBlock(buffer, 1); }), "");
    file.WriteBlock("gh", 2);
    file.Close();
    EXPECT_EQ(ReadBytes(name), "ab23cd67efgh");
}

TEST(File, SupportsOffsetsAbove4GiB) {
    const TemporaryFolder folder;
    const std::string name = folder / "sparse";
    File file(toPath(name));
    file.Open(File::Read | File::Write | File::Truncate);
    file.At(5368709120);
    file.WriteBlock("end", 3);
    file.Flush();
    EXPECT_EQ(given(file.Size()), 5368709123);
    file.At(5368709119);
    EXPECT_EQ(given(file.Remaining()), 4);
    char buffer[4];
    file.ReadBlock(buffer, 4);
    EXPECT_EQ(std::string(buffer, 4), std::string("\0end", 4));
    EXPECT_EQ(failure(name, [&] { file.At(1ULL << 63); }), "345 7 22: Seek to 9223372036854775808 failed");
    EXPECT_EQ(given(file.At()), 5368709123);
}

TEST(File, ReportsErrorsOfTheSystem) {
    File file(toPath("/dev/full"));
    file.Open(File::Read | File::Write);
    file.WriteBlock("abc", 3); // buffered
    EXPECT_EQ(failure("/dev/full", [&] { file.Close(); }), "397 4 28: Close failed");
    EXPECT_FALSE(file.IsOpen());
    file.Open(File::Read | File::Write);
    std::string large(1 << 20, 'x');
    EXPECT_EQ(failure("/dev/full", [&] { file.WriteBlock(large.data(), 1 << 20); }),
              "630 3 28: Attempt to write 1048576 bytes, only wrote 0 bytes");

    const TemporaryFolder folder;
    file.SetPath(toPath(folder.Path()));
    file.Open(File::Read); // open with O_RDONLY also opens directories
    EXPECT_EQ(failure(folder.Path(), [&] { file.ReadBlock(large.data(), 1); }),
              "608 2 21: Attempt to read 1 bytes, only read 0 bytes");

    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
    const std::string name = folder.Write("secret", "abc");
    file.SetPath(toPath(name));
    file.SetMode(04000);
    struct stat status;
    ASSERT_EQ(stat(name.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 04000U);
    EXPECT_TRUE(IsTrueForAnyUser([&] {
        return file.Exists() && !file.IsReadable() && !file.IsWritable() && given(file.Size()) == 3 &&
               failure(name, [&] { file.Open(File::Read); }) == "288 1 13: Error opening file";
    }));
}

TEST(File, ClosesTheFileOnSetPathRemoveAndDestruction) {
    const TemporaryFolder folder;
    const std::string name = folder / "file";
    const auto before = openDescriptors();
    {
        File file(toPath(name));
        file.Open(File::Write);
        file.SetPath(toPath(name));
        file.Open(File::Append);
        file.WriteBlock("d", 1);
    }
    EXPECT_EQ(ReadBytes(name), "d");
    File file(toPath(name));
    file.Open(File::Read);
    file.Remove(true);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(file.Exists());
}

TEST(File, StoresTimesInSeconds) {
    const TemporaryFolder folder;
    const std::string name = folder.Write("file");
    File file(toPath(name));
    Util::FileTime read = {};
    for (const Util::FileTime set : {Util::FileTime{1, INT_MAX}, {-86400, -1}}) {
        file.SetTime(set);
        file.GetTime(&read);
        EXPECT_EQ(read.accessed, set.accessed);
        EXPECT_EQ(read.modified, set.modified);
    }
    if constexpr (sizeof(time_t) > 4) { // this system has times that need more than 32 bits
        const timeval late[2] = {{time_t(1) << 33, 0}, {time_t(1) << 33, 0}};
        ASSERT_EQ(utimes(name.c_str(), late), 0);
        file.GetTime(&read);
        EXPECT_EQ(read.modified, INT_MAX);
    }
}

} // namespace
