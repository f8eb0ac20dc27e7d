#pragma once

/// Mac executables, read without loading them.

#include <string>
#include <string_view>
#include <vector>

namespace xcodhost {

/// What a file holds for one architecture.
struct MachOImage {
    std::string architecture; ///< "i386", "x86_64", "ppc", ..., or "processor 14".
    /// Names as a lookup takes them, without the underscore that the format puts before each; sorted. From
    /// the symbol table's external definitions and from the export trie, where there are such.
    std::vector<std::string> exports;
    std::string problem; ///< Why the image, or a part of it, cannot be read; empty when it can.
};

struct MachOFile {
    std::vector<MachOImage> images; ///< In the order of the file.
    std::string problem;            ///< Why its list of images cannot be read; empty when it can.
};

bool IsMachO(std::string_view bytes);

/// One image, or those of a universal file, in either byte order. Any bytes are safe: what points outside of
/// the file is told as a problem.
MachOFile ReadMachO(std::string_view bytes);

} // namespace xcodhost
