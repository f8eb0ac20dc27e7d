"""Copies of the tree and their builds."""

import os
import re
import shutil
import subprocess

from mutation import layout, trace

FLAGS = "-w -DNDEBUG"
OPTIMIZED = "-O1"  # faults that the compiler proves to have no effect leave the object code as it was
LINKERS = (("mold", "mold"), ("ld.lld", "lld"), ("ld.gold", "gold"))  # fastest first
ROUNDS = 8  # of leaving out sources that cannot be traced


class BuildFailed(Exception):
    """The tree cannot be built as it is; the message says why."""


def files():
    """Returns the files of the working tree that are not ignored, relative to the root."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=layout.ROOT,
                            capture_output=True, text=True, check=True).stdout
    return sorted(name for name in set(listed.split("\0")) if name and (layout.ROOT / name).is_file())


def _remove_others(copy, names):
    for place in list(copy.rglob("*")):
        name = place.relative_to(copy).as_posix()
        if name.split("/")[0] != ".git" and not place.is_dir() and name not in names:
            place.unlink()


def refresh(copy, changed=lambda name, data: data):
    """Brings a copy up to date with the working tree, writing only files that differ.

    `changed` returns the bytes that a file has in the copy. The copy is a repository of its own, as some tests list its files.
    """
    copy.mkdir(parents=True, exist_ok=True)
    names = files()
    _remove_others(copy, set(names))
    for name in names:
        source, target = layout.ROOT / name, copy / name
        data = changed(name, source.read_bytes())
        if not target.exists() or target.read_bytes() != data:
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(data)
        shutil.copymode(source, target)
    if not (copy / ".git").exists():
        subprocess.run(["git", "init", "--quiet"], cwd=copy, check=True)
    subprocess.run(["git", "add", "--all"], cwd=copy, check=True)


def _linker():
    for program, name in LINKERS:
        if shutil.which(program):
            return f"-fuse-ld={name}"
    return ""


def _configure(copy, build, flags):
    """Configures a build directory, from the beginning if it was configured with other settings."""
    settings = {"CMAKE_BUILD_TYPE": "None", "CMAKE_CXX_FLAGS": f"{FLAGS} {flags}".strip(), "KELBASE_WERROR": "OFF",
                "KELBASE_INSTALL": "OFF", "CMAKE_LINK_DEPENDS_NO_SHARED": "ON", "CMAKE_CXX_COMPILER_LAUNCHER": "",
                # or the link of a faulty test program would run it
                "CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE": "PRE_TEST"}
    settings |= {f"CMAKE_{kind}_LINKER_FLAGS": _linker() for kind in ("EXE", "SHARED", "MODULE")}
    command = ["cmake", "-S", str(copy), "-B", str(build), "-G", "Ninja", "-Wno-dev",
               *(f"-D{name}={value}" for name, value in settings.items())]
    record = build / "configured.txt"
    if (build / "build.ninja").exists() and record.exists() and record.read_text() == "\n".join(command):
        return
    shutil.rmtree(build, ignore_errors=True)
    build.mkdir(parents=True)
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        raise BuildFailed(f"the copy cannot be configured\n{done.stdout[-3000:]}")
    record.write_text("\n".join(command))


def _build(build, jobs):
    """Returns the output of a failed build, or None."""
    done = subprocess.run(["ninja", "-C", str(build), f"-j{jobs}"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False)
    return None if done.returncode == 0 else f"{done.stdout}ninja ended with status {done.returncode}"


def prepare(jobs):
    """Refreshes the copy that faults are planted in, and builds it. Throws BuildFailed."""
    layout.SCRATCH.mkdir(parents=True, exist_ok=True)
    refresh(layout.TREE)
    _configure(layout.TREE, layout.BUILD, OPTIMIZED)
    problem = _build(layout.BUILD, jobs)
    if problem:
        raise BuildFailed(f"the tree does not build\n{problem[-3000:]}")


class _Tracing:
    """The traced copy while it is made: the numbers of the statements, and the sources that are left as they are."""

    def __init__(self):
        self.sources = set(layout.sources(layout.PATHS))
        self.untraced = set()
        self._begin()

    def _begin(self):
        self.bases, self.next = {}, 0

    def changed(self, name, data):
        if name not in self.sources or name in self.untraced:
            return data
        text, count = trace.traced(data.decode(), self.next)
        self.bases[name] = self.next
        self.next += count
        return text.encode()

    def make(self, jobs):
        """Returns the output of a failed build, or None."""
        self._begin()
        refresh(layout.TRACED_TREE, self.changed)
        _configure(layout.TRACED_TREE, layout.TRACED_BUILD, trace.flags(layout.TRACED_TREE / "scripts/mutation/trace.h"))
        return _build(layout.TRACED_BUILD, jobs)


def prepare_traced(jobs):
    """Refreshes and builds the traced copy. Returns the number of the first statement of each traced source.

    A source that does not compile with its records is left without them. Throws BuildFailed.
    """
    tracing = _Tracing()
    for _ in range(ROUNDS):
        problem = tracing.make(jobs)
        if not problem:
            return tracing.bases
        named = re.findall(rf"^{re.escape(str(layout.TRACED_TREE))}/([^:\n]+):\d+", problem, re.MULTILINE)
        named = {os.path.normpath(name) for name in named} & set(tracing.bases)
        if not named:
            break
        tracing.untraced |= named
    raise BuildFailed(f"the traced copy does not build\n{problem[-3000:]}")
