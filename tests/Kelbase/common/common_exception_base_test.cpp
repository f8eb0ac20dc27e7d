#include <Kelbase/Util/Exception/DataStreamIO.h>
#include <Kelbase/Util/Exception/FileIO.h>

#include "TextBytes.h"

#include <gtest/gtest.h>

namespace {

using Util::Exception::DataStreamIO;
using Util::Exception::FileIO;

TEST(Exception, ToStringContainsMessageLocationAndPath) {
    const std::string head = "Base:\n\tNo %1\n\t (-1): Thrown, GetLastError(): 0\n";
    EXPECT_EQ(Bytes(Exception::Base("No %1").ToString()), head);
    EXPECT_EQ(Bytes(FileIO("No %1", FilePath("/a//b", false), FileIO::OpenError, 13).ToString()),
              head + "\nFileIO:\n/a//b: Open error");
    EXPECT_EQ(Bytes(FileIO("No %1", FolderPath("/a//b", false), FileIO::RemoveError, 13).ToString()),
              head + "\nFileIO:\n/a//b/: Remove error");
    EXPECT_EQ(Bytes(FileIO("No %1", FilePath(), FileIO::ErrorKind(0xFFFFFFFF), 0).ToString()),
              head + "\nFileIO:\n:  Unknown error");
    const char* const kinds[] = {"File not found", "Open error",       "Read error",
                                 "Write error",    "Close error",      "Remove error",
                                 "Rename error",   "Unexpected error", " Unknown error"};
    for (unsigned int kind = 0; kind < 9; ++kind)
        EXPECT_EQ(Bytes(FileIO("", FilePath(), FileIO::ErrorKind(kind), 0).GetErrorDescription()),
                  kinds[kind]);
}

TEST(Exception, KeepsItsDataWhenCaughtAsItsBase) {
    try {
        DataStreamIO failure("No");
        failure.SetLocation("src/Kelbase/Util/ByteStream", 0x70000000CLL);
        throw DataStreamIO(failure);
    } catch (const Exception::Base& error) {
        EXPECT_EQ(error.GetLineNumber(), 12) << "the low 32 bits";
        EXPECT_EQ(Bytes(error.ToString()), "Base:\n\tNo\n\tsrc/Kelbase/Util/ByteStream (12): "
                                           "Thrown, GetLastError(): 0\n\nDataStreamIO\n");
    }
}

} // namespace
