"""Which test cases run for a fault, and in which order."""

import functools

BATCHES = ((1.5, 2), (6.0, 6))  # seconds and programs of the batches that are run for each fault
FEW = 5.0  # seconds of further cases that are not worth being deferred
LOADING = 0.1  # seconds that a case costs beside its own duration


class Ranking:
    """The cases of a build with what each executes. `bases` has the number of the first statement of each traced source."""

    def __init__(self, cases, graph, bases, history):
        self.cases, self.graph, self.bases, self.history = cases, graph, bases, history
        self.sources = {targets: graph.sources(targets) for targets in {case.targets for case in cases}}

    def dependents(self, path):
        """Returns the cases whose code is compiled from the file."""
        return [case for case in self.cases if path in self.sources[case.targets]]

    @functools.lru_cache(maxsize=None)  # noqa: B019, one ranking lives as long as the process
    def _frequency(self, number):
        """Returns how many cases execute the statement."""
        return sum(1 for case in self.cases if case.hits is not None and case.hits >> number & 1)

    def covering(self, fault):
        """Returns the cases that can notice the fault, and whether there cannot be others.

        A fault within a statement is noticed only by cases that execute it. Other faults, such as those of tables, act
        through any code: the cases that execute code of the file come first, but all that depend on it are asked.
        """
        cases, base = self.dependents(fault.path), self.bases.get(fault.path)
        if base is None:
            return cases, True
        if fault.statement is not None:
            number = base + fault.statement
            return [case for case in cases if case.hits is None or case.hits >> number & 1], True
        return cases, False

    def _score(self, case, fault):
        """Returns how likely the case is to notice the fault: it executes statements near it that few cases execute."""
        base = self.bases.get(fault.path)
        if case.hits is None or base is None:
            return 0.0
        first, last = fault.nearby
        near = case.hits >> (base + first) & ((1 << (last - first + 1)) - 1)
        numbers = (number for number in range(last - first + 1) if near >> number & 1)
        return sum(1 / self._frequency(base + first + number) for number in numbers)

    def ordered(self, cases, fault):
        """Returns the cases with the most promising first: those that noticed faults of the file, then by score and cost."""
        noticed = self.history.get(fault.path, {})

        def rank(case):
            cost = LOADING + case.seconds
            return -noticed.get(case.label, 0) / cost, -self._score(case, fault) / cost, cost

        return sorted(cases, key=rank)

    def batches(self, fault):
        """Returns lists of cases to be run one after the other until one notices the fault, and the cases left for later."""
        cases, _ = self.covering(fault)
        waiting = self.ordered(cases, fault)
        batches = []
        for seconds, most in BATCHES:
            batch, later, programs, left = [], [], set(), seconds
            for case in waiting:
                fits = (left >= case.seconds or not batch) and (case.program in programs or len(programs) < most)
                (batch if fits else later).append(case)
                if fits:
                    programs.add(case.program)
                    left -= case.seconds
            if batch:
                batches.append(batch)
            waiting = later
        if waiting and sum(case.seconds for case in waiting) <= FEW:
            return [*batches, waiting], []
        return batches, waiting
