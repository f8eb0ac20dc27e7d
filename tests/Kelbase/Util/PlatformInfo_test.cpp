#include <Kelbase/Util/PlatformInfo.h>

#include <Carbon/MacErrors.h>
#include <Kelbase/common/common_path.h>
#include <gtest/gtest.h>
#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>
#include <macplatform/ProcessIdentity.h>
#include <string>

namespace {

TEST(PlatformInfo, ReadsTheProcessNameAsUtf8) {
    const std::size_t before = macplatform::LiveObjectCount();
    macplatform::SetProcessName("Caf\xC3\xA9 Installer");
    EXPECT_STREQ(Util::GetCurrentProcessName().Latin1(), "Caf\xC3\xA9 Installer");
    macplatform::SetProcessName("Caf\x8E"); // the same name in Mac Roman is invalid UTF-8
    EXPECT_STREQ(Util::GetCurrentProcessName().Latin1(), "");
    macplatform::SetProcessName(std::string(255, 'n'));
    EXPECT_EQ(Util::GetCurrentProcessName().Latin1(), std::string(255, 'n'));
    macplatform::SetProcessName("");
    macplatform::InjectFault({"GetProcessInformation", procNotFound});
    EXPECT_STREQ(Util::GetCurrentProcessName().Latin1(), "");
    EXPECT_STRNE(Util::GetCurrentProcessName().Latin1(), "");
    EXPECT_EQ(macplatform::LiveObjectCount(), before);
}

TEST(PlatformInfo, CountsAtLeastOneProcessor) {
    macplatform::SetProcessorCount(6);
    EXPECT_EQ(Util::GetNumLogicalProcessors(), 6U);
    macplatform::SetProcessorCount(0);
    EXPECT_EQ(Util::GetNumLogicalProcessors(), 1U);
    macplatform::SetProcessorCount(std::nullopt);
    EXPECT_GE(Util::GetNumLogicalProcessors(), 1U);
}

TEST(PlatformInfo, MapFilesAndCallStacksAreNotSupported) {
    unsigned int frames[2] = {7, 7};
    Util::GetCallStack(2, frames);
    EXPECT_EQ(frames[0], 0U);
    EXPECT_EQ(frames[1], 7U);
    Util::GetCallStack(0, nullptr);

    std::map<unsigned int, Util::MapFileFunctionInfo> table;
    EXPECT_EQ(Util::MapFileFunctionInfo().size, 0u);
    EXPECT_FALSE(Util::ParseMapFile(table, FilePath("/a.map", false), 0));
    EXPECT_TRUE(table.empty());
    table[0x1000] = {"function", 16};
    Util::ReturnAddressInfo info = {"before", 7};
    EXPECT_FALSE(Util::MapFileLookupReturnAddress(info, 0x1004, table));
    EXPECT_STREQ(info.function.Latin1(), "before");
    EXPECT_EQ(info.offset, 7U);
    EXPECT_EQ(table.size(), 1U);
}

TEST(PlatformInfo, ReturnsZeroForTheHeapSize) {
    const std::string block(1000, 'x');
    EXPECT_EQ(Util::GetTotalHeapAllocatedBytes(), 0U);
}

} // namespace
