"""Functions and statements of a C++ source, found from its tokens alone."""

import dataclasses

from mutation.tokens import angle_end, brackets, tokenize

CONTROLS = ("if", "for", "while", "switch")
JUMPS = ("return", "break", "continue", "goto")
BEFORE_BODY = (")", "const", "noexcept", "override", "final", "try", "&", "&&")


@dataclasses.dataclass
class Function:
    """A function or lambda: the indexes of its header's first token and of its body's braces."""

    header: int
    body: int
    end: int
    is_lambda: bool
    is_constexpr: bool  # it, or what it is part of, may be executed by the compiler


@dataclasses.dataclass
class Statement:
    """A statement: the indexes of its first and last token, and those of the parentheses of its condition.

    `number` counts the statements of the file. `needs_braces`: it is the body of a control statement without braces.
    """

    kind: str
    first: int
    last: int
    function: Function
    number: int
    needs_braces: bool
    condition: tuple = None


class Source:
    """A parsed source. `owner[i]` is the innermost statement of the token `i`, or None outside functions.

    Throws ValueError when the text cannot be understood.
    """

    def __init__(self, text):
        self.text = text
        self.tokens = tokenize(text)
        self.partners = brackets(self.tokens)
        self.statements = []
        self.functions = []
        self.owner = [None] * len(self.tokens)
        self._scope(0, len(self.tokens))

    def _is(self, index, *texts):
        return index < len(self.tokens) and self.tokens[index].text in texts

    def _scope(self, index, end):
        """Reads the declarations of a namespace or class."""
        while index < end:
            index = self._declaration(index, end)

    def _declaration(self, first, end):
        """Reads one declaration; returns the index behind it."""
        index = first
        if self._is(index, "template") and self._is(index + 1, "<"):
            index = angle_end(self.tokens, index + 1) + 1
        head = index
        while index < end and not self._is(index, ";"):
            if not self._is(index, "{"):
                index = self.partners[index] + 1 if self._is(index, "(", "[") else index + 1
                continue
            close = self.partners[index]
            kind = self._braces(head, index)
            if kind in ("namespace", "class"):
                self._scope(index + 1, close)
            elif kind == "function":
                self._function(first, index)
            if kind in ("namespace", "function"):
                return close + 1
            index = close + 1
        return index + 1

    def _braces(self, head, brace):
        """Returns what the braces of a declaration hold: "namespace", "class", "function" or "values"."""
        words, index = [], head
        while index < brace:
            words.append(self.tokens[index].text)
            index = self.partners[index] + 1 if self._is(index, "(", "[", "{") else index + 1
        if "namespace" in words or (words[:1] == ["extern"] and len(words) == 2):
            return "namespace"
        if "enum" in words or any(word == "=" and words[at - 1] != "operator" for at, word in enumerate(words)):
            return "values"
        if any(word in words for word in ("class", "struct", "union")):
            return "class"
        before = self.tokens[brace - 1].text
        has_body = before in BEFORE_BODY or "->" in words or (before == "}" and ":" in words)
        return "function" if "(" in words and has_body and self.tokens[brace].loose_left else "values"

    def _function(self, header, brace, around=None):
        """Reads a body; `around` is the statement that a lambda is part of. Returns the index behind the body."""
        words = [token.text for token in self.tokens[around.first if around else header : brace]]
        is_constexpr = "constexpr" in words or bool(around and around.function.is_constexpr)
        function = Function(header, brace, self.partners[brace], around is not None, is_constexpr)
        self.functions.append(function)
        index = self._block(brace, function)
        while self._is(index, "catch"):
            index = self._block(self.partners[index + 1] + 1, function)
        return index

    def _block(self, brace, function):
        index, close = brace + 1, self.partners[brace]
        while index < close:
            index = self._statement(index, function, False)
        return close + 1

    def _body(self, index, function):
        return self._block(index, function) if self._is(index, "{") else self._statement(index, function, True)

    def _statement(self, index, function, needs_braces):
        """Reads one statement; returns the index behind it."""
        text = self.tokens[index].text
        if text == "{":
            return self._block(index, function)
        if text == "case" or (text == "default" and self._is(index + 1, ":")):
            return self._label(index)
        if self.tokens[index].kind == "word" and self._is(index + 1, ":") and not self._is(index + 2, ":"):
            return index + 2
        statement = Statement(text, index, index, function, len(self.statements), needs_braces)
        self.statements.append(statement)
        if text in CONTROLS:
            index = self._control(statement)
        elif text == "do":
            index = self._body(index + 1, function) + 1
            index = self._condition(statement, index) + 1
        elif text == "try":
            index = self._block(index + 1, function)
            while self._is(index, "catch"):
                index = self._block(self.partners[index + 1] + 1, function)
        else:
            return self._simple(statement)
        statement.last = index - 1
        return index

    def _label(self, index):
        while not self._is(index, ":"):
            index = self.partners[index] + 1 if self._is(index, "(", "[", "{") else index + 1
        return index + 1

    def _condition(self, statement, index):
        close = self.partners[index]
        statement.condition = (index, close)
        self._own(statement, index, close)
        return close + 1

    def _control(self, statement):
        index = statement.first + 1
        if self._is(index, "constexpr"):
            index += 1
            statement.kind = "if constexpr"
        index = self._condition(statement, index)
        index = self._body(index, statement.function)
        if statement.kind.startswith("if") and self._is(index, "else"):
            index = self._body(index + 1, statement.function)
        return index

    def _simple(self, statement):
        index = statement.first
        while not self._is(index, ";"):
            index = self.partners[index] + 1 if self._is(index, "(", "[", "{") else index + 1
            if index >= len(self.tokens) or self._is(index, "}"):
                raise ValueError(f"a statement without end at offset {self.tokens[statement.first].start}")
        statement.last = index
        statement.kind = self.tokens[statement.first].text if self._is(statement.first, *JUMPS) else "simple"
        self._own(statement, statement.first, index)
        return index + 1

    def _own(self, statement, first, last):
        """Notes whose tokens these are, and reads the bodies of lambdas among them."""
        index = first
        while index <= last:
            self.owner[index] = statement
            if self._is(index, "{") and self._is_lambda(first, index):
                index = self._function(index, index, statement)
            else:
                index += 1

    def _is_lambda(self, first, brace):
        before = brace - 1
        while before > first and self._is(before, "mutable", "noexcept"):
            before -= 1
        arrow = before
        while arrow > first and (self.tokens[arrow].kind == "word" or self._is(arrow, "::", "*", "&", "<", ">")):
            arrow -= 1
        if self._is(arrow, "->") and self._is(arrow - 1, ")"):
            before = arrow - 1
        if self._is(before, "]"):
            return True
        return self._is(before, ")") and self._is(self.partners[before] - 1, "]")
