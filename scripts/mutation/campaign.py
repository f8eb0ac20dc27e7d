"""Planting faults one after the other: what became of each."""

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
MOST_OBJECTS = 2  # that are compiled before the programs to see whether the fault changes them


@dataclasses.dataclass
class Outcome:
    """What became of a fault. `number` is its place in the order of the seed; `noticed_by` is a test, or how it was noticed."""

    number: int
    fault: Fault
    result: str
    noticed_by: str = ""
    seconds: float = 0.0
    reason: str = ""


class Pool:
    """Carries out work in threads, shows how far it is, and ends the sandboxes when it is interrupted."""

    def __init__(self, jobs):
        self.jobs = jobs

    def __call__(self, work, items, label):
        """Yields each item with its result, in the order in which they are done."""
        with concurrent.futures.ThreadPoolExecutor(self.jobs) as executor:
            waiting = {executor.submit(work, item): item for item in items}
            try:
                for done, future in enumerate(concurrent.futures.as_completed(waiting), 1):
                    print(f"mutate: {label}: {done} of {len(waiting)} runs", file=sys.stderr)
                    yield waiting[future], future.result()
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

    def __init__(self, ranking, reasons, jobs, thorough):
        self.ranking, self.reasons, self.jobs, self.thorough = ranking, reasons, jobs, thorough

    def run(self, faults, count):
        """Yields the outcome of each numbered fault until `count` of them were planted.

        Discarded ones are replaced by the following ones. Which faults are chosen does not depend on the number of jobs.
        """
        waiting, planted = iter(faults), 0
        with concurrent.futures.ThreadPoolExecutor(self.jobs) as executor:
            running = set()
            try:
                while True:
                    while len(running) < self.jobs and planted < count and (chosen := next(waiting, None)):
                        running.add(executor.submit(self._outcome, *chosen))
                        planted += 1
                    if not running:
                        return
                    done, running = concurrent.futures.wait(running, return_when=concurrent.futures.FIRST_COMPLETED)
                    for future in done:
                        outcome = future.result()
                        planted -= outcome.result in DISCARDED
                        self._remember(outcome)
                        yield outcome
            except BaseException:
                executor.shutdown(wait=False, cancel_futures=True)
                sandbox.end_all()
                raise

    def _outcome(self, number, fault):
        reason = self.reasons.get((fault.path, fault.before, fault.after))
        if reason is not None:
            return Outcome(number, fault, "equivalent", reason=reason)
        began = time.monotonic()
        result = sandbox.ask(self._request(fault))
        outcome = Outcome(number, fault, result["outcome"], seconds=time.monotonic() - began)
        if outcome.result == "noticed":
            names = testcases.noticing(result)
            outcome.noticed_by = (names[0] if names else result["program"].rsplit("/", 1)[-1])
            outcome.noticed_by += "" if result["end"] == "failed" else f" ({result['end']})"
        elif outcome.result == "survived" and not self.ranking.covering(fault)[0]:
            outcome.reason = "no test executes it"
        return outcome

    def _request(self, fault):
        ranking = self.ranking
        batches = ranking.batches(fault)
        if self.thorough:
            asked = {case.name for batch in batches for case in batch}
            rest = [case for case in ranking.dependents(fault.path) if case.name not in asked]
            batches += [rest] if rest else []
        objects = ranking.graph.objects(fault.path)
        compared = objects if fault.path.endswith(".cpp") and len(objects) <= MOST_OBJECTS else []
        text = (layout.TREE / fault.path).read_text(encoding="utf-8")
        return {
            "build": str(layout.BUILD), "source": str(layout.TREE / fault.path), "text": fault.planted_in(text),
            "objects": compared, "compiled": compared or (batches[0] and _targets(batches[0]) if batches else objects[:1]),
            "batches": [{"targets": _targets(batch), "runs": testcases.runs(batch, _limit)} for batch in batches],
        }

    def _remember(self, outcome):
        """Notes in the history which test noticed the fault."""
        if outcome.result == "noticed":
            noticed = self.ranking.history.setdefault(outcome.fault.path, {})
            name = outcome.noticed_by.split(" (")[0]
            noticed[name] = noticed.get(name, 0) + 1
            HISTORY.write_text(json.dumps(self.ranking.history), encoding="utf-8")


def _limit(cases):
    """Returns the seconds after which a program that runs the cases has been noticed to hang."""
    return 10 + 3 * sum(case.seconds for case in cases)


def _targets(cases):
    return sorted({target for case in cases for target in case.targets})
