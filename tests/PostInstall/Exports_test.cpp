#include "support/CommandOutput.h"

#include <gmock/gmock.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// Returns the last word of each line that the command prints.
std::vector<std::string> lastWords(const std::string& command) {
    std::vector<std::string> words;
    std::istringstream lines(Printed(command));
    for (std::string line; std::getline(lines, line);)
        words.push_back(line.substr(line.find_last_of(' ') + 1));
    return words;
}

TEST(Exports, AreTheThreeFunctionsOfTheInstaller) {
    EXPECT_THAT(lastWords(NM " -D --defined-only '" PLUGIN_EXECUTABLE "'"),
                testing::UnorderedElementsAre("MyFactory", "PreInstall", "PostInstall"));
}

TEST(Imports, ContainNoThreadsAndNoLocks) {
    for (const std::string files : {PLUGIN_OBJECTS, LIBRARY_ARCHIVE}) {
        const auto imports = lastWords(NM " --undefined-only " + files);
        EXPECT_THAT(imports, testing::Contains(testing::HasSubstr("CFString"))) << files;
        EXPECT_THAT(imports,
                    testing::Not(testing::Contains(testing::ContainsRegex(
                        "pthread_|thrd_|mtx_|__cxa_guard|std.*(thread|mutex)|sem_(init|wait)|futex"))))
            << files;
    }
}

TEST(Imports, ComeOnlyFromThePlatformAndTheRuntime) {
    const auto libraries = lastWords(READELF " -d '" PLUGIN_EXECUTABLE "' | grep NEEDED");
    EXPECT_THAT(libraries, testing::Contains("[libmacplatform.so.1]"));
    EXPECT_THAT(libraries,
                testing::Each(testing::ContainsRegex(
                    "libmacplatform|libstdc\\+\\+|libc\\.so|libm\\.so|libgcc_s|ld-linux|libasan|libubsan")));
}

} // namespace
