#include "MachOFile.h"

#include "MachOBytes.h"
#include "MachOExports.h"

#include <cstddef>
#include <cstdint>
#include <mach-o/fat.h>
#include <mach-o/loader.h>

namespace xcodhost {

namespace {

/// A Java class has the magic number of a universal file. Its version is in the place of the number of
/// architectures, and is at least 45.
constexpr std::uint32_t kMostArchitectures = 30;

struct Layout {
    std::uint32_t magic = 0; ///< 0: the file is not a Mach-O file.
    bool isBigEndian = false;

    bool IsThin() const { return magic == MH_MAGIC || magic == MH_MAGIC_64; }
};

Layout layoutOf(std::string_view bytes) {
    if (bytes.size() < sizeof(fat_header)) return {};
    for (const bool isBigEndian : {false, true}) {
        const MachOBytes file(bytes, isBigEndian);
        const Layout layout{file.U32(0), isBigEndian};
        if (layout.IsThin()) return layout;
        const bool isUniversal = layout.magic == FAT_MAGIC || layout.magic == FAT_MAGIC_64;
        if (isUniversal && file.Words<fat_header>(0).nfat_arch <= kMostArchitectures) return layout;
    }
    return {};
}

std::string architectureOf(std::uint32_t processor) {
    switch (processor) {
    case CPU_TYPE_I386: return "i386";
    case CPU_TYPE_X86_64: return "x86_64";
    case CPU_TYPE_ARM: return "arm";
    case CPU_TYPE_ARM64: return "arm64";
    case CPU_TYPE_POWERPC: return "ppc";
    case CPU_TYPE_POWERPC64: return "ppc64";
    default: return "processor " + std::to_string(processor);
    }
}

MachOImage readImage(std::string_view bytes, Layout layout) {
    const MachOBytes file(bytes, layout.isBigEndian);
    MachOImage image;
    image.architecture = architectureOf(file.U32(offsetof(mach_header, cputype)));
    try {
        image.exports = MachOExports(file, layout.magic == MH_MAGIC_64);
    } catch (const BrokenMachO& broken) {
        image.problem = broken.reason;
    }
    return image;
}

/// Returns the image of one entry in the list of a universal file.
MachOImage readListed(const MachOBytes& file, std::uint64_t entry, bool isWide) {
    const std::string listed = architectureOf(file.U32(entry + offsetof(fat_arch, cputype)));
    const std::uint64_t offset = isWide ? file.U64(entry + offsetof(fat_arch_64, offset))
                                        : file.U32(entry + offsetof(fat_arch, offset));
    const std::uint64_t size =
        isWide ? file.U64(entry + offsetof(fat_arch_64, size)) : file.U32(entry + offsetof(fat_arch, size));
    if (!file.Contains(offset, size)) return {listed, {}, "the image is outside the file"};
    const std::string_view image = file.Part(offset, size);
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
    const bool isWide = layout.magic == FAT_MAGIC_64;
    const std::uint64_t entrySize = isWide ? sizeof(fat_arch_64) : sizeof(fat_arch);
    try {
        const std::uint32_t count = list.Words<fat_header>(0).nfat_arch;
        for (std::uint32_t i = 0; i < count; ++i) {
            file.images.push_back(readListed(list, sizeof(fat_header) + i * entrySize, isWide));
        }
    } catch (const BrokenMachO&) {
        file.problem = "the list of images is cut off";
    }
    return file;
}

} // namespace xcodhost
