// Tests of the command line: wrong usage, sample volumes, streams.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using testing::HasSubstr;

namespace {

TEST(Command, DeliversABlockFileUnchanged) {
    const TestBundle bundle;
    const TemporaryFolder files;
    std::string block(700, '\xEE');
    block.replace(0, 12, std::string("\x03\x00\x09\x00\x06\x00\x00\x00\x00\x00\x00\x80", 12));
    const HostTool run = RunHost({"run", bundle.Path(), "--block", files.Write("block", block)});
    EXPECT_THAT(run.out, HasSubstr("XCodMain(selector 3, message 9, product 6, language -286331154)\n"
                                   "  errorFlags 0x80000000 -> 0x00000001\n"));
    EXPECT_EQ(run.Verdict(), "FAIL error bit set by message 9 (0 changes)");
}

TEST(Command, ReportsAnOutputThatCannotBeWritten) {
    const TestBundle bundle;
    const HostTool full = RunHost({"run", bundle.Path(), "--product", "0"}, {}, {}, "/dev/full");
    EXPECT_EQ(full.ExitStatus(), 70);
    EXPECT_THAT(full.err, HasSubstr("No space left on device"));
    EXPECT_EQ(RunHost({"run", bundle.Path(), "--product", "0"}, {}, {}, "-").ExitStatus(), 0);
}

} // namespace
