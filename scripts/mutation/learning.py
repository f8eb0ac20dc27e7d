"""What the tests do without a fault: whether they pass, how long each takes, and which statements each executes."""

import hashlib
import json
import sys

from mutation import builds, layout, sandbox, trace
from mutation import cases as testcases

FIRST_LIMIT = 60  # seconds for a program and again for each of its cases, whose durations are not known yet
SHARE = 16  # cases of one program that are run by one request
MEMORY = layout.WORKSPACE / "cases.json"


class NotGreen(Exception):
    """Tests fail without any fault; the message names them."""


class Memory:
    """What was learnt of each case by its name, kept between runs. Saved at the end of a `with` statement."""

    def __enter__(self):
        try:
            self.cases = json.loads(MEMORY.read_text(encoding="utf-8"))
        except (OSError, ValueError):
            self.cases = {}
        return self

    def __exit__(self, *_):
        MEMORY.write_text(json.dumps(self.cases), encoding="utf-8")

    def get(self, case, name):
        return self.cases.get(case.name, {}).get(name)

    def set(self, case, **values):
        self.cases.setdefault(case.name, {}).update(values)


def _keys(graph, cases):
    """Returns for each case a digest of all that it depends on. Tests that are no gtest programs may read any file of the tree."""
    tree = testcases.digest_of(graph.tree, builds.files())
    return {case.name: graph.key(case.targets) + (tree if case.filter is None else "") for case in cases}


def _groups(cases, share=SHARE):
    """Returns the cases in groups that are run by one request each."""
    programs = {}
    for case in cases:
        programs.setdefault(case.program, []).append(case)
    return [group[first : first + share] for group in programs.values() for first in range(0, len(group), share)]


def _first_limit(cases):
    return FIRST_LIMIT * (1 + len(cases))


def _run_groups(pool, groups, memory, keys, label):
    """Runs each group in one process and notes the seconds of the cases that pass; returns the others with how they ended."""
    others = []

    def ask(group):
        return sandbox.ask("learning", {"runs": testcases.runs(group, _first_limit)})[0]

    for group, result in pool(ask, groups, label):
        seconds = testcases.durations(result["output"])
        for case in group:
            whole = result["seconds"] if result["end"] == "passed" else None
            took = whole if case.filter is None else seconds.get(case.filter)
            if took is None:
                others.append((case, result["end"]))
            else:
                memory.set(case, key=keys[case.name], seconds=took)
    return others


def measure(pool, graph, cases):
    """Runs the cases that changed since they were last run, and sets the seconds of all.

    A case that does not pass is run once more, alone. Throws NotGreen for those that fail again.
    """
    keys = _keys(graph, cases)
    with Memory() as memory:
        unknown = [case for case in cases if memory.get(case, "key") != keys[case.name]]
        others = _run_groups(pool, _groups(unknown), memory, keys, "tests without a fault")
        again = [case for case, _ in others]
        failed = _run_groups(pool, _groups(again, share=1), memory, keys, "tests that did not pass")
        for name in sorted({case.name for case in again} - {case.name for case, _ in failed}):
            print(f"mutate: warning: {name} did not pass at first", file=sys.stderr)
        if failed:
            raise NotGreen("tests fail without a fault:\n  " + "\n  ".join(f"{case.name} ({end})" for case, end in failed))
        for case in cases:
            case.seconds = memory.get(case, "seconds")


def follow(pool, graph, cases, bases):
    """Runs the cases of the traced copy that changed since they were last run; returns the hits of each name.

    A case that does not pass there has no hits: what it executes is not known.
    """
    numbering = hashlib.blake2b(json.dumps(sorted(bases.items())).encode(), digest_size=16).hexdigest()
    keys = {name: key + numbering for name, key in _keys(graph, cases).items()}

    def ask(group):
        runs = [testcases.runs([case], _first_limit)[0] for case in group]
        return sandbox.ask("learning", {"runs": runs, "hits": trace.FILE, "size": trace.SIZE})

    with Memory() as memory:
        unknown = [case for case in cases if memory.get(case, "traced") != keys[case.name]]
        for group, results in pool(ask, _groups(unknown), "statements that tests execute"):
            for case, result in zip(group, results):
                memory.set(case, traced=keys[case.name], hits=result["hits"])
        hits = {case.name: memory.get(case, "hits") for case in cases}
    return {name: int(number, 16) if number else None for name, number in hits.items()}
