// Tests that a run reports the faults of a bundle and is not affected by them.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gtest/gtest.h>

namespace {

std::string call(const std::string& product, const std::string& function = "XCodMain") {
    return function + "(selector 1000, message 2 (pre-install), product " + product + ", language 0)";
}

std::string crashIn(const std::string& place) {
    return "FAIL crashed in " + place + ": SIGSEGV (Segmentation fault)";
}

std::string escapeOf(const std::string& exception, const std::string& place) {
    return "FAIL exception " + exception + " escaped from " + place;
}

struct RunFault {
    const char* name;
    const char* options;
    int status;
    std::string verdict;
};

class ARunFault : public testing::TestWithParam<RunFault> {};

TEST_P(ARunFault, IsReportedWithTheCallAndTheStatus) {
    const TestBundle bundle;
    const TemporaryFolder scratch;
    const HostTool run = RunHostWith({"run", bundle.Path()}, GetParam().options, scratch.Path());
    EXPECT_EQ(run.Verdict(), GetParam().verdict) << run.out << run.err;
    EXPECT_EQ(run.ExitStatus(), GetParam().status);
    EXPECT_TRUE(std::filesystem::is_empty(scratch.Path())) << "the scratch volume still exists";
}

const RunFault kFaults[] = {
    // name, options, exit status, verdict
    {"NoFault", "--product 0", 0, "DONE 0 changes"},
    {"Crash", "--product 1", 4, crashIn(call("1"))},
    {"CrashWhenDirect", "--product 1 --direct --event pre", 4, crashIn(call("1", "PreInstall"))},
    {"Hang", "--product 2 --timeout 0.2", 5, "FAIL no return within 0.2 s in " + call("2")},
    {"Exception", "--product 3", 4, escapeOf("std::runtime_error \"no good\"", call("3"))},
    {"ThrownNumber", "--product 4", 4, escapeOf("int", call("4"))},
    {"Exit", "--product 5", 4, "FAIL ended the process in " + call("5") + ": exit status 7"},
    {"ErrorBit", "--product 6", 1, "FAIL error bit set by pre-install (0 changes)"},
    {"LaterErrorBit", "--product 6 --event post", 1, "FAIL error bit set by post-install (0 changes)"},
    {"ProcessLeftBehind", "--product 9", 0, "DONE 0 changes"},
    {"AlertsWithoutEnd", "--product 13 --timeout 0.2", 5, "FAIL no return within 0.2 s in " + call("13")},
    {"StandardInputIsEmpty", "--product 17", 0, "DONE 0 changes"},
};

INSTANTIATE_TEST_SUITE_P(Run, ARunFault, testing::ValuesIn(kFaults),
                         [](const auto& row) { return row.param.name; });

} // namespace
