#pragma once

/// The symbol table of a Mach-O file.

#include <cstdint>

/// The bits of `n_type`.
enum : std::uint8_t {
    N_STAB = 0xE0, ///< The entry is for debuggers.
    N_PEXT = 0x10, ///< The symbol was external before the file was linked.
    N_TYPE = 0x0E, ///< The kind of the definition, or N_UNDF.
    N_EXT = 0x01,  ///< The symbol is external.
};
enum : std::uint8_t { N_UNDF = 0 };

struct nlist {
    std::uint32_t n_strx; ///< The offset of the name in the string table.
    std::uint8_t n_type;
    std::uint8_t n_sect;
    std::int16_t n_desc;
    std::uint32_t n_value;
};
/// The entry of a file for a 64-bit processor. The other members are those of nlist.
struct nlist_64 {
    std::uint32_t n_strx;
    std::uint8_t n_type;
    std::uint8_t n_sect;
    std::uint16_t n_desc;
    std::uint64_t n_value;
};
static_assert(sizeof(nlist) == 12 && sizeof(nlist_64) == 16);
