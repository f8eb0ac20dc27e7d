"""The traced copy of the tree: each statement of its sources records that it is executed."""

from mutation.statements import Source

SIZE = 1 << 18  # of the file of hits: one byte for each statement of the tree
FILE = "/dev/shm/statement-hits"


def traced(text, base):
    """Returns a source whose statement `n` records the hit `base + n`, and the number of its statements."""
    source = Source(text)
    insertions = []
    for statement in source.statements:
        if statement.function.is_constexpr:
            continue
        hit = f"::mutation_trace::Hit({base + statement.number});"
        start, end = source.tokens[statement.first].start, source.tokens[statement.last].end
        insertions.append((start, 1, "{" + hit if statement.needs_braces else hit))
        if statement.needs_braces:
            insertions.append((end, 0, "}"))
    for place, _, inserted in sorted(insertions, reverse=True):
        text = text[:place] + inserted + text[place:]
    return text, len(source.statements)


def flags(header):
    """Returns the compiler's flags for the traced copy."""
    return f'-include {header} -DMUTATION_TRACE_SIZE={SIZE} -DMUTATION_TRACE_FILE=\\"{FILE}\\"'


def numbers(hits):
    """Returns the recorded bytes as an integer with one bit for each statement that was executed."""
    bits = 0
    place = hits.find(b"\1")
    while place >= 0:
        bits |= 1 << place
        place = hits.find(b"\1", place + 1)
    return bits
