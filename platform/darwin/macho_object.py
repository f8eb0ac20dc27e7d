"""Reads an object file for 32-bit Intel macOS: its sections, symbols and relocations."""

import struct
from dataclasses import dataclass, field

REGULAR, ZERO_FILL, TEXTS, POINTERS, INITIALISERS, UNWIND = 0, 1, 2, 6, 9, 11
KNOWN_TYPES = {REGULAR, ZERO_FILL, TEXTS, 3, 4, POINTERS, INITIALISERS, UNWIND, 14}
UNDEFINED_LOCAL = 0x80000000


class Refused(Exception):
    """Raised for input that is not supported, with the reason."""


@dataclass
class Relocation:
    place: int  # the offset of the field in the section
    kind: int  # 0: a pointer; 2 and 4: a difference of two addresses
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
        return self.flags & 0xFF

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
        if struct.unpack_from("<IIII", data)[::3] != (0xFEEDFACE, 1) or self.u32(4) != 7:
            raise Refused("not an object file for 32-bit Intel macOS")
        self.sections, self.symbols, self.indirect = [], [], []
        place = 28
        for _ in range(self.u32(16)):
            kind, size = self.u32(place), self.u32(place + 4)
            read = {1: self.read_sections, 2: self.read_symbols, 11: self.read_indirect}.get(kind)
            if read:
                read(place)
            place += size

    def u32(self, place):
        return struct.unpack_from("<I", self.data, place)[0]

    def read_sections(self, command):
        for i in range(self.u32(command + 48)):
            at = command + 56 + 68 * i
            name, segment = (self.data[p : p + 16].rstrip(b"\0").decode() for p in (at, at + 16))
            old, size, offset, power, relocations, count, flags, first = struct.unpack_from("<8I", self.data, at + 32)
            if flags & 0xFF not in KNOWN_TYPES:
                raise Refused(f"section {segment},{name}: unsupported type {flags & 0xFF}")
            zero = flags & 0xFF == ZERO_FILL
            data = bytearray() if zero else bytearray(self.data[offset : offset + size])
            section = Section(segment, name, old, size, 1 << power, flags, first, data)
            section.relocations = list(self.read_relocations(relocations, count, f"{segment},{name}"))
            self.sections.append(section)

    def read_relocations(self, place, count, where):
        end = place + 8 * count
        while place < end:
            first, second = self.u32(place), self.u32(place + 4)
            place += 8
            scattered = first >> 31 != 0
            info = first >> 24 if scattered else second >> 24
            kind, length = (info & 15, info >> 4 & 3) if scattered else (info >> 4, info >> 1 & 3)
            relative = bool(info >> 6 & 1 if scattered else info & 1)
            made = Relocation(first & 0xFFFFFF if scattered else first, kind, relative)
            if length != 2 or kind not in (0, 2, 4) or (kind and (relative or not scattered)):
                raise Refused(f"{where}+{made.place:#x}: unsupported relocation {first:#x} {second:#x}")
            if scattered:
                made.value = second
            elif info & 8:
                made.symbol = second & 0xFFFFFF
            else:
                made.section = (second & 0xFFFFFF) - 1
            if kind:
                if place == end or self.u32(place) >> 24 & 0x8F != 0x81:
                    raise Refused(f"{where}+{made.place:#x}: the second half of a difference is missing")
                made.subtracted = self.u32(place + 4)
                place += 8
            yield made

    def read_symbols(self, command):
        symbols, count, texts = struct.unpack_from("<III", self.data, command + 8)
        for i in range(count):
            name, kind, section, _, address = struct.unpack_from("<IBBHI", self.data, symbols + 12 * i)
            end = self.data.index(b"\0", texts + name)
            text = self.data[texts + name : end].decode()
            if kind & 0xE0 == 0 and kind & 0x0E not in (0, 14):
                raise Refused(f"symbol {text}: unsupported kind {kind:#x}")
            external = kind & 0x11 == 1
            self.symbols.append(Symbol(text, section - 1 if kind & 0x0E else -1, address, external))

    def read_indirect(self, command):
        table, count = struct.unpack_from("<II", self.data, command + 56)
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
