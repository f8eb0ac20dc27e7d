"""The faults that can be planted in a source: one small change each."""

import bisect
import dataclasses

from mutation import operands, returns
from mutation.statements import Source
from mutation.tokens import angle_end

RELATIONAL = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",)}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "%=": "*="}
STEPS = {"++": "--", "--": "++"}
LOGICAL = {"&&": "||", "||": "&&"}
BITS = {"&": "|", "|": "&", "^": "|", "<<": ">>", ">>": "<<", "&=": "|=", "|=": "&=", "^=": "|=", "<<=": ">>=", ">>=": "<<="}
REMOVED_JUMPS = ("break", "continue")
UNCHANGED = ("static_assert", "decltype", "alignas", "typedef", "using")


@dataclasses.dataclass(frozen=True)
class Fault:
    """A change of one place: `text[start:end]` becomes `replacement`.

    `line` is the first changed line; `before` and `after` are the whole changed lines with white space folded. `statement` is
    the number of the innermost statement of the source, or None where the change can act without its line being executed;
    `nearby` are the first and last number of the statements of its function, or else of the file.
    """

    path: str
    line: int
    start: int
    end: int
    replacement: str
    kind: str
    before: str
    after: str
    statement: int | None
    nearby: tuple

    def planted_in(self, text):
        """Returns the text with the fault."""
        return text[: self.start] + self.replacement + text[self.end :]


def fold(text):
    """Returns the text with each run of white space as one space, and none at the ends."""
    return " ".join(text.split())


def faults_of(path, text):
    """Returns all faults of a source in the order of their places. Throws ValueError when it cannot be parsed."""
    return _Finder(path, Source(text)).found()


class _Finder:
    def __init__(self, path, source):
        self.path, self.source = path, source
        self.tokens, self.text = source.tokens, source.text
        self.lines = [0] + [index + 1 for index, letter in enumerate(self.text) if letter == "\n"]
        self.ranges = self._ranges()
        self.faults = {}

    def _ranges(self):
        """Returns for each statement the first and last number of the statements of its outermost function."""
        ranges, first = [], 0
        while first < len(self.source.statements):
            end = self.source.statements[first].function.end
            last = first
            while last + 1 < len(self.source.statements) and self.source.statements[last + 1].first < end:
                last += 1
            ranges += [(first, last)] * (last - first + 1)
            first = last + 1
        return ranges

    def found(self):
        skipped = self._skipped()
        for index in range(len(self.tokens)):
            if index not in skipped:
                self._token(index)
        for statement in self.source.statements:
            self._removal(statement)
            self._condition(statement)
            self._return(statement)
        return sorted(self.faults.values(), key=lambda fault: (fault.start, fault.end, fault.replacement))

    def _skipped(self):
        """Returns the indexes of the tokens that are not changed: declarations about types, attributes and linkage."""
        skipped, index = set(), 0
        while index < len(self.tokens):
            token, end = self.tokens[index], index
            following = self.tokens[index + 1].text if index + 1 < len(self.tokens) else ""
            if token.text == "template" and following == "<":
                end = angle_end(self.tokens, index + 1)
            elif token.text in UNCHANGED:
                while self.tokens[end].text not in (";", "(") and token.text not in ("using", "typedef"):
                    end += 1
                while self.tokens[end].text != ";" and token.text in ("using", "typedef"):
                    end += 1
                end = self.source.partners.get(end, end)
            elif token.text == "[" and following == "[":
                end = self.source.partners[index]
            elif token.text in ("operator", "extern"):
                end = index + 1
            elif token.text == "=" and following == "0" and self.tokens[index - 1].text in (")", "const", "noexcept", "override"):
                end = index + 1
            skipped.update(range(index, end + 1) if end > index else ())
            index = end + 1
        return skipped

    def _add(self, kind, first, last, replacement, statement):
        """Notes the fault that replaces the tokens from `first` to `last`."""
        start, end = self.tokens[first].start, self.tokens[last].end
        line = bisect.bisect_right(self.lines, start)
        first_letter = self.lines[line - 1]
        last_letter = self.text.find("\n", end)
        last_letter = len(self.text) if last_letter < 0 else last_letter
        before = fold(self.text[first_letter:last_letter])
        after = fold(self.text[first_letter:start] + replacement + self.text[end:last_letter])
        number = None if statement is None or statement.function.is_constexpr else statement.number
        if before != after:
            nearby = (0, len(self.source.statements) - 1) if number is None else self.ranges[number]
            fault = Fault(self.path, line, start, end, replacement, kind, before, after, number, nearby)
            self.faults.setdefault((start, end, replacement), fault)

    def _token(self, index):
        token, statement = self.tokens[index], self.source.owner[index]

        def add(kind, *replacements):
            for replacement in replacements:
                self._add(kind, index, index, replacement, statement)

        if token.kind == "operator":
            self._operator(index, add)
        elif token.kind == "number":
            add("constant", *operands.other_numbers(token.text))
        elif token.kind in ("string", "raw", "character"):
            add("constant", operands.other_literal(token.text, token.kind))
        elif token.text in ("true", "false") and self.tokens[index - 1].text != "return":
            add("constant", "false" if token.text == "true" else "true")

    def _operator(self, index, add):
        token = self.tokens[index]
        text = token.text
        if token.is_binary:
            if text in RELATIONAL:
                add("relational", *RELATIONAL[text])
            elif text in LOGICAL:
                add("logical", LOGICAL[text])
            elif text in ARITHMETIC and not operands.joins_text(self.tokens, self.source.partners, index):
                add("arithmetic", ARITHMETIC[text])
            elif text in BITS and not operands.joins_text(self.tokens, self.source.partners, index):
                add("bit", BITS[text])
        elif text in STEPS:
            add("arithmetic", STEPS[text])
        elif text == "!" or (text in "-~" and not token.loose_right and self._is_operand(index)):
            add({"!": "negation", "-": "arithmetic", "~": "bit"}[text], "")

    def _is_operand(self, index):
        """Returns whether a sign stands before an operand: not between two, nor in the name of a destructor."""
        before = self.tokens[index - 1]
        return self.source.owner[index] is not None and (before.text == "return" or (
            before.kind == "operator" and before.text not in (")", "]", "}", "::", "->", ".")))

    def _removal(self, statement):
        words = self.tokens[statement.first : statement.last + 1]
        bare_return = statement.kind == "return" and len(words) == 2
        if statement.kind in REMOVED_JUMPS or bare_return or (
                statement.kind == "simple" and operands.is_expression(words)):
            self._add("statement", statement.first, statement.last, ";", statement)

    def _condition(self, statement):
        """Negates a condition, unless one of its operators alone gives the same change."""
        if statement.kind not in ("if", "while", "do"):
            return
        first, last = statement.condition[0] + 1, statement.condition[1] - 1
        for index in range(first, last + 1):
            first = index + 1 if self.tokens[index].text == ";" else first
        words = self.tokens[first : last + 1]
        if operands.is_declaration(words) or operands.is_comparison(words, self.source.partners, first):
            return
        self._add("condition", first, last, f"!({self.text[words[0].start : words[-1].end]})", statement)

    def _return(self, statement):
        if statement.kind != "return" or statement.last == statement.first + 1:
            return
        first, last = statement.first + 1, statement.last - 1
        value = self.text[self.tokens[first].start : self.tokens[last].end]
        kind = returns.kind_of(self.source, statement.function)
        replacement = returns.other_value(kind, value)
        if replacement is not None and not self._is_changed_by_operator(kind, first, last):
            self._add("return", first, last, replacement, statement)

    def _is_changed_by_operator(self, kind, first, last):
        words = self.tokens[first : last + 1]
        return (kind == "number" and len(words) == 1 and words[0].kind == "number") or (
            kind == "condition" and operands.is_comparison(words, self.source.partners, first))
