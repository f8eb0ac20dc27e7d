#!/usr/bin/python3 -B
"""Tests that the plug-in's executable for the Mac passes the structure check, and that the check finds each fault.

usage: structure_test.py EXECUTABLE
"""

import os
import struct
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "../../../platform/darwin"))

import check_bundle  # noqa: E402
from macholib.MachO import MachO  # noqa: E402

PATH = sys.argv.pop()
with open(PATH, "rb") as whole_file:
    WHOLE = whole_file.read()
with open(os.path.join(HERE, "../../../PostInstall/exports.txt")) as list_file:
    EXPORTS = sorted(list_file.read().split())
IMPORTS = check_bundle.read_imports(os.path.join(HERE, "../../../platform/darwin/imports.txt"))
SECTIONS = check_bundle.Executable(PATH).sections
TABLES = next(data for load, data, _ in MachO(PATH).headers[0].commands if load.get_cmd_name() == "LC_DYLD_INFO_ONLY")


def put(place, value):
    return WHOLE[:place] + value + WHOLE[place + len(value) :]


def swap(old, new, start=0):
    """Returns the file with all occurrences of `old` from the offset `start` replaced by bytes of the same length."""
    assert len(old) == len(new) and old in WHOLE[start:], old
    return WHOLE[:start] + WHOLE[start:].replace(old, new)


def symbol_entry(name):
    """Returns the offset of an export in the symbol table, which begins with the exports."""
    symbols = next(data for load, data, _ in MachO(PATH).headers[0].commands if load.get_cmd_name() == "LC_SYMTAB")
    return symbols.symoff + 12 * EXPORTS.index(name)


def stretched_unwind_entry():
    """Returns the file with the unwind entry of the first function enlarged beyond the start of the next function."""
    place = SECTIONS["__eh_frame"].offset
    while struct.unpack_from("<I", WHOLE, place + 4)[0] == 0:
        place += 4 + struct.unpack_from("<I", WHOLE, place)[0]
    return put(place + 12, struct.pack("<I", 0x1000))


# The offsets of the first bind's library and segment, of the import stubs, and the damaged files: each row has the file and
# a pattern of the expected fault.
LIBRARY = TABLES.bind_off + 1
SEGMENT = WHOLE.index(b"\0", LIBRARY) + 1
STUBS = SECTIONS["__symbol_stub"].offset
BROKEN = {
    "of another file type": (put(12, b"\x06"), "not a thin bundle"),
    "for another processor": (put(4, b"\x12"), "not a thin bundle|cannot be read"),
    "with imports without a library": (put(24, b"\x04"), "do not name their libraries"),
    "for another system": (swap(struct.pack("<3I", 0x24, 16, 0xA0600), struct.pack("<3I", 0x24, 16, 0xA0400)), "10.6"),
    "with a hidden export": (put(symbol_entry("_MyFactory") + 4, b"\x1e"), "symbol table exports"),
    "with another export in the trie": (put(WHOLE.index(b"MyFactory", TABLES.export_off), b"N"), "trie exports"),
    "with an export at another address": (put(symbol_entry("_PreInstall") + 8, b"\x00"), "different addresses"),
    "with an import that is not listed": (swap(b"_NewPtr\0", b"_NewPtx\0"), "_NewPtx from CoreServices is not allowed"),
    "with an import from another library": (put(LIBRARY, b"\x11"), "from libSystem is not allowed"),
    "with an import from any library": (put(LIBRARY, b"\x3e"), "is not allowed"),
    "with a bind of another kind": (put(TABLES.bind_off, b"\x53"), "is bound in|cannot be read"),
    "with a bind in the code": (put(SEGMENT, b"\x70"), "is bound in|cannot be read"),
    "with a missing bind": (put(TABLES.bind_off + TABLES.bind_size - 2, b"\x00"), "has no fix-up"),
    "with a fix-up in the code": (put(TABLES.rebase_off + 1, b"\x20"), "outside __DATA|cannot be read"),
    "with an absolute stub": (put(STUBS, b"\xff\x25\x00\x90\x00\x00" + b"\x90" * 6), "absolute address"),
    "with unwind entries that overlap": (stretched_unwind_entry(), "two unwind entries cover"),
    "with a library that is not listed": (swap(b"AppKit.framework/", b"AppKat.framework/"), "the libraries are"),
    "that is truncated": (WHOLE[: len(WHOLE) // 2], "[a-z]"),
    "that is empty": (b"", "[a-z]"),
}


def faults(image):
    with tempfile.NamedTemporaryFile(suffix=".bundle") as file:
        file.write(image)
        file.flush()
        return check_bundle.faults(file.name, IMPORTS, EXPORTS)


class Structure(unittest.TestCase):
    def test_of_the_built_file_is_correct(self):
        self.assertEqual(faults(WHOLE), [])

    def test_of_a_damaged_file_is_rejected(self):
        for name, (image, reason) in BROKEN.items():
            with self.subTest(name):
                self.assertNotEqual(image, WHOLE)
                self.assertRegex("\n".join(faults(image)), reason)


if __name__ == "__main__":
    unittest.main()
