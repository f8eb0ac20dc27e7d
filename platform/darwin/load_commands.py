"""Builds the load commands of a bundle: its segments, the loader's tables, its identifier and its libraries."""

import struct

PAGE = 4096
HEADER_SIZE = 28
STUB_SIZE = 12
SYMBOL_STUBS = 0x80000408
SYSTEM_VERSION = 10 << 16 | 6 << 8


def aligned(value, alignment):
    return (value + alignment - 1) // alignment * alignment


def commands_size(section_count, libraries):
    """Returns the size of all load commands: three segments with their sections, then the others in their order."""
    return 3 * 56 + 68 * section_count + 48 + 24 + 80 + 24 + 16 + sum(len(library_command(path)) for path in libraries)


def library_command(path):
    size = aligned(24 + len(path) + 1, 4)
    return struct.pack("<6I", 12, size, 24, 2, 0x10000, 0x10000) + path.encode().ljust(size - 24, b"\0")


def segment_command(name, address, size, offset, file_size, protection, sections):
    command = struct.pack("<II16s", 1, 56 + 68 * len(sections), name.encode())
    command += struct.pack("<8I", address, size, offset, file_size, 7, protection, len(sections), 0)
    for s in sections:
        stub_size = STUB_SIZE if s.flags == SYMBOL_STUBS else 0
        power = s.alignment.bit_length() - 1
        command += struct.pack("<16s16s", s.name.encode(), s.segment.encode())
        command += struct.pack("<9I", s.new, s.size, s.offset, power, 0, 0, s.flags, s.first_pointer, stub_size)
    return command


def load_commands(layout, tables, end, uuid):
    """Returns the load commands. `tables` maps a name to (file offset, bytes). `end` is the size of the file."""

    def place(name):
        at, table = tables[name]
        return (at, len(table)) if table else (0, 0)

    text, data = layout.text_size, layout.data_size
    link_edit = text + layout.data_file_size
    left = end - link_edit
    commands = segment_command("__TEXT", 0, text, 0, text, 5, layout.text)
    commands += segment_command("__DATA", text, data, text, layout.data_file_size, 3, layout.data)
    commands += segment_command("__LINKEDIT", text + data, aligned(left, PAGE), link_edit, left, 1, [])
    exports, imports, indirect = len(layout.exports), len(layout.imports), tables["indirect"]
    # LC_DYLD_INFO_ONLY. The zeros are the weak binds and the lazy binds: there are none.
    commands += struct.pack("<12I", 0x80000022, 48, *place("rebase"), *place("bind"), 0, 0, 0, 0, *place("export"))
    # LC_SYMTAB.
    commands += struct.pack("<6I", 2, 24, tables["symbols"][0], exports + imports, *place("texts"))
    # LC_DYSYMTAB: no local symbols, then the exports, then the imports; at its end the indirect symbols.
    commands += struct.pack("<8I24x", 11, 80, 0, 0, 0, exports, exports, imports)
    commands += struct.pack("<II16x", indirect[0], len(indirect[1]) // 4)
    # LC_UUID and LC_VERSION_MIN_MACOSX.
    commands += struct.pack("<II16s", 0x1B, 24, uuid) + struct.pack("<4I", 0x24, 16, SYSTEM_VERSION, SYSTEM_VERSION)
    return commands + b"".join(map(library_command, layout.libraries))
