#!/usr/bin/env python3
"""Measures what a whole process of the tool costs on a small job, against an empty program.

    bench/startup.py build/release/bin/jobparser [JOB]

The empty program is linked with the C++ library and zlib, which the tool loads too. Both are started in turns, in
changing order. Prints the ratios of processor time and of elapsed time; each is the median over the rounds.
"""

import argparse
import os
import pathlib
import statistics
import subprocess
import tempfile
import time

SMALL_JOB = (b"\x1b%-12345X@PJL SET COPIES=2\r\n@PJL SET PAPER=A4\r\n@PJL ENTER LANGUAGE=PCL\r\n"
             b"\x1bE" + b"x" * 1000 + b"\x1bE\x1b%-12345X")


def build_empty_program(folder, compiler):
    source = folder / "empty.cpp"
    source.write_text("int main() {}\n")
    program = folder / "empty"
    subprocess.run([compiler, "-O2", source, "-o", program, "-Wl,--no-as-needed", "-lstdc++", "-lz"], check=True)
    return [str(program)]


def run_once(command, silence):
    start = time.perf_counter()
    pid = os.posix_spawn(command[0], command, os.environ, file_actions=silence)
    _, status, usage = os.wait4(pid, 0)
    elapsed = time.perf_counter() - start
    if status != 0:
        raise SystemExit(f"{' '.join(command)} failed: {os.waitstatus_to_exitcode(status)}")
    return usage.ru_utime + usage.ru_stime, elapsed


def run_batch(command, silence, count):
    times = [run_once(command, silence) for _ in range(count)]
    return [sum(column) for column in zip(*times)]


def measure(tool, empty, rounds, batch):
    with open(os.devnull, "w") as null:
        silence = [(os.POSIX_SPAWN_DUP2, null.fileno(), 1)]
        run_batch(tool, silence, 1)
        run_batch(empty, silence, 1)
        ratios = []
        for number in range(rounds):
            order = [tool, empty] if number % 2 == 0 else [empty, tool]
            times = {command[0]: run_batch(command, silence, batch) for command in order}
            ratios.append([ours / theirs for ours, theirs in zip(times[tool[0]], times[empty[0]])])
    return [statistics.median(column) for column in zip(*ratios)]


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("tool", help="the executable jobparser")
    parser.add_argument("job", nargs="?", help="a job; by default a small one is made")
    parser.add_argument("--rounds", type=int, default=30)
    parser.add_argument("--batch", type=int, default=20, help="processes of each kind in a round")
    parser.add_argument("--compiler", default=os.environ.get("CXX", "c++"))
    options = parser.parse_args()

    with tempfile.TemporaryDirectory(prefix="jobparser-startup-") as name:
        folder = pathlib.Path(name)
        job = options.job
        if job is None:
            job = str(folder / "small.prn")
            pathlib.Path(job).write_bytes(SMALL_JOB)
        empty = build_empty_program(folder, options.compiler)
        tool = [os.path.abspath(options.tool), "meta", "--no-worker", job]
        processor, elapsed = measure(tool, empty, options.rounds, options.batch)
    print(f"processor time: {processor:.2f} x an empty program")
    print(f"elapsed time:   {elapsed:.2f} x an empty program")


if __name__ == "__main__":
    main()
