"""Test cases: what ctest would run, which files each depends on, and how to run several in one process."""

import dataclasses
import hashlib
import json
import os
import re
import subprocess

from mutation import layout
from mutation.builds import BuildFailed

FILTER = "--gtest_filter="


@dataclasses.dataclass
class Case:
    """A test of ctest. `filter` is its name within a gtest program, or None for another program.

    `program` is what its cases share: the path of the gtest program, or the name of the test. `targets` are the built files
    that the command names. `seconds` is its duration without a fault; `hits` has one bit for each statement that it
    executes, or is None when that is not known.
    """

    name: str
    program: str
    filter: str | None
    command: list
    directory: str
    environment: dict
    targets: tuple
    seconds: float = 0.0
    hits: int | None = None

    @property
    def label(self):
        """The name by which results of runs refer to the case."""
        return self.filter or self.program


def _ninja(build, *arguments):
    done = subprocess.run(["ninja", "-C", str(build), *arguments], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise BuildFailed(f"ninja {' '.join(arguments)}: {done.stdout[-500:]}{done.stderr[-500:]}")
    return [line for line in done.stdout.splitlines() if not line.startswith("ninja: ")]


class Graph:
    """What the files of a build directory are made from."""

    def __init__(self, build, tree):
        self.build, self.tree = build, tree
        rules = dict(line.rsplit(": ", 1) for line in _ninja(build, "-t", "targets", "all"))
        self.built = {name for name, rule in rules.items() if rule != "phony"}
        self.headers = self._headers()
        self._inputs, self._keys = {}, {}

    def _headers(self):
        """Returns the files of the tree that each object includes, its source among them."""
        headers, target = {}, None
        for line in _ninja(self.build, "-t", "deps"):
            if line and not line.startswith(" "):
                target = line.split(": #deps")[0]
                headers[target] = set()
            elif line.strip().startswith(f"{self.tree}/"):
                headers[target].add(os.path.relpath(line.strip(), self.tree))
        return headers

    def inputs(self, targets):
        """Returns all built files that the targets are made from or need at run time, the targets included."""
        if targets not in self._inputs:
            self._inputs[targets] = {name for name in _ninja(self.build, "-t", "inputs", *targets) if name in self.built} | set(targets)
        return self._inputs[targets]

    def sources(self, targets):
        """Returns the files of the tree that the code of the targets is compiled from."""
        return set().union(*(self.headers.get(name, ()) for name in self.inputs(targets)))

    def objects(self, source):
        """Returns the objects that are compiled from a source or include it."""
        return sorted(name for name, files in self.headers.items() if source in files)

    def key(self, targets):
        """Returns a digest of the linked files that the targets need."""
        if targets not in self._keys:
            linked = sorted(name for name in self.inputs(targets) - set(self.headers) if (self.build / name).is_file())
            self._keys[targets] = digest_of(self.build, linked)
        return self._keys[targets]


def digest_of(directory, names):
    """Returns a digest of the names and contents of files."""
    digest = hashlib.blake2b(digest_size=16)
    for name in names:
        digest.update(name.encode() + b"\0" + (directory / name).read_bytes() + b"\0")
    return digest.hexdigest()


def listed(build, graph):
    """Returns the test cases of a build, and the names of the tests that do not depend on built files."""
    done = subprocess.run(["ctest", "--test-dir", str(build), "--show-only=json-v1"], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise BuildFailed(f"ctest cannot list the tests: {done.stderr[-2000:]}")
    cases, left_out = [], []
    for test in json.loads(done.stdout)["tests"]:
        case = _case(build, graph, test)
        if case.targets:
            cases.append(case)
        else:
            left_out.append(case.name)
    return cases, left_out


def _case(build, graph, test):
    command = test.get("command", [])
    properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
    names = [os.path.relpath(word, build) for word in command if word.startswith(f"{build}/")]
    targets = tuple(name for name in names if name in graph.built)
    chosen = [word.removeprefix(FILTER) for word in command if word.startswith(FILTER)]
    environment = dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", []))
    return Case(test["name"], command[0] if chosen else test["name"], chosen[0] if chosen else None, command,
                properties.get("WORKING_DIRECTORY", str(build)), environment, targets)


def runs(cases, limit):
    """Returns how to run the cases, each program once, as a session is asked for it. `limit` gives seconds for cases."""
    programs = {}
    for case in cases:
        programs.setdefault(case.program, []).append(case)
    return [_run(group, limit(group)) for group in programs.values()]


def _run(group, seconds):
    first = group[0]
    filters = [case.filter for case in group] if first.filter is not None else None
    return {"program": first.program, "command": first.command, "filters": filters, "directory": first.directory,
            "environment": first.environment, "seconds": seconds}


def command(run):
    """Returns the command line of a run."""
    if run["filters"] is None:
        return run["command"]
    return [run["command"][0], FILTER + ":".join(run["filters"]), "--gtest_color=no"]


def durations(output):
    """Returns the seconds of each case that passed or was skipped, as a gtest program prints them."""
    found = re.findall(r"^\[(?:       OK |  SKIPPED )\] (\S+?)(?:, where .*)? \((\d+) ms\)$", output, re.MULTILINE)
    return {name: int(milliseconds) / 1000 for name, milliseconds in found}


def noticing(run, output):
    """Returns the labels of the cases of a run that failed or were running when the program ended."""
    if run["filters"] is None:
        return [run["program"]]
    failed = re.findall(r"^\[  FAILED  \] (\S+?)(?:, where .*)? \(\d+ ms\)$", output, re.MULTILINE)
    started = re.findall(r"^\[ RUN      \] (\S+)$", output, re.MULTILINE)
    if not failed and started and started[-1] not in durations(output):
        failed = [started[-1]]
    return failed or run["filters"]
