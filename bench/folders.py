#!/usr/bin/env python3
"""Measures how much faster `jobparser scan` goes through folders on two threads than on one.

    bench/folders.py build/release/bin/jobparser FOLDER

Copies the jobs of the folder a hundred times. In each round one thread, two threads, and two processes with half of
the copies each go over them in turns, in changing order. Prints the medians of their gain over one thread in the same
round, and of the processor time that they take of its.
"""

import argparse
import os
import pathlib
import random
import shutil
import statistics
import subprocess
import tempfile
import time


def children_time():
    times = os.times()
    return times.children_user + times.children_system


def run_together(commands):
    processor, start = children_time(), time.perf_counter()
    processes = [subprocess.Popen(command, stdout=subprocess.DEVNULL) for command in commands]
    if any([process.wait() for process in processes]):
        raise SystemExit(f"{commands[0][0]} failed")
    return time.perf_counter() - start, children_time() - processor


def measure(tool, copies, rounds):
    scan = [os.path.abspath(tool), "scan", "--no-worker", "--no-progress", "--jobs"]
    half = len(copies) // 2
    ways = {
        "one thread": [scan + ["1"] + copies],
        "two threads": [scan + ["2"] + copies],
        "two processes": [scan + ["1"] + copies[:half], scan + ["1"] + copies[half:]],
    }
    ratios = {name: [] for name in ways}
    for _ in range(rounds):
        order = random.sample(list(ways), len(ways))
        times = {name: run_together(ways[name]) for name in order}
        alone = times["one thread"]
        for name, (elapsed, processor) in times.items():
            ratios[name].append((alone[0] / elapsed, processor / alone[1]))
    del ratios["one thread"]
    return {name: [statistics.median(column) for column in zip(*found)] for name, found in ratios.items()}


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("tool", help="the executable jobparser")
    parser.add_argument("folder", help="a folder of jobs")
    parser.add_argument("--copies", type=int, default=100)
    parser.add_argument("--rounds", type=int, default=30)
    options = parser.parse_args()

    with tempfile.TemporaryDirectory(prefix="jobparser-folders-") as name:
        copies = [str(pathlib.Path(name) / str(number)) for number in range(options.copies)]
        for copy in copies:
            shutil.copytree(options.folder, copy)
        os.sync()  # What is still being written would be measured, too.
        for way, (gain, processor) in measure(options.tool, copies, options.rounds).items():
            print(f"{way}: {gain:.2f} times as fast, {processor:.2f} times the processor time")


if __name__ == "__main__":
    main()
