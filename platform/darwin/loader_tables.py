"""Builds the tables that the loader of macOS reads: rebases, binds, exports and symbols."""

import macho_format as macho
from macho_format import N_EXT, N_SECT, N_UNDF, NLIST

DATA_SEGMENT = 1  # the number of the segment __DATA, to which all pointers belong


def operation(opcode, operand=0):
    return bytes([opcode | operand])


def uleb(value):
    encoded = bytearray()
    while True:
        byte, value = value & 0x7F, value >> 7
        encoded.append(byte | (0x80 if value else 0))
        if not value:
            return bytes(encoded)


def rebase_opcodes(addresses, data):
    """Returns the table of pointers into the image. The segment __DATA begins at the address `data`.

    One operation covers all pointers of a run of adjacent pointers.
    """
    opcodes, left = operation(macho.REBASE_OPCODE_SET_TYPE_IMM, macho.REBASE_TYPE_POINTER), sorted(addresses)
    while left:
        run = 1
        while run < len(left) and left[run] == left[0] + 4 * run:
            run += 1
        opcodes += operation(macho.REBASE_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB, DATA_SEGMENT) + uleb(left[0] - data)
        opcodes += operation(macho.REBASE_OPCODE_DO_REBASE_ULEB_TIMES) + uleb(run)
        left = left[run:]
    return opcodes + operation(macho.REBASE_OPCODE_DONE)


def bind_opcodes(names, ordinals, data):
    """Returns the table of pointers to imports. `names` maps an address in __DATA to the name of its import."""
    opcodes, last = operation(macho.BIND_OPCODE_SET_TYPE_IMM, macho.BIND_TYPE_POINTER), None
    for address, name in sorted(names.items(), key=lambda item: (item[1], item[0])):
        if name != last:
            opcodes += operation(macho.BIND_OPCODE_SET_DYLIB_ORDINAL_IMM, ordinals[name])
            opcodes += operation(macho.BIND_OPCODE_SET_SYMBOL_TRAILING_FLAGS_IMM) + name.encode() + b"\0"
        opcodes += operation(macho.BIND_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB, DATA_SEGMENT) + uleb(address - data)
        opcodes += operation(macho.BIND_OPCODE_DO_BIND)
        last = name
    return opcodes + operation(macho.BIND_OPCODE_DONE)


class TrieNode:
    """A node of the export trie: the address that is exported under the name up to this node, and the branches."""

    def __init__(self, addresses):
        self.info = b"\0" + uleb(addresses[""]) if "" in addresses else b""
        self.branches = []
        for first in sorted({name[0] for name in addresses if name}):
            names = [name for name in addresses if name[:1] == first]
            shared = names[0]
            while not all(name.startswith(shared) for name in names):
                shared = shared[:-1]
            self.branches.append((shared, TrieNode({name[len(shared) :]: addresses[name] for name in names})))
        self.place = 0

    def all(self):
        return [self] + [node for _, branch in self.branches for node in branch.all()]

    def encoded(self):
        node = uleb(len(self.info)) + self.info + bytes([len(self.branches)])
        return node + b"".join(text.encode() + b"\0" + uleb(branch.place) for text, branch in self.branches)


def export_trie(addresses):
    nodes, places = TrieNode(addresses).all(), None
    while places != (places := [node.place for node in nodes]) or nodes[-1].place == 0:
        at = 0
        for node in nodes:
            node.place, at = at, at + len(node.encoded())
    return b"".join(node.encoded() for node in nodes)


def symbol_table(exports, imports):
    """Returns the entries of the symbol table and their string table.

    The exports come first as (name, section, address), then the imports as (name, library).
    """
    texts, entries = bytearray(b"\0"), bytearray()
    for name, kind, section, description, value in [(n, N_SECT | N_EXT, s, 0, a) for n, s, a in exports] + [
        (n, N_UNDF | N_EXT, 0, library << 8, 0) for n, library in imports
    ]:
        entries += NLIST.pack(len(texts), kind, section, description, value)
        texts += name.encode() + b"\0"
    return bytes(entries), bytes(texts)
