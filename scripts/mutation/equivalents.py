"""The list of reviewed equivalent changes: faults that no test can notice, with the reasons.

An entry is a block of lines; blank lines and lines that begin with "#" separate entries:

    path/of/the/file.cpp
    - the changed lines before
    + the changed lines after
      why nothing can notice the change, in one or more indented lines
"""

import dataclasses

from mutation import layout
from mutation.faults import faults_of, fold


@dataclasses.dataclass
class Entry:
    """A reviewed change. `line` is where it begins in the list; lines of code have their white space folded."""

    line: int
    path: str
    before: str
    after: str
    reason: str


def _blocks(text):
    block, first = [], 0
    for number, line in enumerate(text.splitlines() + [""], 1):
        if line.strip() and not line.startswith("#"):
            first = first if block else number
            block.append(line.rstrip())
        elif block:
            yield first, block
            block = []


def _entry(number, block):
    """Returns the entry of a block, or the text of what is wrong with it."""
    if len(block) < 4:
        return f"line {number}: an entry has a path, a line before, a line after and a reason"
    path, before, after, *reason = block
    if not before.startswith("- ") or not after.startswith("+ "):
        return f'line {number}: the lines behind the path begin with "- " and "+ "'
    if path != path.strip() or not all(line.startswith("  ") for line in reason):
        return f"line {number}: the path begins its line, and the reason is indented by two spaces"
    return Entry(number, path, fold(before[2:]), fold(after[2:]), " ".join(line.strip() for line in reason))


def read(place=layout.EQUIVALENTS):
    """Returns the entries of the list and messages for those that are malformed."""
    if not place.exists():
        return [], []
    entries = [_entry(number, block) for number, block in _blocks(place.read_text(encoding="utf-8"))]
    wrong = [entry for entry in entries if isinstance(entry, str)]
    return [entry for entry in entries if isinstance(entry, Entry)], wrong


def _problem(entry):
    place = layout.ROOT / entry.path
    if not place.is_file():
        return "there is no such file"
    text = place.read_text(encoding="utf-8")
    if entry.before not in fold(text):
        return "the line before is not in the file"
    known = {(fault.before, fault.after) for fault in faults_of(entry.path, text)}
    return None if (entry.before, entry.after) in known else "no fault changes the line in this way"


def stale(entries):
    """Returns messages for the entries that match no fault of the tree any longer."""
    problems = ((entry, _problem(entry)) for entry in entries)
    return [f"line {entry.line}: {entry.path}: {problem}" for entry, problem in problems if problem]


def reasons(entries):
    """Returns the reason for each path, line before and line after."""
    return {(entry.path, entry.before, entry.after): entry.reason for entry in entries}
