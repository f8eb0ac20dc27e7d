#pragma once

/// What an executable's load commands say, checked: every place that is told here lies inside of the file, or
/// of the memory that the segments take.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace macplatform {

/// The file is not understood; `what()` completes "the file ...".
struct MachORefused : std::runtime_error {
    using std::runtime_error::runtime_error;
};
struct MachOForOthers : MachORefused {
    using MachORefused::MachORefused;
};

/// Bytes of a file or of memory; reading beyond them is refused.
class ByteView {
public:
    explicit ByteView(std::string_view part) : bytes(part) {}

    std::uint32_t Size() const { return static_cast<std::uint32_t>(bytes.size()); }
    std::uint8_t U8(std::uint32_t place) const { return static_cast<std::uint8_t>(Part(place, 1)[0]); }
    std::uint32_t U32(std::uint32_t place) const;
    std::string_view Part(std::uint32_t place, std::uint32_t size) const;
    std::string_view Text(std::uint32_t place) const; ///< Up to the byte 0.
    /// Numbers of seven bits a byte; each moves `place` behind itself.
    std::uint32_t Uleb(std::uint32_t& place) const;
    std::int32_t Sleb(std::uint32_t& place) const;

private:
    std::string_view bytes;
};

struct Segment {
    std::string name;
    std::uint32_t address = 0;
    std::uint32_t size = 0;       ///< In memory; a whole number of pages.
    std::string_view contents;    ///< What the file has of it; the rest is zero.
    std::uint32_t protection = 0; ///< 1 read, 2 write, 4 run.
};

struct ImageSection {
    std::string segment;
    std::string name;
    std::uint32_t address = 0;
    std::uint32_t size = 0;
    std::uint32_t type = 0;
};

struct ImageFile {
    std::vector<Segment> segments; ///< In the order that the loader's tables number them in.
    std::vector<ImageSection> sections;
    std::string_view rebases, binds, lazyBinds, exports; ///< The loader's tables.
    std::uint32_t libraries = 0;
    std::uint32_t start = 0, end = 0; ///< The addresses that the segments take.
};

/// A thin file, or the 32-bit Intel part of a universal one. The result points into `bytes`.
ImageFile ReadImageFile(std::string_view bytes);

} // namespace macplatform
