#pragma once

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>

/// Returns the standard output of a shell command. The test fails if the command fails.
inline std::string Printed(const std::string& command) {
    std::string text;
    std::array<char, 4096> part{};
    std::FILE* const pipe = popen(command.c_str(), "r");
    for (std::size_t n; (n = fread(part.data(), 1, part.size(), pipe)) > 0;) text.append(part.data(), n);
    EXPECT_EQ(pclose(pipe), 0) << command;
    return text;
}
