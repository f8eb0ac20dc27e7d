"""Builds the load commands of a bundle: its segments, the loader's tables, its identifier and its libraries."""

from macho_format import (
    DYLD_INFO, DYLIB, DYSYMTAB, LC_DYLD_INFO_ONLY, LC_DYSYMTAB, LC_LOAD_DYLIB, LC_SEGMENT, LC_SYMTAB, LC_UUID,
    LC_VERSION_MIN_MACOSX, S_ATTR_PURE_INSTRUCTIONS, S_ATTR_SOME_INSTRUCTIONS, S_SYMBOL_STUBS, SECTION, SEGMENT, SYMTAB, UUID,
    VERSION_MIN, VM_PROT_EXECUTE, VM_PROT_READ, VM_PROT_WRITE, aligned,
)

PAGE = 4096
STUB_SIZE = 12
STUBS = S_SYMBOL_STUBS | S_ATTR_PURE_INSTRUCTIONS | S_ATTR_SOME_INSTRUCTIONS
SYSTEM_VERSION = 10 << 16 | 6 << 8
LIBRARY_DATE, LIBRARY_VERSION = 2, 1 << 16


def commands_size(section_count, libraries):
    """Returns the size of all load commands."""
    others = (DYLD_INFO, SYMTAB, DYSYMTAB, UUID, VERSION_MIN)
    own = 3 * SEGMENT.size + section_count * SECTION.size + sum(command.size for command in others)
    return own + sum(len(library_command(path)) for path in libraries)


def command(structure, number, *fields):
    return structure.pack(number, structure.size, *fields)


def library_command(path):
    size = aligned(DYLIB.size + len(path) + 1, 4)
    fields = DYLIB.pack(LC_LOAD_DYLIB, size, DYLIB.size, LIBRARY_DATE, LIBRARY_VERSION, LIBRARY_VERSION)
    return fields + path.encode().ljust(size - DYLIB.size, b"\0")


def segment_command(name, address, size, offset, file_size, protection, sections):
    everything = VM_PROT_READ | VM_PROT_WRITE | VM_PROT_EXECUTE
    packed = SEGMENT.pack(LC_SEGMENT, SEGMENT.size + SECTION.size * len(sections), name.encode(), address, size, offset,
                          file_size, everything, protection, len(sections), 0)
    for s in sections:
        stub_size = STUB_SIZE if s.flags == STUBS else 0
        power = s.alignment.bit_length() - 1
        packed += SECTION.pack(s.name.encode(), s.segment.encode(), s.new, s.size, s.offset, power, 0, 0, s.flags,
                               s.first_pointer, stub_size)
    return packed


def load_commands(layout, tables, end, uuid):
    """Returns the list of the load commands. `tables` maps a name to (file offset, bytes). `end` is the size of the file."""

    def place(name):
        at, table = tables[name]
        return (at, len(table)) if table else (0, 0)

    text, data = layout.text_size, layout.data_size
    link_edit = text + layout.data_file_size
    left = end - link_edit
    exports, imports, indirect = len(layout.exports), len(layout.imports), tables["indirect"]
    no_locals, no_weak_binds, no_lazy_binds = (0, 0), (0, 0), (0, 0)
    return [
        segment_command("__TEXT", 0, text, 0, text, VM_PROT_READ | VM_PROT_EXECUTE, layout.text),
        segment_command("__DATA", text, data, text, layout.data_file_size, VM_PROT_READ | VM_PROT_WRITE, layout.data),
        segment_command("__LINKEDIT", text + data, aligned(left, PAGE), link_edit, left, VM_PROT_READ, []),
        command(DYLD_INFO, LC_DYLD_INFO_ONLY, *place("rebase"), *place("bind"), *no_weak_binds, *no_lazy_binds,
                *place("export")),
        command(SYMTAB, LC_SYMTAB, tables["symbols"][0], exports + imports, *place("texts")),
        command(DYSYMTAB, LC_DYSYMTAB, *no_locals, 0, exports, exports, imports, indirect[0], len(indirect[1]) // 4),
        command(UUID, LC_UUID, uuid),
        command(VERSION_MIN, LC_VERSION_MIN_MACOSX, SYSTEM_VERSION, SYSTEM_VERSION),
        *map(library_command, layout.libraries),
    ]
