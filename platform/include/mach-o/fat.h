#pragma once

/// A universal file: the list of its images, one for each processor. All numbers are big-endian.

#include <cstdint>
#include <mach/machine.h>

enum : std::uint32_t {
    FAT_MAGIC = 0xCAFEBABE,
    FAT_MAGIC_64 = 0xCAFEBABF, ///< The list consists of fat_arch_64.
};

struct fat_header {
    std::uint32_t magic;
    std::uint32_t nfat_arch;
};
struct fat_arch {
    cpu_type_t cputype;
    std::int32_t cpusubtype;
    std::uint32_t offset;
    std::uint32_t size;
    std::uint32_t align;
};
struct fat_arch_64 {
    cpu_type_t cputype;
    std::int32_t cpusubtype;
    std::uint64_t offset;
    std::uint64_t size;
    std::uint32_t align;
    std::uint32_t reserved;
};
static_assert(sizeof(fat_arch) == 20 && sizeof(fat_arch_64) == 32);
