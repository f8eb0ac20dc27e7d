#pragma once

/// Declares functions that recognise a Mach-O file and read its architectures and exports without loading it.

#include <string>
#include <string_view>
#include <vector>

namespace xcodhost {

/// The part of a file for one architecture.
struct MachOImage {
    std::string architecture; ///< "i386", "x86_64", "ppc", ..., or "processor 14".
    /// The names with which a function is looked up, sorted. These names do not have the underscore with
    /// which every name in the file begins. The names are read from the external definitions of the symbol
    /// table and from the export trie.
    std::vector<std::string> exports;
    std::string problem; ///< Why the image or a part of it cannot be read. Empty if it has been read.
};

/// The images of a file. A file that is not universal has one image.
struct MachOFile {
    std::vector<MachOImage> images; ///< In the order of the file.
    std::string problem;            ///< Why the list of images cannot be read. Empty if it has been read.
};

/// Returns whether the bytes begin with the magic number of a Mach-O file or of a universal file.
bool IsMachO(std::string_view bytes);

/// Reads a Mach-O file or a universal file, in either byte order. Accepts any bytes and never throws:
/// `problem` describes a malformed file.
MachOFile ReadMachO(std::string_view bytes);

} // namespace xcodhost
