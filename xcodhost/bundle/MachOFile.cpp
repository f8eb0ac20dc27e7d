#include "MachOFile.h"

#include "MachOBytes.h"
#include "MachOExports.h"

#include <cstdint>

namespace xcodhost {

namespace {

constexpr std::uint32_t kThin32 = 0xFEEDFACE;
constexpr std::uint32_t kThin64 = 0xFEEDFACF;
constexpr std::uint32_t kUniversal = 0xCAFEBABE;
constexpr std::uint32_t kUniversalWide = 0xCAFEBABF;
/// A Java class has the magic number of a universal file. Its version is in the place of the number of
/// architectures, and is at least 45.
constexpr std::uint32_t kMostArchitectures = 30;

struct Layout {
    std::uint32_t magic = 0; ///< 0: the file is not a Mach-O file.
    bool isBigEndian = false;

    bool IsThin() const { return magic == kThin32 || magic == kThin64; }
};

Layout layoutOf(std::string_view bytes) {
    if (bytes.size() < 8) return {};
    for (const bool isBigEndian : {false, true}) {
        const MachOBytes file(bytes, isBigEndian);
        const Layout layout{file.U32(0), isBigEndian};
        if (layout.IsThin()) return layout;
        const bool isUniversal = layout.magic == kUniversal || layout.magic == kUniversalWide;
        if (isUniversal && file.U32(4) <= kMostArchitectures) return layout;
    }
    return {};
}

std::string architectureOf(std::uint32_t processor) {
    switch (processor) {
    case 7:
        return "i386";
    case 0x01000007:
        return "x86_64";
    case 12:
        return "arm";
    case 0x0100000C:
        return "arm64";
    case 18:
        return "ppc";
    case 0x01000012:
        return "ppc64";
    default:
        return "processor " + std::to_string(processor);
    }
}

MachOImage readImage(std::string_view bytes, Layout layout) {
    const MachOBytes file(bytes, layout.isBigEndian);
    MachOImage image;
    image.architecture = architectureOf(file.U32(4));
    try {
        image.exports = MachOExports(file, layout.magic == kThin64);
    } catch (const BrokenMachO& broken) {
        image.problem = broken.reason;
    }
    return image;
}

/// Returns the image of one entry in the list of a universal file.
MachOImage readListed(std::string_view bytes, const MachOBytes& list, std::uint64_t entry, bool isWide) {
    const std::string listed = architectureOf(list.U32(entry));
    const std::uint64_t offset = isWide ? list.U64(entry + 8) : list.U32(entry + 8);
    const std::uint64_t size = isWide ? list.U64(entry + 16) : list.U32(entry + 12);
    if (offset > bytes.size() || bytes.size() - offset < size) {
        return {listed, {}, "the image is outside the file"};
    }
    const auto image = bytes.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
    const Layout layout = layoutOf(image);
    if (!layout.IsThin()) return {listed, {}, "the image is not a Mach-O file"};
    MachOImage found = readImage(image, layout);
    if (found.architecture != listed && found.problem.empty()) {
        found.problem = "the list of images names another architecture: " + listed;
    }
    return found;
}

} // namespace

bool IsMachO(std::string_view bytes) { return layoutOf(bytes).magic != 0; }

MachOFile ReadMachO(std::string_view bytes) {
    const Layout layout = layoutOf(bytes);
    if (layout.magic == 0) return {{}, "not a Mach-O file"};
    if (layout.IsThin()) return {{readImage(bytes, layout)}, {}};
    MachOFile file;
    const MachOBytes list(bytes, layout.isBigEndian);
    const bool isWide = layout.magic == kUniversalWide;
    const std::uint64_t entrySize = isWide ? 32 : 20;
    try {
        for (std::uint32_t i = 0; i < list.U32(4); ++i) {
            file.images.push_back(readListed(bytes, list, 8 + i * entrySize, isWide));
        }
    } catch (const BrokenMachO&) {
        file.problem = "the list of images is cut off";
    }
    return file;
}

} // namespace xcodhost
