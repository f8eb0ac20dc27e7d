#pragma once

/// Declares functions that recognise an ELF file and read its exports without loading it.

#include <string>
#include <string_view>
#include <vector>

namespace xcodhost {

/// The architecture and the exports of a file.
struct ElfFile {
    std::string architecture;         ///< "x86_64", "i386", "arm64", or "machine 40 (32-bit)".
    std::vector<std::string> exports; ///< Defined global symbols of the dynamic table, sorted.
    std::string problem; ///< Why the file or its symbols cannot be read. Empty if they have been read.
};

/// Returns whether the bytes begin with the magic number of ELF.
bool IsElf(std::string_view bytes);

/// Reads an ELF file. Accepts any bytes and never throws: `problem` describes a malformed file.
ElfFile ReadElf(std::string_view bytes);

} // namespace xcodhost
