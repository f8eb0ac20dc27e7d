#pragma once

/// The processors that a Mach-O file names.

using cpu_type_t = int;

enum : cpu_type_t {
    CPU_ARCH_ABI64 = 0x01000000, ///< A bit of the processors with 64-bit addresses.
    CPU_TYPE_I386 = 7,
    CPU_TYPE_X86_64 = CPU_TYPE_I386 | CPU_ARCH_ABI64,
    CPU_TYPE_ARM = 12,
    CPU_TYPE_ARM64 = CPU_TYPE_ARM | CPU_ARCH_ABI64,
    CPU_TYPE_POWERPC = 18,
    CPU_TYPE_POWERPC64 = CPU_TYPE_POWERPC | CPU_ARCH_ABI64,
};
