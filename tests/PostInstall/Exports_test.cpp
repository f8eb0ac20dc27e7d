#include <array>
#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// The last word of each line that a command prints.
std::vector<std::string> lastWords(const std::string& command) {
    std::vector<std::string> words;
    FILE* const pipe = popen(command.c_str(), "r");
    if (!pipe) return words;
    std::array<char, 4096> line;
    while (std::fgets(line.data(), line.size(), pipe)) {
        std::string text = line.data();
        if (!text.empty() && text.back() == '\n') text.pop_back();
        const std::size_t blank = text.find_last_of(' ');
        words.push_back(blank == std::string::npos ? text : text.substr(blank + 1));
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return words;
}

TEST(Exports, AreTheThreeThatTheInstallerLooksUp) {
    EXPECT_THAT(lastWords(NM " -D --defined-only '" PLUGIN_EXECUTABLE "'"),
                testing::UnorderedElementsAre("MyFactory", "PreInstall", "PostInstall"));
}

TEST(Imports, HoldNoThreadsAndNoLocks) {
    for (const std::string file : {"-D '" PLUGIN_EXECUTABLE "'", "'" LIBRARY_ARCHIVE "'"}) {
        const auto imports = lastWords(NM " --undefined-only " + file);
        EXPECT_THAT(imports, testing::Contains(testing::HasSubstr("CFStringCreateWithCString"))) << file;
        EXPECT_THAT(imports,
                    testing::Not(testing::Contains(testing::ContainsRegex(
                        "pthread_|thrd_|mtx_|__cxa_guard|std.*(thread|mutex)|sem_(init|wait)|futex"))))
            << file;
    }
}

TEST(Imports, ComeFromThePlatformAndTheLanguage) {
    const auto libraries = lastWords(READELF " -d '" PLUGIN_EXECUTABLE "' | grep NEEDED");
    EXPECT_THAT(libraries, testing::Contains("[libmacplatform.so.1]"));
    EXPECT_THAT(libraries,
                testing::Each(testing::ContainsRegex(
                    "libmacplatform|libstdc\\+\\+|libc\\.so|libm\\.so|libgcc_s|ld-linux|libasan|libubsan")));
}

} // namespace
