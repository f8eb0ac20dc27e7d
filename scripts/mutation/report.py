"""Lines about outcomes: progress, survivors and counts."""


def progress(done, count, outcome):
    """Returns a line for a fault that was dealt with."""
    note = f" ({outcome.note})" if outcome.note else ""
    later = f" for {len(outcome.later)} long tests" if outcome.result == "deferred" else ""
    return (f"[{done:3}/{count}] #{outcome.number} {outcome.fault.path}:{outcome.fault.line} {outcome.fault.kind}: "
            f"{outcome.result}{later}{note}, {outcome.seconds:.1f} s")


def change(fault):
    """Returns the place, kind and effect of a fault in one line."""
    return f"{fault.path}:{fault.line}: {fault.kind}: {fault.before}  ->  {fault.after}"


def numbered(number, fault):
    """Returns a line that names a fault by its number."""
    return f"#{number} {change(fault)}"


def survivor(outcome):
    """Returns the line for a fault that nothing noticed."""
    return numbered(outcome.number, outcome.fault) + (f"  [{outcome.note}]" if outcome.note else "")


class Counts:
    """How many faults had each outcome."""

    def __init__(self, outcomes):
        names = [outcome.result for outcome in outcomes]
        self.noticed, self.survived = names.count("noticed"), names.count("survived")
        self.equivalent = names.count("equivalent")
        self.unbuildable, self.unchanged = names.count("unbuildable"), names.count("unchanged")
        self.planted = self.noticed + self.survived + self.equivalent + names.count("deferred")

    @property
    def percent(self):
        """The share of survivors among the faults that are not known to be equivalent."""
        counted = self.planted - self.equivalent
        return 100 * self.survived / counted if counted else 0.0

    def lines(self):
        """Returns the counts as text."""
        return [
            f"planted {self.planted}, noticed {self.noticed}, survived {self.survived}, reviewed as equivalent {self.equivalent}",
            f"replaced: {self.unbuildable} that did not compile, {self.unchanged} that left the object code as it was",
            f"survivors: {self.percent:.1f} % of {self.planted - self.equivalent}",
        ]
