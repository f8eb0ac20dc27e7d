#pragma once

/// The header, the load commands and the fix-up tables of a Mach-O file.

#include <cstdint>
#include <mach/machine.h>

/// The values of mach_header::magic and mach_header::filetype.
enum : std::uint32_t { MH_MAGIC = 0xFEEDFACE, MH_MAGIC_64 = 0xFEEDFACF };
enum : std::uint32_t { MH_BUNDLE = 8 };

struct mach_header {
    std::uint32_t magic;
    cpu_type_t cputype;
    std::int32_t cpusubtype;
    std::uint32_t filetype;
    std::uint32_t ncmds;
    std::uint32_t sizeofcmds;
    std::uint32_t flags;
};
struct mach_header_64 : mach_header {
    std::uint32_t reserved;
};
static_assert(sizeof(mach_header) == 28 && sizeof(mach_header_64) == 32);

/// The values of load_command::cmd.
enum : std::uint32_t {
    LC_REQ_DYLD = 0x80000000, ///< A bit: a loader that does not know the command must reject the file.
    LC_SEGMENT = 0x01,
    LC_SYMTAB = 0x02,
    LC_LOAD_DYLIB = 0x0C,
    LC_LOAD_WEAK_DYLIB = 0x18 | LC_REQ_DYLD,
    LC_REEXPORT_DYLIB = 0x1F | LC_REQ_DYLD,
    LC_DYLD_INFO = 0x22,
    LC_DYLD_INFO_ONLY = 0x22 | LC_REQ_DYLD,
    LC_DYLD_EXPORTS_TRIE = 0x33 | LC_REQ_DYLD,
};

struct load_command {
    std::uint32_t cmd;
    std::uint32_t cmdsize;
};
/// Its sections follow the command.
struct segment_command : load_command {
    char segname[16];
    std::uint32_t vmaddr;
    std::uint32_t vmsize;
    std::uint32_t fileoff;
    std::uint32_t filesize;
    std::int32_t maxprot;
    std::int32_t initprot; ///< A sum of 1 (read), 2 (write) and 4 (execute).
    std::uint32_t nsects;
    std::uint32_t flags;
};
struct section {
    char sectname[16];
    char segname[16];
    std::uint32_t addr;
    std::uint32_t size;
    std::uint32_t offset;
    std::uint32_t align;
    std::uint32_t reloff;
    std::uint32_t nreloc;
    std::uint32_t flags;
    std::uint32_t reserved1;
    std::uint32_t reserved2;
};
struct symtab_command : load_command {
    std::uint32_t symoff;
    std::uint32_t nsyms;
    std::uint32_t stroff;
    std::uint32_t strsize;
};
struct dyld_info_command : load_command {
    std::uint32_t rebase_off;
    std::uint32_t rebase_size;
    std::uint32_t bind_off;
    std::uint32_t bind_size;
    std::uint32_t weak_bind_off;
    std::uint32_t weak_bind_size;
    std::uint32_t lazy_bind_off;
    std::uint32_t lazy_bind_size;
    std::uint32_t export_off;
    std::uint32_t export_size;
};
struct linkedit_data_command : load_command {
    std::uint32_t dataoff;
    std::uint32_t datasize;
};
static_assert(sizeof(segment_command) == 56 && sizeof(section) == 68 && sizeof(symtab_command) == 24);
static_assert(sizeof(dyld_info_command) == 48 && sizeof(linkedit_data_command) == 16);

/// The bits of section::flags with the type, and one of the types.
enum : std::uint32_t { SECTION_TYPE = 0xFF };
enum : std::uint32_t { S_MOD_INIT_FUNC_POINTERS = 0x09 };

/// The operations of the table of rebases. Numbers in ULEB128 follow an operation whose name has ULEB.
enum : std::uint8_t {
    REBASE_OPCODE_MASK = 0xF0,
    REBASE_IMMEDIATE_MASK = 0x0F,
    REBASE_OPCODE_DONE = 0x00,
    REBASE_OPCODE_SET_TYPE_IMM = 0x10,
    REBASE_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB = 0x20,
    REBASE_OPCODE_ADD_ADDR_ULEB = 0x30,
    REBASE_OPCODE_ADD_ADDR_IMM_SCALED = 0x40,
    REBASE_OPCODE_DO_REBASE_IMM_TIMES = 0x50,
    REBASE_OPCODE_DO_REBASE_ULEB_TIMES = 0x60,
    REBASE_OPCODE_DO_REBASE_ADD_ADDR_ULEB = 0x70,
    REBASE_OPCODE_DO_REBASE_ULEB_TIMES_SKIPPING_ULEB = 0x80,
};
enum : std::uint8_t { REBASE_TYPE_POINTER = 1 };

/// The operations of the tables of binds.
enum : std::uint8_t {
    BIND_OPCODE_MASK = 0xF0,
    BIND_IMMEDIATE_MASK = 0x0F,
    BIND_OPCODE_DONE = 0x00,
    BIND_OPCODE_SET_DYLIB_ORDINAL_IMM = 0x10,
    BIND_OPCODE_SET_DYLIB_ORDINAL_ULEB = 0x20,
    BIND_OPCODE_SET_SYMBOL_TRAILING_FLAGS_IMM = 0x40,
    BIND_OPCODE_SET_TYPE_IMM = 0x50,
    BIND_OPCODE_SET_ADDEND_SLEB = 0x60,
    BIND_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB = 0x70,
    BIND_OPCODE_ADD_ADDR_ULEB = 0x80,
    BIND_OPCODE_DO_BIND = 0x90,
    BIND_OPCODE_DO_BIND_ADD_ADDR_ULEB = 0xA0,
    BIND_OPCODE_DO_BIND_ADD_ADDR_IMM_SCALED = 0xB0,
    BIND_OPCODE_DO_BIND_ULEB_TIMES_SKIPPING_ULEB = 0xC0,
};
enum : std::uint8_t { BIND_TYPE_POINTER = 1 };

/// The flags of an export in the export trie: a definition of this file that is no thread-local variable.
enum : std::uint8_t { EXPORT_SYMBOL_FLAGS_KIND_REGULAR = 0 };
