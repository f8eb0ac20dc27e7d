#include <Kelbase/Util/Exception/DataStreamIO.h>
#include <Kelbase/Util/Exception/FileIO.h>

#include <gtest/gtest.h>

namespace {

using Util::Exception::DataStreamIO;
using Util::Exception::FileIO;

std::string text(const String& s) { return {s.Latin1(), s.GetLength()}; }

TEST(Exception, RendersMessageAndLocation) {
    Exception::Base failure("It %1 failed");
    EXPECT_EQ(text(failure.ToString()), "Base:\n\tIt %1 failed\n\t (-1): Thrown, GetLastError(): 0\n");
    EXPECT_EQ(failure.GetLineNumber(), -1);

    failure.SetLocation("src/Kelbase/Util/File", 0x700000120LL);
    EXPECT_EQ(failure.GetLineNumber(), 288);
    EXPECT_EQ(text(failure.ToString()),
              "Base:\n\tIt %1 failed\n\tsrc/Kelbase/Util/File (288): Thrown, GetLastError(): 0\n");
}

TEST(Exception, FileIORendersThePathThatIsSet) {
    const std::string head = "Base:\n\tNo\n\t (-1): Thrown, GetLastError(): 0\n\nFileIO:\n";
    EXPECT_EQ(text(FileIO("No", FilePath("/a//b", false), FileIO::OpenError, 13).ToString()),
              head + "/a//b: Open error");
    EXPECT_EQ(text(FileIO("No", FolderPath("/a//b", false), FileIO::RemoveError, 13).ToString()),
              head + "/a//b/: Remove error");
    EXPECT_EQ(text(FileIO("No", FilePath(), FileIO::UnexpectedError, 0).ToString()),
              head + ": Unexpected error");
}

TEST(Exception, FileIODescribesItsKind) {
    const char* const descriptions[] = {"File not found", "Open error",       "Read error",
                                        "Write error",    "Close error",      "Remove error",
                                        "Rename error",   "Unexpected error", " Unknown error"};
    unsigned int kind = 0;
    for (const char* description : descriptions)
        EXPECT_EQ(
            text(FileIO("", FilePath(), static_cast<FileIO::ErrorKind>(kind++), 0).GetErrorDescription()),
            description);
    EXPECT_EQ(
        text(FileIO("", FilePath(), static_cast<FileIO::ErrorKind>(0xFFFFFFFFU), 0).GetErrorDescription()),
        " Unknown error");
}

TEST(Exception, IsCaughtAsItsBaseWithAllItHolds) {
    try {
        DataStreamIO failure("Can't read 4 bytes");
        failure.SetLocation("src/Kelbase/Util/ByteStream", 12);
        const DataStreamIO copy(failure);
        throw copy;
    } catch (const Exception::Base& caught) {
        EXPECT_EQ(text(caught.GetFilename()), "src/Kelbase/Util/ByteStream");
        EXPECT_EQ(text(caught.ToString()), "Base:\n\tCan't read 4 bytes\n\tsrc/Kelbase/Util/ByteStream (12): "
                                           "Thrown, GetLastError(): 0\n\nDataStreamIO\n");
    }
    const FileIO original("No", FolderPath("/a", false), FileIO::WriteError, 28);
    FileIO copy("", FilePath("/b", false), FileIO::OpenError, 0);
    copy = original;
    EXPECT_EQ(copy.GetErrorNumber(), 28);
    EXPECT_TRUE(copy.GetFilePath().IsEmpty());
    EXPECT_EQ(text(copy.ToString()), text(original.ToString()));
}

} // namespace
