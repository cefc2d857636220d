#!/usr/bin/env python3
"""Measures a warm worker against programs that learn the same of the same file.

`bench/worker.py WORKER FILE...`: for each PDF processor time of an answer (of the worker and its child, the start of the
worker taken off), of `mutool info` (the start of mutool taken off) and of Ghostscript's inkcov as a process. Medians.
"""

import json
import resource
import statistics
import subprocess
import sys

ANSWERS = 20
ROUNDS = 7


def cost(command, data=b""):
    """Processor milliseconds of a process and all its children."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, input=data, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return 1000 * (after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)


def answer(worker, path):
    request = json.dumps({"command": "parse", "pdl": 6, "jobPath": path, "grayscaleTolerance": 0}).encode() + b"\n"
    return (cost([worker], request * (ANSWERS + 1)) - cost([worker], request)) / ANSWERS


def main():
    worker, *paths = sys.argv[1:]
    print("| file | answer, ms | to mutool info's work | to inkcov |\n|---|---|---|---|")
    for path in paths:
        rows = []
        for _ in range(ROUNDS):
            info = cost(["mutool", "info", path]) - cost(["mutool", "-v"])
            inkcov = cost(["gs", "-q", "-dSAFER", "-o", "/dev/null", "-sDEVICE=inkcov", path])
            rows.append((answer(worker, path), info, inkcov))
        ours, info, inkcov = (statistics.median(column) for column in zip(*rows))
        print(f"| {path.rsplit('/', 1)[-1]} | {ours:.2f} | {ours / max(info, 0.01):.2f} | {ours / inkcov:.3f} |")


if __name__ == "__main__":
    main()
