"""What an expression means as far as its text shows it, and other values for constants."""

import re

ASSIGNMENTS = ("=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>=")
NO_EXPRESSION = {
    "return", "goto", "using", "typedef", "static_assert", "const", "constexpr", "static", "auto", "struct", "class", "enum",
    "union", "unsigned", "signed", "int", "long", "short", "char", "bool", "float", "double", "void", "volatile", "thread_local",
    "extern", "namespace", "friend", "case", "default", "typename", "asm", "co_return",
}  # fmt: skip
ESCAPE = re.compile(r"\\(?:x[0-9A-Fa-f]+|[0-7]{1,3}|u[0-9A-Fa-f]{4}|U[0-9A-Fa-f]{8}|.)|%%|%[-+ #0-9.*]*[hlzjt]*[a-zA-Z]", re.DOTALL)


def other_numbers(text):
    """Returns the texts of other values for a number: one more, and 0 in place of 1."""
    digits, suffix = re.fullmatch(r"(.*?)((?:(?<!0[xX])[uUlLfF])*)", text).groups()
    if re.match(r"0[xX]", text):
        digits, suffix = re.fullmatch(r"(0[xX][0-9A-Fa-f']*)(.*)", text).groups()
        value = int(digits.replace("'", ""), 16) + 1
        return (f"0x{value:0{len(digits) - 2}X}{suffix}",)
    plain = digits.replace("'", "")
    try:
        if re.fullmatch(r"0[0-7]+", plain):
            return (f"0{int(plain, 8) + 1:o}{suffix}",)
        if re.match(r"0[bB]", plain):
            return (f"{bin(int(plain, 2) + 1)}{suffix}",)
        if plain.isdigit():
            value = int(plain)
            return (f"{value + 1}{suffix}",) + ((f"0{suffix}",) if value == 1 else ())
        return (f"{float(plain) + 1!r}{suffix}",)
    except ValueError:
        return ()


def other_literal(text, kind):
    """Returns a character or string constant with one character changed."""
    opening, closing = ('"', '"') if kind == "string" else ("'", "'")
    if kind == "raw":
        opening, closing = "(", ")"
    first, last = text.index(opening) + 1, text.rindex(closing)
    content = text[first:last]
    if kind == "character" and content.startswith("\\"):
        return text[:first] + "x" + text[last:]
    protected = set() if kind == "raw" else {place for found in ESCAPE.finditer(content) for place in range(*found.span())}
    for place, letter in enumerate(content):
        if place not in protected and letter.isascii() and letter.isalnum():
            other = {"z": "a", "Z": "A", "9": "0"}.get(letter) or chr(ord(letter) + 1)
            return text[: first + place] + other + text[first + place + 1 :]
    return text[:first] + ("x" if kind == "character" else content + "x") + text[last:]


def joins_text(tokens, partners, index):
    """Returns whether an operator of this chain has a string constant as operand, as in `path + "/" + name`."""
    for step in (-1, 1):
        place = index + step
        while 0 <= place < len(tokens) and tokens[place].text not in (",", ";", "{", "}", "=", "return", "?", ":"):
            if tokens[place].kind in ("string", "raw"):
                return True
            text = tokens[place].text
            if text in "([" and step == -1 or text in ")]" and step == 1:
                break
            place = partners[place] if text in "()[]" else place
            place += step
    return False


def _nested(tokens):
    """Yields the index and token of each token outside parentheses and brackets, the opening ones included."""
    depth = 0
    for index, token in enumerate(tokens):
        if token.text in (")", "]", "}"):
            depth -= 1
        if depth == 0:
            yield index, token
        if token.text in ("(", "[", "{"):
            depth += 1


def is_declaration(tokens):
    """Returns whether a statement or condition begins with a type and a name."""
    before = None
    for _, token in _nested(tokens):
        if token.kind == "word":
            if token.text in NO_EXPRESSION or (before and (before.kind == "word" or before.text == ">")):
                return before is None or before.text not in ("throw", "delete", "new")
        elif token.text in ASSIGNMENTS or token.text in ("(", ")", "?", "<<", ">>", "[", "++", "--"):
            return False
        elif token.text in ("*", "&", "&&") and before and token.loose_right and not token.loose_left:
            return True
        before = token
    return False


def is_expression(tokens):
    """Returns whether a statement, its semicolon included, is an expression with an effect: a call or an assignment."""
    if tokens[0].kind != "word" and tokens[0].text not in ("(", "*", "++", "--", "::"):
        return False
    if tokens[0].text in NO_EXPRESSION or is_declaration(tokens[:-1]):
        return False
    if tokens[0].text in ("throw", "delete"):
        return True
    outer = [token.text for _, token in _nested(tokens)]
    return "(" in outer or any(text in outer for text in (*ASSIGNMENTS, "++", "--", "<<", ">>"))


def is_comparison(tokens, partners, first):
    """Returns whether a condition is one comparison or one negated operand, whose operator is changed anyway."""
    index, comparisons = 0, 0
    while index < len(tokens):
        token = tokens[index]
        if token.text in ("&&", "||", "?") and token.is_binary:
            return False
        comparisons += token.is_binary and token.text in ("==", "!=", "<", ">", "<=", ">=")
        index = partners[first + index] - first + 1 if token.text in ("(", "[", "{") else index + 1
    return comparisons == 1 or tokens[0].text == "!"
