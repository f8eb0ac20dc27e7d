"""Names of directories: where the sources are and where scripts/mutate keeps its files."""

import pathlib

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

# Directories with the sources that faults are planted in.
PATHS = ("src", "PostInstall", "platform/linux", "platform/include", "xcodhost")

EQUIVALENTS = ROOT / "scripts" / "mutate-equivalents.txt"

# Everything that a run keeps: the copy of the tree, two build directories, and what was learnt of the tests.
WORKSPACE = ROOT / "build" / "mutate"
TREE = WORKSPACE / "tree"  # the copy that faults are planted in
BUILD = WORKSPACE / "build"
TRACED_TREE = WORKSPACE / "traced-tree"  # the copy that records which statements each test executes
TRACED_BUILD = WORKSPACE / "traced-build"
SCRATCH = WORKSPACE / "scratch"  # an empty directory; each sandbox mounts its own file system there


def sources(paths, root=ROOT):
    """Returns the .cpp and .h files under the paths as sorted texts relative to the root.

    Throws FileNotFoundError for a path that does not exist.
    """
    found = set()
    for path in paths:
        place = root / path
        if not place.exists():
            raise FileNotFoundError(f"{path}: no such file or directory")
        files = [place] if place.is_file() else place.rglob("*")
        found.update(file.relative_to(root).as_posix() for file in files if file.suffix in (".cpp", ".h") and file.is_file())
    return sorted(found)
