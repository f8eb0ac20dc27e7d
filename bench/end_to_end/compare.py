#!/usr/bin/python3
"""Compares the host tool with scripts of the same effect: compare.py XCODHOST BUNDLE [RUNS].

Each implementation delivers both installer events to a sample volume of its own. The resulting volumes are compared, and then
the implementations are timed in turn.
"""

import os
import pathlib
import plistlib
import resource
import statistics
import subprocess
import sys
import tempfile

here = pathlib.Path(__file__).parent
host, bundle = sys.argv[1:3]
runs = int(sys.argv[3]) if len(sys.argv) > 3 else 40

IMPLEMENTATIONS = {
    "xcodhost run": lambda volume: [host, "run", bundle, "--product", "4900", "--language", "11", "--volume", volume],
    "shell": lambda volume: [str(here / "by_shell"), volume],
    "Python": lambda volume: ["/usr/bin/python3", str(here / "by_python"), volume],
}


def state(volume):
    """Returns all preferences of a volume and the Finder information of its items."""
    lists = pathlib.Path(volume, "Library/Preferences").glob("*.plist")
    items = pathlib.Path(volume, "Applications").rglob("*")
    return ({file.name: plistlib.loads(file.read_bytes()) for file in lists},
            {item.name: os.getxattr(item, "user.com.apple.FinderInfo") for item in items})


def processor_time(command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    with tempfile.TemporaryDirectory() as folder:
        volumes = {name: os.path.join(folder, name) for name in IMPLEMENTATIONS}
        for name, volume in volumes.items():
            subprocess.run([host, "volume", volume, "--status", "UpdatesEnabled"], check=True, stdout=subprocess.DEVNULL)
            subprocess.run(IMPLEMENTATIONS[name](volume), check=True, stdout=subprocess.DEVNULL)
        expected = state(volumes["xcodhost run"])
        times = {name: [] for name in IMPLEMENTATIONS}
        for _ in range(runs):
            for name, volume in volumes.items():
                times[name].append(processor_time(IMPLEMENTATIONS[name](volume)))
        ours = statistics.median(times["xcodhost run"])
        for name, volume in volumes.items():
            median = statistics.median(times[name])
            differs = "" if state(volume) == expected else "  (with a different result)"
            verdict = "" if name == "xcodhost run" else f"  {median / ours:.1f} times ours (>= 5: {'met' if median >= 5 * ours else 'MISSED'})"
            print(f"{name:<14} {median * 1000:6.2f} ms of processor time{verdict}{differs}")


main()
