#!/usr/bin/python3
"""Prints one line a job from the benchmarks' JSON documents: table.py TARGETS DOCUMENT..."""

import collections
import json
import sys

UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def read_targets(path):
    """The jobs in their order, each with (who of ours, peer, most that ours may be of the peer, or None)."""
    targets = collections.OrderedDict()
    for line in open(path):
        words = line.split("#")[0].split()
        if not words:
            continue
        peers = targets.setdefault(words[0], [])
        for word in words[1:]:
            if word.replace(".", "", 1).isdigit():
                peers[-1][2] = float(word)
            else:
                ours, _, peer = word.rpartition("=")
                peers.append([ours or "ours", peer, None])
    return targets


def read_medians(paths):
    """(job, who) -> (nanoseconds of processor time an item, whether the result differs from ours)."""
    medians = {}
    for path in paths:
        text = open(path).read()  # empty where no job of the program was asked for
        for run in json.loads(text)["benchmarks"] if text else []:
            if run.get("aggregate_name", "median") != "median" or "/" not in run["run_name"]:
                continue
            job, who = run["run_name"].split("/", 1)
            time = run["cpu_time"] * UNITS[run["time_unit"]] / run.get("items", 1)
            medians[job, who] = time, run.get("label") == "differs"
    return medians


def figure(nanoseconds):
    return f"{nanoseconds:.3g}" if nanoseconds < 100 else f"{nanoseconds:.0f}"


def comparison(medians, job, ours, peer, target):
    """The words on one peer, and whether the target is met (None: no target, or no such peer here)."""
    if (job, ours) not in medians or (job, peer) not in medians:
        return f"{peer} -", None
    time, differs = medians[job, peer]
    ratio = medians[job, ours][0] / time
    words = f"{peer}{'~' if differs else ''} {figure(time)} {ratio:.2f}"
    if ours != "ours":
        words = f"{ours} {figure(medians[job, ours][0])}: {words}"
    if target is None:
        return words, None
    return f"{words} (<= {target:.2f})", round(ratio, 2) <= target


def main():
    targets = read_targets(sys.argv[1])
    medians = read_medians(sys.argv[2:])
    met = missed = 0
    for job, peers in targets.items():
        if (job, "ours") not in medians:
            continue
        results = [comparison(medians, job, *peer) for peer in peers]
        verdicts = [verdict for _, verdict in results if verdict is not None]
        verdict = "-" if not verdicts else "met" if all(verdicts) else "MISSED"
        met += verdict == "met"
        missed += verdict == "MISSED"
        print(f"{job:<26} {verdict:<6} ours {figure(medians[job, 'ours'][0]):>6} | " + " | ".join(w for w, _ in results))
    print(f"{met} of {met + missed} jobs meet all their targets. Times are nanoseconds an item (milliseconds where a job sorts),")
    print("medians of processor time; behind each peer's stands ours divided by it, and in brackets the target.")
    print("~: the peer's result is another one.")


main()
