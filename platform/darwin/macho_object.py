"""Reads an object file for 32-bit Intel macOS: its sections, symbols and relocations."""

import struct
from dataclasses import dataclass, field

import macho_format as macho
from macho_format import DYSYMTAB, HEADER, NLIST, SECTION, SEGMENT, SYMTAB, text

KNOWN_TYPES = {
    macho.S_REGULAR, macho.S_ZEROFILL, macho.S_CSTRING_LITERALS, macho.S_4BYTE_LITERALS, macho.S_8BYTE_LITERALS,
    macho.S_16BYTE_LITERALS, macho.S_NON_LAZY_SYMBOL_POINTERS, macho.S_MOD_INIT_FUNC_POINTERS, macho.S_COALESCED,
}


class Refused(Exception):
    """Raised for input that is not supported, with the reason."""


@dataclass
class Relocation:
    place: int  # the offset of the field in the section
    is_difference: bool  # the value is a difference of two addresses, not a pointer
    relative: bool  # the value is relative to the end of the field
    symbol: int = -1  # the number of the symbol, if the relocation names one
    section: int = -1  # the number of the target's section, from 0
    value: int = -1  # an address in the target's section of the object
    subtracted: int = -1  # an address in the section of the subtracted address


@dataclass
class Section:
    segment: str
    name: str
    old: int  # the address in the object
    size: int
    alignment: int
    flags: int
    first_pointer: int  # for pointers: the first entry in the table of indirect symbols
    data: bytearray
    relocations: list = field(default_factory=list)
    new: int = 0  # the address in the bundle
    offset: int = 0  # the offset in the bundle's file

    @property
    def type(self):
        return self.flags & macho.SECTION_TYPE

    @property
    def shift(self):
        return self.new - self.old

    def word(self, place):
        return struct.unpack_from("<I", self.data, place)[0]

    def set_word(self, place, value):
        struct.pack_into("<I", self.data, place, value & 0xFFFFFFFF)


@dataclass
class Symbol:
    name: str
    section: int  # from 0; -1 for an undefined symbol
    address: int
    external: bool


class Object:
    def __init__(self, data):
        self.data = data
        magic, processor, _, kind, count, _, _ = HEADER.unpack_from(data)
        if (magic, processor, kind) != (macho.MH_MAGIC, macho.CPU_TYPE_I386, macho.MH_OBJECT):
            raise Refused("not an object file for 32-bit Intel macOS")
        self.sections, self.symbols, self.indirect = [], [], []
        readers = {
            macho.LC_SEGMENT: self.read_sections,
            macho.LC_SYMTAB: self.read_symbols,
            macho.LC_DYSYMTAB: self.read_indirect,
        }
        place = HEADER.size
        for _ in range(count):
            command, size = struct.unpack_from("<II", data, place)
            if command in readers:
                readers[command](place)
            place += size

    def read_sections(self, place):
        count = SEGMENT.unpack_from(self.data, place)[-2]
        for i in range(count):
            name, segment, old, size, offset, power, relocations, relocation_count, flags, first, _ = SECTION.unpack_from(
                self.data, place + SEGMENT.size + i * SECTION.size)
            section = Section(text(segment), text(name), old, size, 1 << power, flags, first, bytearray())
            where = f"{section.segment},{section.name}"
            if section.type not in KNOWN_TYPES:
                raise Refused(f"section {where}: unsupported type {section.type}")
            if section.type != macho.S_ZEROFILL:
                section.data += self.data[offset : offset + size]
            section.relocations = list(self.read_relocations(relocations, relocation_count, where))
            self.sections.append(section)

    def read_relocations(self, place, count, where):
        """Yields the relocations. The fields of an entry are bits of its two words, which have two arrangements."""
        words = iter(struct.unpack_from(f"<{2 * count}I", self.data, place))
        entries = zip(words, words)
        for first, second in entries:
            scattered = first & macho.R_SCATTERED
            if scattered:
                address, kind, length, relative = first & 0xFFFFFF, first >> 24 & 15, first >> 28 & 3, first >> 30 & 1
            else:
                address, kind, length, relative = first, second >> 28, second >> 25 & 3, second >> 24 & 1
            is_difference = kind in (macho.GENERIC_RELOC_SECTDIFF, macho.GENERIC_RELOC_LOCAL_SECTDIFF)
            known = (scattered and not relative) if is_difference else kind == macho.GENERIC_RELOC_VANILLA
            if not known or length != macho.R_LENGTH_4:
                raise Refused(f"{where}+{address:#x}: unsupported relocation {first:#x} {second:#x}")
            made = Relocation(address, is_difference, bool(relative))
            if scattered:
                made.value = second
            elif second & macho.R_EXTERN:
                made.symbol = second & 0xFFFFFF
            else:
                made.section = (second & 0xFFFFFF) - 1
            if is_difference:
                pair, made.subtracted = next(entries, (0, 0))
                if not pair & macho.R_SCATTERED or pair >> 24 & 15 != macho.GENERIC_RELOC_PAIR:
                    raise Refused(f"{where}+{address:#x}: the second half of a difference is missing")
            yield made

    def read_symbols(self, place):
        _, _, symbols, count, texts, _ = SYMTAB.unpack_from(self.data, place)
        for i in range(count):
            name, kind, section, _, address = NLIST.unpack_from(self.data, symbols + i * NLIST.size)
            end = self.data.index(b"\0", texts + name)
            symbol = Symbol(text(self.data[texts + name : end]), -1, address, kind & (macho.N_PEXT | macho.N_EXT) == macho.N_EXT)
            definition = kind & macho.N_TYPE
            if not kind & macho.N_STAB and definition not in (macho.N_UNDF, macho.N_SECT):
                raise Refused(f"symbol {symbol.name}: unsupported kind {kind:#x}")
            if definition != macho.N_UNDF:
                symbol.section = section - 1
            self.symbols.append(symbol)

    def read_indirect(self, place):
        table, count = DYSYMTAB.unpack_from(self.data, place)[-2:]
        self.indirect = list(struct.unpack_from(f"<{count}I", self.data, table))

    def section_at(self, address):
        """Returns the section of an address of the object. The end of a section belongs to it if no section begins there."""
        for section in self.sections:
            if section.old <= address < section.old + section.size:
                return section
        for section in self.sections:
            if address == section.old + section.size:
                return section
        raise Refused(f"address {address:#x}: not in any section")
