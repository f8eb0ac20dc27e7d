#!/usr/bin/python3 -B
"""Converts one object file to a loadable bundle for 32-bit Intel macOS 10.6 and later.

usage: write_bundle.py OBJECT IMPORTS EXPORTS BUNDLE

IMPORTS is a file with the symbols that the bundle may import. EXPORTS is a file with the symbols that the bundle must
export: exactly these. An object file with an unsupported feature is rejected.
"""

import hashlib
import os
import struct
import sys

from bundle_layout import Layout
from load_commands import load_commands
from loader_tables import bind_opcodes, export_trie, rebase_opcodes, symbol_table
from macho_format import CPU_SUBTYPE_I386_ALL, CPU_TYPE_I386, HEADER, MH_BUNDLE, MH_DYLDLINK, MH_MAGIC, MH_TWOLEVEL, aligned
from macho_object import Object, Refused


def link_edit(layout):
    """Returns the tables after the segments as (file offset, bytes) by name, and the size of the file."""
    defined = {s.name: s for s in layout.program.symbols if s.name in layout.exports}
    addresses = {name: layout.moved(symbol.address) for name, symbol in defined.items()}
    symbols, texts = symbol_table(
        [(name, layout.section_number(defined[name]), addresses[name]) for name in layout.exports],
        [(name, layout.allowed[name]) for name in layout.imports],
    )
    tables = {
        "rebase": rebase_opcodes(layout.rebased, layout.text_size),
        "bind": bind_opcodes(layout.bound, layout.allowed, layout.text_size),
        "export": export_trie(addresses),
        "symbols": symbols,
        "indirect": layout.indirect_table(),
        "texts": texts,
    }
    placed, at = {}, layout.text_size + layout.data_file_size
    for name, table in tables.items():
        placed[name] = (at, table)
        at += aligned(len(table), 4)
    return placed, at


def image(layout, uuid=b""):
    tables, end = link_edit(layout)
    commands = load_commands(layout, tables, end, uuid)
    flags = MH_DYLDLINK | MH_TWOLEVEL
    header = HEADER.pack(MH_MAGIC, CPU_TYPE_I386, CPU_SUBTYPE_I386_ALL, MH_BUNDLE, len(commands), sum(map(len, commands)), flags)
    beginning = header + b"".join(commands)
    file = bytearray(end)
    file[: len(beginning)] = beginning
    for section in layout.text + layout.data:
        file[section.offset : section.offset + len(section.data)] = section.data
    for at, table in tables.values():
        file[at : at + len(table)] = table
    return bytes(file)


def bundle_file(layout):
    """Returns the file. Its identifier is a hash of its bytes, so that the same input gives the same file."""
    return image(layout, hashlib.md5(image(layout)).digest())


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    program, imports, exports, output = sys.argv[1:]
    try:
        with open(program, "rb") as file:
            bundle = bundle_file(Layout(Object(file.read()), imports, exports))
    except (Refused, OSError, struct.error) as reason:
        sys.exit(f"write_bundle: {program}: {reason}")
    with open(output + ".new", "wb") as file:
        file.write(bundle)
    os.chmod(output + ".new", 0o755)
    os.rename(output + ".new", output)


if __name__ == "__main__":
    main()
