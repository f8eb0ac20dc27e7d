#!/usr/bin/python3 -B
"""Checks the structure of the plug-in's executable for the Mac with third-party tools.

usage: check_bundle.py EXECUTABLE

Prints one line for each fault and exits with 1, or prints one line that the structure is in order. Each check covers a fault
that a linker has made in such a file without a message. Whether the system loads the file is not checked.
"""

import os
import re
import struct
import subprocess
import sys

from macholib.MachO import MachO
from macholib.mach_o import CPU_TYPE_NAMES, MH_BUNDLE, MH_TWOLEVEL, S_NON_LAZY_SYMBOL_POINTERS, SECTION_TYPE
from bundle_layout import read_imports

HERE = os.path.dirname(os.path.abspath(__file__))
LARGEST = 200 * 1024
SYSTEM_VERSION = 10 << 16 | 6 << 8


class Executable:
    def __init__(self, path):
        self.path = path
        self.headers = MachO(path).headers
        self.sections = {}
        self.commands = {}
        for command, data, rest in self.headers[0].commands:
            self.commands.setdefault(command.get_cmd_name(), []).append((data, rest))
            if command.get_cmd_name() == "LC_SEGMENT":
                self.sections.update({s.sectname.rstrip(b"\0").decode(): s for s in rest})

    def read(self, tool, *options):
        done = subprocess.run([tool, *options, self.path], capture_output=True, text=True, check=False)
        if done.returncode != 0 or "warning:" in done.stderr or "error:" in done.stderr:
            raise ValueError(f"{tool} {' '.join(options)}: {done.stderr.strip().splitlines()[-1:]}")
        return done.stdout.splitlines()

    def symbols(self, which):
        return sorted(line.split()[-1] for line in self.read("llvm-nm-14", "--extern-only", which) if line.strip())

    def table(self, kind):
        """Returns the rows of one of the loader's tables."""
        lines = self.read("llvm-objdump-14", "--macho", kind)
        start = next((i for i, line in enumerate(lines) if line.startswith("segment")), len(lines))
        return [line.split() for line in lines[start + 1 :] if line.strip()]


def check_header(file, _imports, _exports):
    header = file.headers[0].header
    if len(file.headers) != 1 or CPU_TYPE_NAMES.get(header.cputype) != "i386" or header.filetype != MH_BUNDLE:
        yield "not a thin bundle for 32-bit Intel"
    if header.flags & MH_TWOLEVEL == 0:
        yield "the imports do not name their libraries"
    version = file.commands.get("LC_VERSION_MIN_MACOSX", [(None, None)])[0][0]
    if not version or version.version != SYSTEM_VERSION:
        yield "the minimum system version is not 10.6"
    if os.path.getsize(file.path) >= LARGEST:
        yield f"larger than {LARGEST} bytes"


def check_exports(file, _imports, exports):
    if file.symbols("--defined-only") != exports:
        yield f"the symbol table exports {file.symbols('--defined-only')}"
    lines = file.read("llvm-objdump-14", "--macho", "--exports-trie")
    trie = sorted(line.split() for line in lines if line.startswith("0x"))
    if sorted(row[1] for row in trie) != exports:
        yield f"the export trie exports {[row[1] for row in trie]}"
    values = {line.split()[2]: int(line.split()[0], 16) for line in file.read("llvm-nm-14", "--defined-only")}
    if any(int(row[0], 16) != values.get(row[1]) for row in trie):
        yield "the export trie and the symbol table have different addresses for an export"


def check_imports(file, imports, _exports):
    libraries, ordinals = imports
    loaded = [rest.rstrip(b"\0").decode() for _, rest in file.commands.get("LC_LOAD_DYLIB", [])]
    if loaded != libraries:
        yield f"the libraries are {loaded}, not {libraries}"
    rows = file.table("--bind")
    for segment, section, address, kind, addend, library, name in rows:
        expected = libraries[ordinals[name] - 1].split("/")[-1].split(".")[0] if name in ordinals else None
        if library != expected:
            yield f"import {name} from {library} is not allowed"
        if segment != "__DATA" or kind != "pointer" or addend != "0":
            yield f"import {name} is bound in {segment},{section} at {address} as {kind} + {addend}"
    if sorted({row[6] for row in rows}) != file.symbols("--undefined-only"):
        yield "the symbol table and the binds import different names"
    for kind in ("--lazy-bind", "--weak-bind"):
        if file.table(kind):
            yield f"unexpected binds: {kind}"


def check_pointers(file, _imports, _exports):
    rebased = file.table("--rebase")
    if any(row[0] != "__DATA" or row[3] != "pointer" for row in rebased):
        yield "a fix-up is outside __DATA"
    fixed = {int(row[2], 16) for row in rebased + file.table("--bind")}
    for name, section in file.sections.items():
        if section.flags & SECTION_TYPE == S_NON_LAZY_SYMBOL_POINTERS:
            for address in range(section.addr, section.addr + section.size, 4):
                if address not in fixed:
                    yield f"the pointer at {address:#x} in {name} has no fix-up"


def check_code(file, _imports, _exports):
    for line in file.read("llvm-objdump-14", "-d", "--no-show-raw-insn", "--section=__symbol_stub"):
        if re.search(r"\b(jmp|call)l?\s+\*?(0x)?[0-9a-f]+$", line) and "calll" not in line:
            yield f"an import stub uses an absolute address: {line.strip()}"


def check_unwind_entries(file, _imports, _exports):
    text = file.sections["__text"]
    last = 0
    listing = "\n".join(file.read("llvm-dwarfdump-14", "--eh-frame"))
    ranges = re.findall(r"FDE .*pc=([0-9a-f]+)\.\.\.([0-9a-f]+)", listing)
    if not ranges:
        yield "there are no unwind entries"
    for start, end in sorted((int(a, 16) & 0xFFFFFFFF, int(b, 16) & 0xFFFFFFFF) for a, b in ranges):
        if not text.addr <= start < end <= text.addr + text.size:
            yield f"the unwind entry of {start:#x} to {end:#x} is outside the code"
        if start < last:
            yield f"two unwind entries cover {start:#x}"
        last = max(last, end)


CHECKS = (check_header, check_exports, check_imports, check_pointers, check_code, check_unwind_entries)


def faults(path, imports, exports):
    try:
        file = Executable(path)
    except (ValueError, OSError, struct.error) as reason:
        return [f"cannot be read: {reason}"]
    found = []
    for check in CHECKS:
        try:
            found += check(file, imports, exports)
        except (ValueError, KeyError) as reason:
            found.append(f"{check.__name__}: cannot be read: {reason}")
    return found


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(os.path.join(HERE, "../../PostInstall/exports.txt")) as file:
        exports = sorted(file.read().split())
    found = faults(sys.argv[1], read_imports(os.path.join(HERE, "imports.txt")), exports)
    for fault in found:
        print(f"check_bundle: {sys.argv[1]}: {fault}", file=sys.stderr)
    if found:
        sys.exit(1)
    print(f"{sys.argv[1]}: the structure is in order ({len(CHECKS)} checks)")


if __name__ == "__main__":
    main()
