#pragma once

/// @file
/// Declares a function that reads and checks the load commands of a Mach-O file, and its result. Every range
/// in the result is inside the file, or inside the memory of the segments.

#include <cstdint>
#include <cstring>
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

/// A range of addresses or of offsets.
struct Range {
    std::uint32_t start = 0;
    std::uint32_t size = 0;

    std::uint64_t End() const { return std::uint64_t{start} + size; }
    bool Contains(const Range& other) const { return start <= other.start && other.End() <= End(); }
};

/// Reads bytes of a file or of memory. The object does not own the bytes. `place` is an offset from the first
/// byte. A read outside the bytes throws UnsupportedMachO.
class ByteView {
public:
    explicit ByteView(std::string_view part) : bytes(part) {}

    std::uint32_t Size() const { return static_cast<std::uint32_t>(bytes.size()); }
    std::uint8_t U8(std::uint32_t place) const { return static_cast<std::uint8_t>(Part(place, 1)[0]); }
    /// Returns the structure at a place, which need not be aligned.
    template <typename T>
    T Get(std::uint32_t place) const {
        T value;
        std::memcpy(&value, Part(place, sizeof value).data(), sizeof value);
        return value;
    }
    std::uint32_t U32(std::uint32_t place) const { return Get<std::uint32_t>(place); } ///< Little-endian.
    std::string_view Part(std::uint32_t place, std::uint32_t size) const;
    /// Returns the offset of the byte after a part.
    std::uint32_t End(std::uint32_t place, std::uint32_t size) const {
        return place + static_cast<std::uint32_t>(Part(place, size).size());
    }
    /// These functions read a string up to the next NUL, or a number in ULEB128 or SLEB128, and move `place`
    /// past it.
    std::string_view Text(std::uint32_t& place) const;
    std::uint32_t Uleb(std::uint32_t& place) const;
    std::int32_t Sleb(std::uint32_t& place) const;

private:
    std::string_view bytes;
};

/// A segment: a part of the file that the loader maps to memory as a whole.
struct Segment {
    std::string name;
    Range memory;              ///< Whole pages.
    std::string_view contents; ///< The first bytes of the segment, from the file. The rest is zero.
    int protection = 0;        ///< A sum of PROT_READ, PROT_WRITE and PROT_EXEC.
};

/// A section: a named part of a segment.
struct ImageSection {
    std::string name;
    Range memory;
    std::uint32_t type = 0; ///< A type of <mach-o/loader.h>: S_MOD_INIT_FUNC_POINTERS, for instance.
};

/// The parts of a Mach-O file that the loader needs.
struct ImageFile {
    std::vector<Segment> segments; ///< In the order of the file. The loader's tables use their indexes.
    std::vector<ImageSection> sections;
    std::string_view rebases, binds, lazyBinds, exports; ///< The loader's tables.
    std::uint32_t libraries = 0;                         ///< The number of libraries that the file loads.
    Range memory;                                        ///< From the first segment to the last.
};

/// Reads a file with code for one processor, or the 32-bit Intel part of a universal file. The result refers
/// to `bytes`, which must outlive the result. Throws UnsupportedMachO, and WrongMachOArchitecture if there is
/// no such part.
ImageFile ReadImageFile(std::string_view bytes);

} // namespace macplatform
