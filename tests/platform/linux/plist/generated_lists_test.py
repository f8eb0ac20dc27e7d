#!/usr/bin/python3 -B
"""Compares what the tool reads from some thousand generated property lists with Python's plistlib, before and after edits.

usage: generated_lists_test.py XCODHOST SET_ADDED_KEY
"""

import datetime
import json
import pathlib
import plistlib
import random
import re
import subprocess
import sys
import tempfile

LISTS, EDITED = 1000, 100  # in each format; how many of them are edited
TEXTS = ["", "a", "caf\u00e9", "\u65e5\u672c", "\U0001f3b5", "a\tb\nc", "<&>\"'", "]]>", " x ", "\ufeff", "y" * 300, "\u0080\u00ff"]
NUMBERS = [0, 1, -1, 127, 255, 256, -129, 65535, 2**31, -(2**31) - 1, 2**63 - 1, -(2**63), 2**63, 2**64 - 1]
REALS = [0.0, -0.0, 0.1, -1.5, 1e16, 1e17, 1e300, 5e-324, float("inf"), -float("inf"), float("nan")]
YEARS = [1, 1582, 1600, 1900, 1901, 1904, 1970, 2000, 2001, 2038, 2039, 2100, 9999]


def scalar(chance, is_xml):
    date = datetime.datetime(chance.choice(YEARS), chance.randint(1, 12), chance.randint(1, 28), chance.randint(0, 23), 59, 58)
    fraction = datetime.timedelta(microseconds=0 if is_xml else chance.choice([0, 250000, 500000]))
    uid = 7 if is_xml else plistlib.UID(chance.choice([0, 255, 256, 2**31]))
    return chance.choice([True, False, chance.choice(TEXTS), chance.choice(NUMBERS), chance.choice(REALS), date + fraction,
                          chance.randbytes(chance.choice([0, 1, 2, 3, 14, 15, 60])), uid, chance.uniform(-1e6, 1e6)])


def value(chance, is_xml, depth=0):
    kind = chance.random()
    if depth > 4 or kind < 0.7:
        return scalar(chance, is_xml)
    items = [value(chance, is_xml, depth + 1) for _ in range(chance.choice([0, 1, 2, 5, 20]))]
    return items if kind < 0.85 else {chance.choice(TEXTS) + str(i): item for i, item in enumerate(items)}


def native(entry):
    """Returns the value that the tool writes as JSON."""
    kind, v = entry["type"], entry["value"]
    if kind == "dict":
        return {key: native(item) for key, item in v.items()}
    if kind == "array":
        return [native(item) for item in v]
    if kind == "date":
        whole, _, fraction = v.rstrip("Z").partition(".")
        return datetime.datetime.fromisoformat(whole) + datetime.timedelta(seconds=float("0." + (fraction or "0")))
    return {"real": float, "data": bytes.fromhex, "uid": lambda text: plistlib.UID(int(text))}.get(kind, lambda same: same)(v)


def text_of(model):
    """Returns a text that differs for every two models: those with 0.0 and -0.0, with 1 and True."""
    return repr(sorted(model.items()))


def mutated(chance, xml):
    """Returns XML that has the same values for every reader, in another form."""
    comment = chance.choice([b"", b"<!-- c -->", b"<?pi x?>", b"\r\n \t"])
    xml = re.sub(rb">\n(?=\t*</?(key|dict|array|true|string)\b)", b">" + comment + b"\n", xml)
    old, new = chance.choice([(b"<true/>", b"<true></true>"), (b"<array>", b"<array a='b'>"), (b"<key>", b"<key \n>"), (b"a", b"&#97;"),
                              (b"<string></string>", b"<string/>"), (b"", b"")])
    if old != b"a":
        xml = xml.replace(old, new) if old else xml
    else:
        xml = re.sub(rb"(<string>[^<&]*)a", rb"\1&#97;", xml)
    if chance.random() < 0.2:
        return xml.decode().replace('encoding="UTF-8"', "").encode(chance.choice(["utf-16", "utf-8-sig", "utf-32"]))
    return xml


def old_style(v):
    """Writes strings, data, lists and dictionaries."""
    if isinstance(v, dict):
        return "{ " + " ".join(f"{old_style(key)} = {old_style(item)};" for key, item in v.items()) + " /* c */ }"
    if isinstance(v, list):
        return "( " + ", ".join(map(old_style, v)) + " )"
    return f"<{v.hex()}>" if isinstance(v, bytes) else '"' + str(v).replace("\\", "\\\\").replace('"', '\\"') + '"'


def only_old_style(v):
    if isinstance(v, dict):
        return {key: only_old_style(item) for key, item in v.items()}
    return [only_old_style(item) for item in v] if isinstance(v, list) else v if isinstance(v, bytes) else str(v)


def compare(tool, volume, models):
    """Requires that the tool reads the models from the files of their domains."""
    output = json.loads(subprocess.run([tool, "show", "--volume", volume, "--json"], check=True, capture_output=True).stdout)
    assert not output["problems"], output["problems"][:3]
    seen = {}
    for entry in output["preferences"]:
        seen.setdefault(entry["domain"], {})[entry["key"]] = native(entry["value"])
    for domain, model in models.items():
        assert text_of(seen[domain]) == text_of(model), f"{domain}: {seen[domain]} is not {model}"


def generated(chance, form):
    """Returns the bytes of a property list, and the dictionary that the bytes have."""
    keys = [f"{i} {chance.choice(TEXTS)}" for i in range(chance.randint(0, 9))]
    model = {"first": 1, **{key: value(chance, form != "binary") for key in keys}}
    if form == "old":
        return old_style(only_old_style(model)).encode(), only_old_style(model)
    if form == "binary":
        data = plistlib.dumps(model, fmt=plistlib.FMT_BINARY, sort_keys=False)
        return data, plistlib.loads(data)  # plistlib writes equal numbers once: 0.0 for -0.0
    return mutated(chance, plistlib.dumps(model, sort_keys=False)), model


def main():
    tool, editor = sys.argv[1:]
    with tempfile.TemporaryDirectory() as volume:
        folder = pathlib.Path(volume, "Library/Preferences")
        folder.mkdir(parents=True)
        lists = {f"{form}{i}": generated(random.Random(i), form) for i in range(LISTS) for form in ("xml", "binary", "old")}
        for domain, (data, _) in lists.items():
            (folder / f"{domain}.plist").write_bytes(data)
        compare(tool, volume, {domain: model for domain, (_, model) in lists.items()})

        edited = [f"{form}{i}" for i in range(EDITED) for form in ("xml", "binary", "old")]
        for action, extra in (("set", {"added": "value"}), ("remove", {})):
            refused = subprocess.run([editor, volume, action, *edited], check=True, capture_output=True, text=True).stdout
            assert not refused, f"{action}: not stored: {refused}"
            models = {domain: {**lists[domain][1], **extra} for domain in edited}
            compare(tool, volume, models)
            for domain, model in models.items():
                seen = plistlib.loads((folder / f"{domain}.plist").read_bytes())
                assert text_of(seen) == text_of(model), f"{domain}: plistlib reads {seen} after {action}"
        for domain in edited:
            is_utf8 = domain.startswith("xml") and lists[domain][0][:2] != b"\xff\xfe"
            assert not is_utf8 or (folder / f"{domain}.plist").read_bytes() == lists[domain][0], f"{domain}: bytes have changed"


main()
