#pragma once

/// @file
/// Declares a function that reads and checks the load commands of a Mach-O file, and its result. Every range
/// in the result is inside the file, or inside the memory of the segments.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace macplatform {

/// Thrown for a file that is damaged or not supported. `what()` describes the fault without the path.
struct UnsupportedMachO : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// Thrown for a file without code for 32-bit Intel.
struct WrongMachOArchitecture : UnsupportedMachO {
    using UnsupportedMachO::UnsupportedMachO;
};

/// Reads bytes of a file or of memory. The object does not own the bytes. `place` is an offset from the first
/// byte. A read outside the bytes throws UnsupportedMachO.
class ByteView {
public:
    explicit ByteView(std::string_view part) : bytes(part) {}

    std::uint32_t Size() const { return static_cast<std::uint32_t>(bytes.size()); }
    std::uint8_t U8(std::uint32_t place) const { return static_cast<std::uint8_t>(Part(place, 1)[0]); }
    std::uint32_t U32(std::uint32_t place) const; ///< Little-endian.
    std::string_view Part(std::uint32_t place, std::uint32_t size) const;
    std::string_view Text(std::uint32_t place) const; ///< The string up to the next NUL.
    /// Both functions decode a LEB128 number (unsigned or signed) and move `place` to the byte after the
    /// number.
    std::uint32_t Uleb(std::uint32_t& place) const;
    std::int32_t Sleb(std::uint32_t& place) const;

private:
    std::string_view bytes;
};

/// A segment: a part of the file that the loader maps to memory as a whole.
struct Segment {
    std::string name;
    std::uint32_t address = 0;
    std::uint32_t size = 0;       ///< The size in memory: a whole number of pages.
    std::string_view contents;    ///< The first bytes of the segment, from the file. The rest is zero.
    std::uint32_t protection = 0; ///< A sum of 1 (read), 2 (write) and 4 (execute).
};

/// A section: a named part of a segment.
struct ImageSection {
    std::string segment;
    std::string name;
    std::uint32_t address = 0;
    std::uint32_t size = 0;
    std::uint32_t type = 0; ///< The type of the Mach-O section: 9 for pointers to initialisers, for instance.
};

/// The parts of a Mach-O file that the loader needs.
struct ImageFile {
    std::vector<Segment> segments; ///< In the order of the file. The loader's tables use their indexes.
    std::vector<ImageSection> sections;
    std::string_view rebases, binds, lazyBinds, exports; ///< The loader's tables.
    std::uint32_t libraries = 0;                         ///< The number of libraries that the file loads.
    std::uint32_t start = 0, end = 0;                    ///< The address range of the segments.
};

/// Reads a file with code for one processor, or the 32-bit Intel part of a universal file. The result refers
/// to `bytes`, which must outlive the result. Throws UnsupportedMachO, and WrongMachOArchitecture if there is
/// no such part.
ImageFile ReadImageFile(std::string_view bytes);

} // namespace macplatform
