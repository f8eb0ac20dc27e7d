#!/usr/bin/python3 -B
"""Compares what the tool reads from some thousand generated property lists with Python's plistlib, before and after edits.

usage: generated_lists_test.py XCODHOST SET_ADDED_KEY
"""

import datetime
import json
import os
import plistlib
import random
import re
import struct
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


def shown(v):
    """Returns the value as the tool writes it in JSON. A real has its bits, and a date its seconds."""
    if isinstance(v, dict):
        return {"type": "dict", "value": {key: shown(item) for key, item in v.items()}}
    if isinstance(v, list):
        return {"type": "array", "value": [shown(item) for item in v]}
    if isinstance(v, datetime.datetime):
        return {"type": "date", "value": v}
    if isinstance(v, float):
        return {"type": "real", "value": "nan" if v != v else struct.pack("d", v)}
    for kind, name in ((bool, "boolean"), (int, "integer"), (str, "string")):
        if isinstance(v, kind):
            return {"type": name, "value": v}
    return {"type": "data", "value": v.hex()} if isinstance(v, bytes) else {"type": "uid", "value": str(v.data)}


def as_shown(entry):
    """Replaces the texts of reals and dates in the JSON of the tool."""
    v = entry["value"]
    if entry["type"] == "date":
        whole, _, fraction = v.rstrip("Z").partition(".")
        v = datetime.datetime.fromisoformat(whole) + datetime.timedelta(seconds=float("0." + (fraction or "0")))
    elif entry["type"] == "real":
        v = "nan" if v == "nan" else struct.pack("d", float(v))
    elif entry["type"] == "array":
        v = [as_shown(item) for item in v]
    elif entry["type"] == "dict":
        v = {key: as_shown(item) for key, item in v.items()}
    return {"type": entry["type"], "value": v}


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


def require(is_true, what):
    if not is_true:
        sys.exit(f"generated_lists_test: {what}")


def main():
    tool, editor = sys.argv[1:]
    with tempfile.TemporaryDirectory() as volume:
        folder = os.path.join(volume, "Library/Preferences")
        os.makedirs(folder)
        path = lambda domain: os.path.join(folder, domain + ".plist")  # noqa: E731
        read = lambda domain: open(path(domain), "rb").read()  # noqa: E731

        def compare(expected):
            output = json.loads(subprocess.run([tool, "show", "--volume", volume, "--json"], check=True, capture_output=True).stdout)
            require(not output["problems"], output["problems"][:3])
            seen = {}
            for entry in output["preferences"]:
                seen.setdefault(entry["domain"], {})[entry["key"]] = as_shown(entry["value"])
            for domain, model in expected.items():
                wanted = {key: shown(item) for key, item in model.items()}
                wrong = [(seen.get(domain, {}).get(key), entry) for key, entry in wanted.items() if seen.get(domain, {}).get(key) != entry]
                require(seen.get(domain) == wanted, f"{domain}: {wrong or seen.get(domain)}: {read(domain)!r}")

        models, files = {}, {}
        for number in range(LISTS):
            chance = random.Random(number)
            for form in ("xml", "binary", "old"):
                model = {"first": 1, **{f"{i} {chance.choice(TEXTS)}": value(chance, form != "binary") for i in range(chance.randint(0, 9))}}
                domain = f"{form}{number}"
                if form == "old":
                    model, files[domain] = only_old_style(model), old_style(model).encode()
                elif form == "binary":
                    files[domain] = plistlib.dumps(model, fmt=plistlib.FMT_BINARY, sort_keys=False)
                    model = plistlib.loads(files[domain])  # plistlib writes equal numbers once: 0.0 for -0.0
                else:
                    files[domain] = mutated(chance, plistlib.dumps(model, sort_keys=False))
                models[domain] = model
                with open(path(domain), "wb") as file:
                    file.write(files[domain])
        compare(models)

        edited = [f"{form}{number}" for form in ("xml", "binary", "old") for number in range(EDITED)]
        for action, extra in (("set", {"added": "value"}), ("remove", {})):
            refused = subprocess.run([editor, volume, action, *edited], check=True, capture_output=True, text=True).stdout
            require(not refused, f"{action}: not stored: {refused}")
            expected = {domain: {**models[domain], **extra} for domain in edited}
            compare(expected)
            for domain, model in expected.items():
                require(shown(plistlib.loads(read(domain))) == shown(model), f"{domain}: plistlib reads another value after {action}")
        for domain in edited:
            is_kept = domain.startswith("xml") and files[domain][:2] != b"\xff\xfe"
            require(not is_kept or read(domain) == files[domain], f"{domain}: bytes have changed")


main()
