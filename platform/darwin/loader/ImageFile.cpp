#include "ImageFile.h"

#include <algorithm>
#include <endian.h>
#include <mach-o/fat.h>
#include <mach-o/loader.h>
#include <utility>

namespace macplatform {

namespace {

constexpr std::uint32_t kPageSize = 4096;
constexpr std::uint32_t kLargestImage = 256u << 20;
constexpr std::uint32_t kMostImages = 30; ///< In a universal file.

/// Returns the 32-bit Intel part of a universal file, or all bytes of any other file.
std::string_view thinPart(std::string_view bytes) {
    const ByteView file(bytes);
    if (bytes.size() < sizeof(fat_header)) return bytes;
    const auto header = file.Get<fat_header>(0);
    if (be32toh(header.magic) != FAT_MAGIC) return bytes;
    std::uint32_t place = sizeof header;
    for (std::uint32_t left = std::min(be32toh(header.nfat_arch), kMostImages); left > 0; --left) {
        const auto image = file.Get<fat_arch>(place);
        if (be32toh(image.cputype) == CPU_TYPE_I386)
            return file.Part(be32toh(image.offset), be32toh(image.size));
        place += sizeof image;
    }
    throw WrongMachOArchitecture("the file has no code for 32-bit Intel");
}

std::string nameOf(const char (&field)[16]) { return std::string(field, strnlen(field, sizeof field)); }

class Reader {
public:
    explicit Reader(std::string_view bytes) : file(bytes) {}

    ImageFile Read() {
        const auto header = file.Size() < sizeof(mach_header) ? mach_header{} : file.Get<mach_header>(0);
        if (header.magic != MH_MAGIC || header.cputype != CPU_TYPE_I386)
            throw WrongMachOArchitecture("not a Mach-O file for 32-bit Intel");
        if (header.filetype != MH_BUNDLE) throw UnsupportedMachO("not a loadable bundle");
        std::uint32_t place = sizeof header;
        for (std::uint32_t left = header.ncmds; left > 0; --left) {
            const auto command = file.Get<load_command>(place);
            if (command.cmdsize < sizeof command) throw UnsupportedMachO("a load command has no valid size");
            ReadCommand(command.cmd, ByteView(file.Part(place, command.cmdsize)), place);
            place += command.cmdsize;
        }
        if (!hasTables) throw UnsupportedMachO("the file was linked for a system before 10.6");
        CheckSegments();
        return std::move(image);
    }

private:
    void ReadCommand(std::uint32_t kind, const ByteView& command, std::uint32_t place) {
        switch (kind) {
        case LC_SEGMENT: ReadSegment(command); break;
        case LC_LOAD_DYLIB:
        case LC_LOAD_WEAK_DYLIB:
        case LC_REEXPORT_DYLIB: ++image.libraries; break;
        case LC_DYLD_INFO:
        case LC_DYLD_INFO_ONLY: ReadTables(command.Get<dyld_info_command>(0)); break;
        default:
            if ((kind & LC_REQ_DYLD) != 0)
                throw UnsupportedMachO("unsupported load command " + std::to_string(kind & ~LC_REQ_DYLD) +
                                       " at offset " + std::to_string(place));
        }
    }

    void ReadSegment(const ByteView& command) {
        const auto header = command.Get<segment_command>(0);
        const Segment segment{nameOf(header.segname),
                              {header.vmaddr, header.vmsize},
                              file.Part(header.fileoff, header.filesize),
                              header.initprot};
        if (segment.contents.size() > header.vmsize || header.vmsize > kLargestImage ||
            header.vmaddr % kPageSize != 0 || header.vmsize % kPageSize != 0)
            throw UnsupportedMachO("the segment " + segment.name + " has an invalid size or address");
        for (std::uint32_t i = 0; i < header.nsects; ++i) {
            const auto part = command.Get<section>(sizeof header + i * sizeof(section));
            image.sections.push_back(
                {nameOf(part.sectname), {part.addr, part.size}, part.flags & SECTION_TYPE});
            if (!segment.memory.Contains(image.sections.back().memory))
                throw UnsupportedMachO("the section " + image.sections.back().name +
                                       " is outside its segment");
        }
        image.segments.push_back(segment);
    }

    void ReadTables(const dyld_info_command& tables) {
        if (tables.weak_bind_size != 0)
            throw UnsupportedMachO("unsupported weak binds: the file shares definitions with other images");
        image.rebases = file.Part(tables.rebase_off, tables.rebase_size);
        image.binds = file.Part(tables.bind_off, tables.bind_size);
        image.lazyBinds = file.Part(tables.lazy_bind_off, tables.lazy_bind_size);
        image.exports = file.Part(tables.export_off, tables.export_size);
        hasTables = true;
    }

    void CheckSegments() {
        if (image.segments.empty()) throw UnsupportedMachO("the file has no segments");
        std::vector<Range> ranges;
        for (const Segment& segment : image.segments) ranges.push_back(segment.memory);
        std::sort(ranges.begin(), ranges.end(), [](const Range& left, const Range& right) {
            return std::pair(left.start, left.size) < std::pair(right.start, right.size);
        });
        for (std::size_t i = 1; i < ranges.size(); ++i) {
            if (ranges[i].start < ranges[i - 1].End()) throw UnsupportedMachO("the segments overlap");
        }
        const std::uint32_t start = ranges.front().start;
        const std::uint64_t size = ranges.back().End() - start;
        if (size > kLargestImage) throw UnsupportedMachO("the segments need more than 256 MiB of memory");
        image.memory = {start, static_cast<std::uint32_t>(size)};
    }

    ByteView file;
    ImageFile image;
    bool hasTables = false;
};

} // namespace

std::string_view ByteView::Part(std::uint32_t place, std::uint32_t size) const {
    if (!Range{0, Size()}.Contains({place, size})) throw UnsupportedMachO("the file is truncated or damaged");
    return bytes.substr(place, size);
}

std::string_view ByteView::Text(std::uint32_t& place) const {
    const std::string_view rest = Part(place, Size() - std::min(place, Size()));
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos) throw UnsupportedMachO("a name has no end");
    place += static_cast<std::uint32_t>(end) + 1;
    return rest.substr(0, end);
}

std::uint32_t ByteView::Uleb(std::uint32_t& place) const {
    std::uint32_t value = 0;
    for (unsigned shift = 0; shift < 35; shift += 7) {
        const std::uint32_t byte = U8(place++);
        value |= (byte & 0x7F) << shift;
        if (byte < 0x80) return value;
    }
    throw UnsupportedMachO("has a number that is too large");
}

std::int32_t ByteView::Sleb(std::uint32_t& place) const {
    std::uint32_t value = 0;
    for (unsigned shift = 0; shift < 35; shift += 7) {
        const std::uint32_t byte = U8(place++);
        value |= (byte & 0x7F) << shift;
        if (byte >= 0x80) continue;
        if ((byte & 0x40) != 0 && shift + 7 < 32) value |= ~std::uint32_t{0} << (shift + 7);
        return static_cast<std::int32_t>(value);
    }
    throw UnsupportedMachO("has a number that is too large");
}

ImageFile ReadImageFile(std::string_view bytes) { return Reader(thinPart(bytes)).Read(); }

} // namespace macplatform
