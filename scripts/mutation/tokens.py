"""Tokens of a C++ source. Comments, white space and preprocessor directives yield none."""

import re
import typing

PATTERN = re.compile(
    r"""
    (?P<directive> ^[ \t]*\#(?:[^\n\\]|\\.)* )
  | (?P<space>     [ \t\r\f\v]+ | \n )
  | (?P<comment>   //(?:[^\n\\]|\\.)* | /\*.*?\*/ )
  | (?P<raw>       (?:u8|[uUL])?R"(?P<delimiter>[^()\s\\]{0,16})\(.*?\)(?P=delimiter)" )
  | (?P<string>    (?:u8|[uUL])?"(?:[^"\\\n]|\\.)*" )
  | (?P<character> (?:u8|[uUL])?'(?:[^'\\\n]|\\.)+' )
  | (?P<number>    \.?\d(?:[eEpP][+-]|'?[\w.])* )
  | (?P<word>      [A-Za-z_]\w* )
  | (?P<operator>  <<=|>>=|\.\.\.|->\*|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|\.\*|. )
    """,
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)
SKIPPED = ("directive", "space", "comment")
CLOSING = {"(": ")", "[": "]", "{": "}"}


class Token(typing.NamedTuple):
    """A token with its place in the text. `loose_left` and `loose_right`: white space is beside it.

    The sources are laid out by a formatter, so that an operator with two operands has white space on both sides, and a
    declarator's `*` and `&` and the angle brackets of templates have not.
    """

    kind: str
    text: str
    start: int
    end: int
    loose_left: bool
    loose_right: bool

    @property
    def is_binary(self):
        """Whether an operator has two operands."""
        return self.loose_left and self.loose_right


def tokenize(text):
    """Returns the tokens of a source."""
    tokens = []
    for match in PATTERN.finditer(text):
        if match.lastgroup not in SKIPPED:
            start, end = match.span()
            kind = "raw" if match["raw"] else match.lastgroup
            tokens.append(Token(kind, match[0], start, end, text[start - 1 : start].isspace(), text[end : end + 1].isspace()))
    return tokens


def brackets(tokens):
    """Returns the index of the closing bracket for the index of each opening one, and the other way round.

    Throws ValueError when brackets do not match.
    """
    partners, opened = {}, []
    for index, token in enumerate(tokens):
        if token.kind != "operator":
            continue
        if token.text in CLOSING:
            opened.append(index)
        elif token.text in CLOSING.values():
            if not opened or CLOSING[tokens[opened[-1]].text] != token.text:
                raise ValueError(f"unmatched {token.text} at offset {token.start}")
            partners[index] = opened.pop()
            partners[partners[index]] = index
    if opened:
        raise ValueError(f"unmatched {tokens[opened[-1]].text} at offset {tokens[opened[-1]].start}")
    return partners


def angle_end(tokens, index):
    """Returns the index of the `>` that closes the template bracket at the index."""
    depth = 0
    while index < len(tokens):
        text = tokens[index].text
        if text == "<":
            depth += 1
        elif text in (">", ">>"):
            depth -= len(text)
            if depth <= 0:
                return index
        elif text in (";", "{"):
            break
        index += 1
    raise ValueError("unmatched < of a template")
