"""Assigns the sections of an object file to addresses in a bundle and applies the relocations.

The object file contains the whole program. Each section therefore moves as a block, and only the imports remain to be
resolved by the loader. Calls of imports go through position-independent stubs. Every pointer that the loader must fill
is in __DATA.
"""

import struct

from load_commands import PAGE, STUB_SIZE, STUBS, commands_size
from macho_format import HEADER, INDIRECT_SYMBOL_LOCAL, S_COALESCED, S_NON_LAZY_SYMBOL_POINTERS, S_ZEROFILL, aligned
from macho_object import Refused, Section

UNWIND = S_COALESCED  # the type that the compiler gives to __eh_frame alone

# The encodings of pointers in unwind entries: DW_EH_PE_pcrel, and DW_EH_PE_indirect | DW_EH_PE_pcrel | DW_EH_PE_sdata4.
RELATIVE, RELATIVE_INDIRECT = 0x10, 0x80 | 0x10 | 0x0B


def read_imports(path):
    """Returns the libraries in order, and the number of its library (from 1) for each symbol."""
    libraries, ordinals = [], {}
    for line in open(path):
        if line.strip() and not line.startswith("#"):
            if line[0].isspace():
                ordinals[line.strip()] = len(libraries)
            else:
                libraries.append(line.strip())
    return libraries, ordinals


class Layout:
    def __init__(self, program, imports, exports):
        self.program = program
        self.libraries, self.allowed = read_imports(imports)
        self.exports = sorted(line.strip() for line in open(exports) if line.strip())
        self.rebased = set()  # the addresses of pointers into the bundle
        self.bound = {}  # the import that each pointer refers to, by the address of the pointer
        self.check_symbols()
        self.arrange()
        self.place_sections()
        self.relocate()
        self.fill_stubs()

    def check_symbols(self):
        defined = sorted(s.name for s in self.program.symbols if s.external and s.section >= 0)
        if defined != self.exports:
            raise Refused(f"the exports are {defined}, not {self.exports}")
        self.imports = sorted(s.name for s in self.program.symbols if s.section < 0)
        unknown = [name for name in self.imports if name not in self.allowed]
        if unknown:
            raise Refused("imports that imports.txt does not list: " + ", ".join(unknown))

    def arrange(self):
        """Chooses the segment of each section, adds the import stubs and their pointers, and sorts the sections."""
        kept = [s for s in self.program.sections if s.segment != "__LD" and s.size]
        called = {r.symbol for s in kept for r in s.relocations if r.symbol >= 0 and r.relative}
        self.called = sorted(name for name in (self.program.symbols[i].name for i in called) if name in self.imports)
        self.stubs = self.new_section("__TEXT", "__symbol_stub", STUB_SIZE, STUBS)
        self.slots = self.new_section("__DATA", "__stub_ptr", 4, S_NON_LAZY_SYMBOL_POINTERS)
        for section in kept:
            if section.type == S_NON_LAZY_SYMBOL_POINTERS:
                section.segment, section.name, section.alignment = "__DATA", "__nl_symbol_ptr", 4
            if section.segment not in ("__TEXT", "__DATA"):
                raise Refused(f"section {section.segment},{section.name}: unsupported segment")
        added = [s for s in (self.stubs, self.slots) if s.size]
        # __TEXT comes first. In each segment, unwind entries follow the other sections, and zero-fill sections are last.
        order = sorted(kept + added, key=lambda s: (s.segment == "__DATA", s.type == S_ZEROFILL, s.type == UNWIND))
        self.text = [s for s in order if s.segment == "__TEXT"]
        self.data = [s for s in order if s.segment == "__DATA"]

    def new_section(self, segment, name, entry, flags):
        size = entry * len(self.called)
        return Section(segment, name, 0, size, 4, flags, 0, bytearray(size))

    def place_sections(self):
        address = HEADER.size + commands_size(len(self.text + self.data), self.libraries)
        for section in self.text:
            address = section.new = aligned(address, max(section.alignment, 4))
            address += section.size
        self.text_size = aligned(address, PAGE)
        address = self.text_size
        for section in self.data:
            address = section.new = aligned(address, max(section.alignment, 4))
            address += section.size
        in_file = [s.new + s.size for s in self.data if s.type != S_ZEROFILL]
        self.data_file_size = aligned(max(in_file, default=self.text_size), PAGE) - self.text_size
        self.data_size = aligned(max(address, self.text_size + self.data_file_size), PAGE) - self.text_size
        for section in self.text + self.data:
            section.offset = 0 if section.type == S_ZEROFILL else section.new

    def moved(self, address):
        return address + self.program.section_at(address).shift

    def relocate(self):
        for section in self.text + self.data:
            for relocation in section.relocations:
                if relocation.is_difference:
                    shift = self.moved(relocation.value) - relocation.value
                    shift -= self.moved(relocation.subtracted) - relocation.subtracted
                    section.set_word(relocation.place, section.word(relocation.place) + shift)
                elif relocation.symbol >= 0:
                    self.resolve(section, relocation)
                else:
                    self.move_pointer(section, relocation)
            if section.type == UNWIND:
                self.move_unwind_entries(section)
            if section.type == S_NON_LAZY_SYMBOL_POINTERS and section is not self.slots:
                self.bind_pointers(section)

    def move_pointer(self, section, relocation):
        by_number = relocation.value < 0
        target = self.program.sections[relocation.section] if by_number else self.program.section_at(relocation.value)
        if target not in self.text + self.data:
            raise Refused(f"{section.name}+{relocation.place:#x}: a pointer to the omitted section {target.name}")
        back = section.shift if relocation.relative else 0
        section.set_word(relocation.place, section.word(relocation.place) + target.shift - back)
        if not relocation.relative:
            self.note_rebase(section, relocation.place)

    def note_rebase(self, section, place):
        if section.segment != "__DATA":
            raise Refused(f"{section.name}+{place:#x}: an absolute address outside __DATA")
        self.rebased.add(section.new + place)

    def resolve(self, section, relocation):
        """Resolves a field that refers to a symbol. The value of the field is relative to the symbol."""
        symbol = self.program.symbols[relocation.symbol]
        place, here = relocation.place, section.new + relocation.place
        addend = section.word(place)
        if relocation.relative:
            addend = (addend + section.old + place + 4) & 0xFFFFFFFF
            target = self.stub_of(symbol.name) if symbol.section < 0 else self.moved(symbol.address)
            section.set_word(place, target + addend - here - 4)
        elif symbol.section >= 0:
            section.set_word(place, self.moved(symbol.address) + addend)
            self.note_rebase(section, place)
        elif section.segment == "__DATA" and addend == 0:
            self.bound[here] = symbol.name
        else:
            raise Refused(f"{section.name}+{place:#x}: a pointer to {symbol.name} with an offset or outside __DATA")

    def stub_of(self, name):
        return self.stubs.new + STUB_SIZE * self.called.index(name)

    def bind_pointers(self, section):
        for i in range(section.size // 4):
            entry = self.program.indirect[section.first_pointer + i]
            if entry & INDIRECT_SYMBOL_LOCAL:
                if section.new + 4 * i not in self.rebased:
                    raise Refused(f"{section.name}: pointer {i} has no target")
            else:
                self.bound[section.new + 4 * i] = self.program.symbols[entry].name

    def move_unwind_entries(self, section):
        """Adjusts the unwind entries for the new addresses.

        The assembler writes no relocations for the function and the language data of an entry, because both are
        relative addresses.
        """
        done = {relocation.place for relocation in section.relocations}
        has_language_data = {}
        place = 0
        while place < section.size:
            length, common = section.word(place), section.word(place + 4)
            if length == 0 or length == 0xFFFFFFFF:
                raise Refused(f"{section.name}+{place:#x}: an unwind entry of unsupported length")
            if common == 0:
                has_language_data[place] = self.read_common_entry(section, place + 8)
            else:
                fields = [place + 8]
                if has_language_data[place + 4 - common]:
                    if section.data[place + 16] != 4:
                        raise Refused(f"{section.name}+{place:#x}: an unwind entry with unsupported data")
                    fields.append(place + 17)
                for at in fields:
                    if at not in done and section.word(at):
                        target = (section.word(at) + section.old + at) & 0xFFFFFFFF
                        section.set_word(at, self.moved(target) - section.new - at)
            place += length + 4

    @staticmethod
    def read_common_entry(section, place):
        """Returns whether the functions of a common entry have language data."""
        end = section.data.index(0, place + 1)
        letters = section.data[place + 1 : end].decode()
        # Skips one byte each: the code alignment, the data alignment, the return address register, and the length of
        # the augmentation data.
        at = end + 1 + 3 + 1
        for letter in letters[1:]:
            encoding = section.data[at]
            if encoding != {"P": RELATIVE_INDIRECT, "L": RELATIVE, "R": RELATIVE}.get(letter):
                raise Refused(f"{section.name}: an unwind entry with the unsupported encoding {letter} {encoding:#x}")
            at += 5 if letter == "P" else 1
        return "L" in letters

    def fill_stubs(self):
        for i, name in enumerate(self.called):
            slot, here = self.slots.new + 4 * i, self.stubs.new + STUB_SIZE * i
            # The stub: call the next instruction; pop %eax; jmp *slot(%eax).
            code = b"\xe8\0\0\0\0\x58\xff\xa0" + struct.pack("<i", slot - here - 5)
            self.stubs.data[STUB_SIZE * i : STUB_SIZE * (i + 1)] = code
            self.bound[slot] = name

    def section_number(self, symbol):
        return 1 + (self.text + self.data).index(self.program.sections[symbol.section])

    def indirect_table(self):
        """Returns the table with the symbol number of each stub and each pointer, section by section."""
        numbers = {name: len(self.exports) + i for i, name in enumerate(self.imports)}
        table = []
        for section in (s for s in self.text + self.data if s.type == S_NON_LAZY_SYMBOL_POINTERS or s is self.stubs):
            section.first_pointer = len(table)
            if section is self.stubs:
                table += [numbers[name] for name in self.called]
            else:
                places = range(section.new, section.new + section.size, 4)
                table += [numbers[self.bound[p]] if p in self.bound else INDIRECT_SYMBOL_LOCAL for p in places]
        return struct.pack(f"<{len(table)}I", *table)
