"""Other values for a returned one, where the header of the function shows its type."""

NUMBERS = {
    "int", "long", "short", "unsigned", "char", "float", "double", "size_t", "ssize_t", "int8_t", "int16_t", "int32_t", "int64_t",
    "uint8_t", "uint16_t", "uint32_t", "uint64_t", "off_t", "pid_t",
}  # fmt: skip
SPECIFIERS = {"static", "inline", "virtual", "explicit", "extern", "constexpr", "friend", "public", "private", "protected", ":",
              "const", "[[", "]]", "nodiscard", "noreturn", "maybe_unused", "[", "]", '"C"'}  # fmt: skip
EMPTY = {"string", "vector", "optional", "map", "set", "String"}


def kind_of(source, function):
    """Returns "condition", "number", "pointer" or "object" for a function's type, or None when its header does not show it."""
    if function.is_lambda:
        return None
    words, index = [], function.header
    if source.tokens[index].text == "template":
        return None
    while index < function.body and source.tokens[index].text != "(":
        words.append(source.tokens[index].text)
        index += 1
    words = [word for word in words if word not in SPECIFIERS and word != "std" and word != "::"]
    if len(words) < 2 or "operator" in words or "auto" in words or "&" in words:
        return None
    if "*" in words:
        return "pointer"
    if words[0] == "bool":
        return "condition"
    if words[0] in NUMBERS:
        return "number"
    return "object" if words[0] in EMPTY else None


def other_value(kind, value):
    """Returns the text of another value than `value` for a return statement, or None."""
    if value in ("true", "false"):
        return "false" if value == "true" else "true"
    if kind == "condition":
        return f"!({value})"
    if kind == "number":
        return f"({value}) + 1"
    if kind == "pointer":
        return None if value == "nullptr" else "nullptr"
    return "{}" if kind == "object" and value not in ("{}", '""') else None
