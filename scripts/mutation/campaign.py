"""Planting faults: what became of each."""

import concurrent.futures
import dataclasses
import json
import sys
import time

from mutation import cases as testcases
from mutation import layout, sandbox
from mutation.faults import Fault

HISTORY = layout.WORKSPACE / "history.json"
DISCARDED = ("unbuildable", "unchanged")
TOGETHER = 12  # faults that are planted together for deferred tests
PIECE_SECONDS = 10.0
MOST_OBJECTS = 2  # that are compiled before the programs to see whether the fault changes them


@dataclasses.dataclass
class Outcome:
    """What became of a fault. `number` is its place in the order of the seed.

    `result` is "noticed", "survived", "equivalent", "unbuildable", "unchanged" (the object code) or, while the cases in `later`
    have not been run, "deferred".
    """

    number: int
    fault: Fault
    result: str
    note: str = ""
    seconds: float = 0.0
    later: list = dataclasses.field(default_factory=list)


class Pool:
    """Carries out work in threads, and ends the sandboxes when it is interrupted."""

    def __init__(self, jobs):
        self.jobs = jobs

    def __call__(self, work, items, label=None):
        """Yields each item with its result, in the order in which they are done; shows how far it is."""
        waiting = iter(items)
        total, done = len(items) if label else 0, 0
        with concurrent.futures.ThreadPoolExecutor(self.jobs) as executor:
            running = {}
            try:
                while True:
                    # asked for only when a thread is free, as what is done so far may decide what follows
                    while len(running) < self.jobs and (item := next(waiting, None)) is not None:
                        running[executor.submit(work, item)] = item
                    if not running:
                        return
                    for future in concurrent.futures.wait(running, return_when=concurrent.futures.FIRST_COMPLETED).done:
                        done += 1
                        if label:
                            print(f"mutate: {label}: {done} of {total} runs", file=sys.stderr)
                        yield running.pop(future), future.result()
            except BaseException:
                executor.shutdown(wait=False, cancel_futures=True)
                sandbox.end_all()
                raise


def load_history():
    """Returns for each source how many of its faults each test noticed."""
    try:
        return json.loads(HISTORY.read_text(encoding="utf-8"))
    except (OSError, ValueError):
        return {}


class Campaign:
    """One run over chosen faults. `reasons` are those of the reviewed equivalent changes."""

    def __init__(self, ranking, reasons, pool, thorough):
        self.ranking, self.reasons, self.pool, self.thorough = ranking, reasons, pool, thorough
        self.planted = 0

    def run(self, faults, count):
        """Yields the outcome of each numbered fault until `count` of them are planted; that of a deferred one once more.

        Discarded ones are replaced by the following ones. Which faults are chosen does not depend on the number of jobs.
        """
        deferred = []
        for _, outcome in self.pool(self._alone, self._chosen(faults, count)):
            if outcome.result in DISCARDED:
                self.planted -= 1
            if outcome.result == "deferred":
                deferred.append(outcome)
            self._remember(outcome)
            yield outcome
        for outcome in self._later(deferred):
            self._remember(outcome)
            yield outcome

    def _chosen(self, faults, count):
        """Yields faults until `count` are planted; None while that depends on faults that are being run."""
        for fault in faults:
            while self.planted >= count:
                yield None
            self.planted += 1
            yield fault

    def _alone(self, numbered):
        """Runs the most promising tests with a fault."""
        number, fault = numbered
        reason = self.reasons.get((fault.path, fault.before, fault.after))
        if reason is not None:
            return Outcome(number, fault, "equivalent", reason)
        began = time.monotonic()
        batches, later = self.ranking.batches(fault)
        result = sandbox.ask("fault", self._request([fault], batches))
        if self.thorough:
            asked = {case.label for batch in [*batches, later] for case in batch}
            later = later + [case for case in self.ranking.dependents(fault.path) if case.label not in asked]
        outcome = Outcome(number, fault, result["outcome"], _note(result), time.monotonic() - began, later)
        if outcome.result == "survived":
            outcome.result = "deferred" if later else "survived"
            outcome.note = "" if batches else "no test executes it"
        return outcome

    def _later(self, deferred):
        """Runs the deferred tests once with several faults, then those that fail with each fault alone; yields the outcomes."""
        groups = _groups(deferred)
        failing = [set() for _ in groups]
        shares = [(index, share) for index, group in enumerate(groups) for share in self._shares(group)]
        for (index, _), labels in self.pool(lambda item: self._failing(groups[item[0]], item[1]), shares, "long tests"):
            failing[index].update(labels)
        items = [(outcome, labels) for group, labels in zip(groups, failing) for outcome in group]
        for (outcome, _), result in self.pool(self._each, items):
            outcome.result, outcome.note = result["outcome"], _note(result)
            yield outcome

    def _shares(self, group):
        """Returns the deferred cases of a group in parts that take about the same time."""
        labels = {case.label for outcome in group for case in outcome.later}
        shares = [[] for _ in range(self.pool.jobs)]
        for case in sorted((case for case in self.ranking.cases if case.label in labels), key=lambda each: -each.seconds):
            min(shares, key=lambda share: sum(other.seconds for other in share)).append(case)
        return [share for share in shares if share]

    def _failing(self, group, cases):
        return sandbox.ask("failing", self._request([outcome.fault for outcome in group], _pieces(cases)))

    def _each(self, item):
        """Returns the result of the failing cases with one fault alone."""
        outcome, labels = item
        cases = [case for case in self.ranking.dependents(outcome.fault.path) if case.label in labels]
        if not cases:
            return {"outcome": "survived"}
        return sandbox.ask("fault", self._request([outcome.fault], [self.ranking.ordered(cases, outcome.fault)]))

    def _request(self, faults, batches):
        sources, objects = {}, []
        # a fault does not move those before it
        for fault in sorted(faults, key=lambda each: each.start, reverse=True):
            place = str(layout.TREE / fault.path)
            text = sources.get(place) or (layout.TREE / fault.path).read_text(encoding="utf-8")
            sources[place] = fault.planted_in(text)
            objects += self.ranking.graph.objects(fault.path)
        is_compared = len(faults) == 1 and faults[0].path.endswith(".cpp") and len(objects) <= MOST_OBJECTS
        compared = objects if is_compared else []
        return {
            "build": str(layout.BUILD), "sources": sources, "objects": compared,
            "compiled": compared or (_targets(batches[0]) if batches else objects[:1]),
            "batches": [{"targets": _targets(batch), "runs": testcases.runs(batch, _limit)} for batch in batches],
        }

    def _remember(self, outcome):
        """Notes in the history which test noticed the fault."""
        if outcome.result == "noticed":
            noticed = self.ranking.history.setdefault(outcome.fault.path, {})
            label = outcome.note.split(" (")[0]
            noticed[label] = noticed.get(label, 0) + 1
            HISTORY.write_text(json.dumps(self.ranking.history), encoding="utf-8")


def _groups(deferred):
    """Returns the outcomes in groups whose faults can be planted together: never two in one function."""
    groups = [[] for _ in range(-(-len(deferred) // TOGETHER))]
    for outcome in sorted(deferred, key=lambda each: each.number):
        fitting = [group for group in groups if not any(_is_near(outcome.fault, other.fault) for other in group)]
        if not fitting:
            groups.append([])
            fitting = groups[-1:]
        min(fitting, key=len).append(outcome)
    return groups


def _note(result):
    if result["outcome"] != "noticed":
        return ""
    return result["by"] + ("" if result["end"] == "failed" else f" ({result['end']})")


def _is_near(fault, other):
    return fault.path == other.path and fault.nearby[0] <= other.nearby[1] and other.nearby[0] <= fault.nearby[1]


def _pieces(cases):
    """Returns the cases in batches of little duration, so that a program that hangs is ended soon."""
    pieces, seconds = [[]], 0.0
    for case in cases:
        if seconds > PIECE_SECONDS:
            pieces.append([])
            seconds = 0.0
        pieces[-1].append(case)
        seconds += case.seconds
    return pieces


def _limit(cases):
    """Returns the seconds after which a program that runs the cases is taken to hang."""
    return 10 + 3 * sum(case.seconds for case in cases)


def _targets(cases):
    return sorted({target for case in cases for target in case.targets})
