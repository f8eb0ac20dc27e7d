#include "ImageFile.h"

#include <algorithm>
#include <cstring>

namespace macplatform {

namespace {

constexpr std::uint32_t kPageSize = 4096;
constexpr std::uint32_t kLargestImage = 256u << 20;
constexpr std::uint32_t kIntel32 = 7, kBundleFile = 8, kMagic32 = 0xFEEDFACE;

// Load commands. A reader must reject an unknown command with the top bit,
// and may skip any other unknown command.
constexpr std::uint32_t kSegmentCommand = 1, kLoadLibrary = 12, kLoadWeakLibrary = 0x80000018,
                        kReexportLibrary = 0x8000001F, kDyldInfo = 0x22, kDyldInfoOnly = 0x80000022,
                        kMustBeUnderstood = 0x80000000;

std::uint32_t bigEndian(const ByteView& bytes, std::uint32_t place) {
    return __builtin_bswap32(bytes.U32(place));
}

/// Returns the 32-bit Intel part of a universal file, or all bytes of any other file.
std::string_view thinPart(std::string_view bytes) {
    const ByteView file(bytes);
    if (bytes.size() < 8 || bigEndian(file, 0) != 0xCAFEBABE) return bytes;
    for (std::uint32_t i = 0; i < std::min(bigEndian(file, 4), 30u); ++i) {
        if (bigEndian(file, 8 + 20 * i) != kIntel32) continue;
        return file.Part(bigEndian(file, 16 + 20 * i), bigEndian(file, 20 + 20 * i));
    }
    throw WrongMachOArchitecture("the file has no code for 32-bit Intel");
}

std::string nameAt(const ByteView& bytes, std::uint32_t place) {
    const std::string_view name = bytes.Part(place, 16);
    return std::string(name.substr(0, name.find('\0')));
}

class Reader {
public:
    explicit Reader(std::string_view bytes) : file(bytes) {}

    ImageFile Read() {
        if (file.Size() < 28 || file.U32(0) != kMagic32 || file.U32(4) != kIntel32)
            throw WrongMachOArchitecture("not a Mach-O file for 32-bit Intel");
        if (file.U32(12) != kBundleFile) throw UnsupportedMachO("not a loadable bundle");
        std::uint32_t place = 28;
        for (std::uint32_t left = file.U32(16); left > 0; --left) {
            const std::uint32_t size = file.U32(place + 4);
            if (size < 8) throw UnsupportedMachO("a load command has no valid size");
            ReadCommand(place, ByteView(file.Part(place, size)));
            place += size;
        }
        if (!hasTables) throw UnsupportedMachO("the file was linked for a system before 10.6");
        CheckSegments();
        return std::move(image);
    }

private:
    void ReadCommand(std::uint32_t place, const ByteView& command) {
        const std::uint32_t kind = command.U32(0);
        if (kind == kSegmentCommand) {
            ReadSegment(command);
        } else if (kind == kLoadLibrary || kind == kLoadWeakLibrary || kind == kReexportLibrary) {
            ++image.libraries;
        } else if (kind == kDyldInfo || kind == kDyldInfoOnly) {
            ReadTables(command);
        } else if (kind & kMustBeUnderstood) {
            throw UnsupportedMachO("unsupported load command " + std::to_string(kind & ~kMustBeUnderstood) +
                                   " at offset " + std::to_string(place));
        }
    }

    void ReadSegment(const ByteView& command) {
        Segment segment{nameAt(command, 8), command.U32(24), command.U32(28),
                        file.Part(command.U32(32), command.U32(36)), command.U32(44)};
        if (segment.contents.size() > segment.size || segment.size > kLargestImage ||
            segment.address % kPageSize != 0 || segment.size % kPageSize != 0) {
            throw UnsupportedMachO("the segment " + segment.name + " has an invalid size or address");
        }
        for (std::uint32_t i = 0; i < command.U32(48); ++i) {
            const std::uint32_t at = 56 + 68 * i;
            ImageSection section{segment.name, nameAt(command, at), command.U32(at + 32),
                                 command.U32(at + 36), command.U32(at + 56) & 0xFF};
            if (section.address < segment.address || section.size > segment.size ||
                section.address - segment.address > segment.size - section.size) {
                throw UnsupportedMachO("the section " + section.name + " is outside its segment");
            }
            image.sections.push_back(std::move(section));
        }
        image.segments.push_back(std::move(segment));
    }

    void ReadTables(const ByteView& command) {
        const auto table = [&](std::uint32_t at) { return file.Part(command.U32(at), command.U32(at + 4)); };
        image.rebases = table(8);
        image.binds = table(16);
        if (command.U32(28) != 0)
            throw UnsupportedMachO("unsupported weak binds: the file shares definitions with other images");
        image.lazyBinds = table(32);
        image.exports = table(40);
        hasTables = true;
    }

    void CheckSegments() {
        if (image.segments.empty()) throw UnsupportedMachO("the file has no segments");
        std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges;
        for (const Segment& segment : image.segments) {
            ranges.emplace_back(segment.address, std::uint64_t{segment.address} + segment.size);
        }
        std::sort(ranges.begin(), ranges.end());
        for (std::size_t i = 1; i < ranges.size(); ++i) {
            if (ranges[i].first < ranges[i - 1].second) throw UnsupportedMachO("the segments overlap");
        }
        if (ranges.back().second - ranges.front().first > kLargestImage)
            throw UnsupportedMachO("the segments need more than 256 MiB of memory");
        image.start = static_cast<std::uint32_t>(ranges.front().first);
        image.end = static_cast<std::uint32_t>(ranges.back().second);
    }

    ByteView file;
    ImageFile image;
    bool hasTables = false;
};

} // namespace

std::string_view ByteView::Part(std::uint32_t place, std::uint32_t size) const {
    if (place > bytes.size() || bytes.size() - place < size)
        throw UnsupportedMachO("the file is truncated or damaged");
    return bytes.substr(place, size);
}

std::uint32_t ByteView::U32(std::uint32_t place) const {
    std::uint32_t value = 0;
    std::memcpy(&value, Part(place, sizeof value).data(), sizeof value);
    return value;
}

std::string_view ByteView::Text(std::uint32_t place) const {
    const std::string_view rest = Part(place, Size() - std::min(place, Size()));
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos) throw UnsupportedMachO("a name has no end");
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
