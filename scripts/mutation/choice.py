"""Which faults are planted: a reproducible choice among all of the paths."""

import random
import sys

from mutation import layout
from mutation.faults import faults_of


def candidates(paths, root):
    """Returns all faults of the sources under the paths. A source that cannot be parsed is named on standard error."""
    found = []
    for path in layout.sources(paths, root):
        try:
            found += faults_of(path, (root / path).read_text(encoding="utf-8"))
        except ValueError as error:
            print(f"mutate: {path}: no faults can be found: {error}", file=sys.stderr)
    return found


def shuffled(faults, seed):
    """Returns the faults in the order of the seed; each place in the order is equally likely for each fault."""
    faults = list(faults)
    random.Random(seed).shuffle(faults)
    return faults
