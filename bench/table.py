#!/usr/bin/python3
"""Prints one line for each job from the JSON documents of the benchmarks: table.py TARGETS DOCUMENT..."""

import collections
import json
import sys

UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def read_targets(path):
    """Returns the jobs in order, each with its noise and a list of (our implementation, peer, target ratio or None)."""
    targets = collections.OrderedDict()
    usual = 0
    for line in open(path):
        job, *words = line.split("#")[0].split() or [""]
        if job == "noise":
            usual = float(words[0])
        if job in ("", "noise"):
            continue
        noise, peers = usual, []
        for word, following in zip(words, words[1:] + [""]):
            if word == "noise":
                noise = float(following)
                break
            if word.replace(".", "", 1).isdigit():
                peers[-1][2] = float(word)
            else:
                ours, _, peer = word.rpartition("=")
                peers.append([ours or "ours", peer, None])
        targets[job] = noise, peers
    return targets


def read_medians(paths):
    """Returns (job, implementation) -> (nanoseconds of processor time for an item, whether the result differs from ours)."""
    medians = {}
    for path in paths:
        text = open(path).read()  # empty if no job of the program was selected
        for run in json.loads(text)["benchmarks"] if text else []:
            if run.get("aggregate_name", "median") != "median" or "/" not in run["run_name"]:
                continue
            job, who = run["run_name"].split("/", 1)
            time = run["cpu_time"] * UNITS[run["time_unit"]] / run.get("items", 1)
            medians[job, who] = time, run.get("label") == "differs"
    return medians


def figure(nanoseconds):
    """Returns a time with three significant digits."""
    return f"{nanoseconds:.3g}" if nanoseconds < 100 else f"{nanoseconds:.0f}"


def comparison(medians, job, ours, peer, target):
    """Returns the text for one peer, and by which part of the target our ratio exceeds it (None without a target or peer)."""
    if (job, ours) not in medians or (job, peer) not in medians:
        return f"{peer} -", None
    time, differs = medians[job, peer]
    ratio = medians[job, ours][0] / time
    words = f"{peer}{'~' if differs else ''} {figure(time)} {ratio:.2f}"
    if ours != "ours":
        words = f"{ours} {figure(medians[job, ours][0])}: {words}"
    if target is None:
        return words, None
    return f"{words} (<= {target:.2f})", round(round(ratio, 2) / target - 1, 3)


def verdict(excesses, noise):
    if not excesses:
        return "-"
    return "met" if max(excesses) <= 0 else "noise" if max(excesses) <= noise else "MISSED"


def main():
    targets = read_targets(sys.argv[1])
    medians = read_medians(sys.argv[2:])
    verdicts = collections.Counter()
    for job, (noise, peers) in targets.items():
        if (job, "ours") not in medians:
            continue
        results = [comparison(medians, job, *peer) for peer in peers]
        outcome = verdict([excess for _, excess in results if excess is not None], noise)
        verdicts[outcome] += 1
        print(f"{job:<26} {outcome:<6} ours {figure(medians[job, 'ours'][0]):>6} | " + " | ".join(w for w, _ in results))
    held = verdicts.total() - verdicts["-"]
    print(f"{verdicts['met']} of {held} jobs meet all their targets.")
    print(f"{verdicts['noise']} jobs exceed a target by less than their noise. {verdicts['MISSED']} jobs miss a target.")
    print("Times are medians of processor time in nanoseconds per item (for sorting: in milliseconds per run).")
    print("The time of each peer is followed by our time divided by it, and by the target in parentheses.")
    print("~: the result of the peer differs from ours.")


main()
