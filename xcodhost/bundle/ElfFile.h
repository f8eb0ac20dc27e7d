#pragma once

/// Linux executables, read without loading them.

#include <string>
#include <string_view>
#include <vector>

namespace xcodhost {

struct ElfFile {
    std::string architecture;         ///< "x86_64", "i386", "arm64", or "machine 40 (32-bit)".
    std::vector<std::string> exports; ///< Defined global symbols of the dynamic table, sorted.
    std::string problem;              ///< Why the file, or its symbols, cannot be read; empty when they can.
};

bool IsElf(std::string_view bytes);

/// Any bytes are safe: what points outside of the file is told as a problem.
ElfFile ReadElf(std::string_view bytes);

} // namespace xcodhost
