"""Builds the tables that the loader of macOS reads: rebases, binds, exports and symbols."""

import struct


def uleb(value):
    encoded = bytearray()
    while True:
        byte, value = value & 0x7F, value >> 7
        encoded.append(byte | (0x80 if value else 0))
        if not value:
            return bytes(encoded)


def rebase_opcodes(addresses, data):
    """Returns the table of pointers into the image. All are in segment 1, which begins at the address `data`.

    One operation covers all pointers of a run of adjacent pointers.
    """
    opcodes, left = bytearray(b"\x11"), sorted(addresses)
    while left:
        run = 1
        while run < len(left) and left[run] == left[0] + 4 * run:
            run += 1
        opcodes += b"\x21" + uleb(left[0] - data) + b"\x60" + uleb(run)
        left = left[run:]
    return bytes(opcodes) + b"\0"


def bind_opcodes(names, ordinals, data):
    """Returns the table of pointers to imports. `names` maps an address in segment 1 to the name of its import."""
    opcodes, last = bytearray(b"\x51"), None
    for address, name in sorted(names.items(), key=lambda item: (item[1], item[0])):
        if name != last:
            opcodes += bytes([0x10 | ordinals[name], 0x40]) + name.encode() + b"\0"
        opcodes += b"\x71" + uleb(address - data) + b"\x90"
        last = name
    return bytes(opcodes) + b"\0"


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
    for name, kind, section, description, value in [(n, 0x0F, s, 0, a) for n, s, a in exports] + [
        (n, 0x01, 0, library << 8, 0) for n, library in imports
    ]:
        entries += struct.pack("<IBBHI", len(texts), kind, section, description, value)
        texts += name.encode() + b"\0"
    return bytes(entries), bytes(texts)
