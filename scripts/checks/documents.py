"""Reads the documents of the tree: fenced blocks, headings, and the lines outside of blocks."""

import pathlib
import re


class Block:
    """A fenced block: the words behind its fence, its lines, and the line of its fence."""

    def __init__(self, document, line, info):
        self.document, self.line, self.info, self.lines = document, line, info.split(), []

    @property
    def place(self):
        return f"{self.document}:{self.line}"

    @property
    def text(self):
        return "".join(line + "\n" for line in self.lines)


def documents():
    """Returns the paths of the documents in the working tree, without those in a build directory."""
    return sorted(path for path in pathlib.Path().rglob("*.md") if path.parts[0] != "build")


def read(document):
    """Returns the fenced blocks of a document and the numbered lines outside of them."""
    blocks, prose, block = [], [], None
    for number, line in enumerate(document.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("```"):
            if block is None:
                block = Block(document, number, line[3:])
                blocks.append(block)
            else:
                block = None
        elif block is not None:
            block.lines.append(line)
        else:
            prose.append((number, line))
    return blocks, prose


def blocks_of(language):
    """Returns the fenced blocks of a language in all documents."""
    return [block for document in documents() for block in read(document)[0] if block.info[:1] == [language]]


def anchors(document):
    """Returns the anchors of a document: its headings in lower case, with hyphens for blanks, without punctuation."""
    found = {}
    for _, line in read(document)[1]:
        heading = re.match(r"#+ +(.*)", line)
        if heading:
            text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading[1]).lower()
            anchor = re.sub(r"[^\w\- ]", "", text).replace(" ", "-")
            found[anchor] = found.get(anchor, -1) + 1
    return {anchor if count == 0 else f"{anchor}-{count}" for anchor, last in found.items() for count in range(last + 1)}
