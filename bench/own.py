#!/usr/bin/env python3
"""Judges the figures of functions of one's own: an empty function, a chain of 100 dependent additions and a function of
the rig's own file must show their true clocks within 5 per cent by Iterative; editing such a file to its figure must take
less than 5 s.

usage: bench/own.py BUILD_DIR [--processes 9]
The truth is a bare loop; processes are interleaved, medians compared. Ends with 1 if a bound is broken.
"""
import argparse
import csv
import os
import statistics
import subprocess
import sys
import tempfile
import time

NAMES = ["empty", "chain", "gain"]
BOUND = 0.05
SECONDS = 5.0


def bare(program):
    lines = subprocess.run([program, "bare"], check=True, capture_output=True, text=True).stdout.splitlines()
    return {name: float(clocks) for name, clocks in (line.split(";") for line in lines)}


def rig(program, folder):
    table = os.path.join(folder, "own.csv")
    keys = ["-B", "-LERR", "-dMethod=Iterative", "-dStartNumLoops=64", "-r" + table] + ["-f=" + name for name in NAMES]
    subprocess.run([program, *keys], check=True, capture_output=True)
    with open(table, encoding="utf-8") as file:
        lines = file.read().splitlines()
    os.remove(table)
    start = next(i for i, line in enumerate(lines) if line.startswith("funcBase,"))
    return {row["funcBase"]: float(row["Clocks"]) for row in csv.DictReader(lines[start:])}


def edit_to_figure(build, source):
    os.utime(source)
    # A compiler cache would remember the file.
    environment = dict(os.environ, CCACHE_DISABLE="1")
    begin = time.monotonic()
    subprocess.run(["cmake", "--build", build, "--target", "bench_own"], check=True, capture_output=True,
                   env=environment)
    subprocess.run([os.path.join(build, "bench", "bench_own"), "-B", "-LPERF", "-f=gain"], check=True,
                   capture_output=True)
    return time.monotonic() - begin


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("--processes", type=int, default=9)
    args = parser.parse_args()
    program = os.path.join(args.build, "bench", "bench_own")
    truth = {name: [] for name in NAMES}
    shown = {name: [] for name in NAMES}
    with tempfile.TemporaryDirectory() as folder:
        for _ in range(args.processes):
            for name, clocks in bare(program).items():
                truth[name].append(clocks)
            for name, clocks in rig(program, folder).items():
                shown[name].append(clocks)
    good = True
    print("| function | bare loop, clocks | rig, Iterative | ratio |")
    print("|---|---|---|---|")
    for name in NAMES:
        true = statistics.median(truth[name])
        value = statistics.median(shown[name])
        good = good and abs(value / true - 1) <= BOUND
        print(f"| {name} | {true:.2f} | {value:.2f} | {value / true:.3f} |")
    took = edit_to_figure(args.build, os.path.join(os.path.dirname(os.path.abspath(__file__)), "own.cpp"))
    good = good and took < SECONDS
    print(f"edit to figure: {took:.1f} s")
    print("all bounds hold" if good else "A BOUND IS BROKEN")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
