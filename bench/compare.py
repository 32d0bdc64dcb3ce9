#!/usr/bin/env python3
"""Compares the rig with Google Benchmark and a bare loop on the same functions: processes interleaved, medians.

usage: bench/compare.py BUILD_DIR [--blocks 5] [--processes 15]
Prints a table: value over the bare loop's (bias), spread over the processes, wall time of a line.
"""
import argparse
import csv
import io
import statistics
import subprocess
import time


def calibrate(build):
    """Counter clocks a nanosecond."""
    return statistics.median(run_plain([f"{build}/bench/bench_bare", "counter"])["counter"][0] for _ in range(5))


def run_plain(command):
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    return {name: (float(clocks), float(us)) for name, clocks, us in (line.split(";") for line in lines)}


def run_google(build, flags):
    command = [f"{build}/bench/bench_google", "--benchmark_format=csv", *flags]
    begin = time.monotonic()
    out = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    wall = (time.monotonic() - begin) * 1e6
    rows = list(csv.DictReader(io.StringIO(out[out.index("name,"):])))
    return {row["name"]: (float(row["cpu_time"]), wall / len(rows)) for row in rows}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("--blocks", type=int, default=5)
    parser.add_argument("--processes", type=int, default=15)
    args = parser.parse_args()
    scale = calibrate(args.build)
    harnesses = {
        "bare loop": lambda: run_plain([f"{args.build}/bench/bench_bare"]),
        "rig, Auto": lambda: run_plain([f"{args.build}/bench/bench_rig", "auto"]),
        "rig, Iterative": lambda: run_plain([f"{args.build}/bench/bench_rig", "iterative"]),
        "Google 0.01 s": lambda: run_google(args.build, ["--benchmark_min_time=0.01"]),
        "Google default": lambda: run_google(args.build, []),
    }
    values = {name: {} for name in harnesses}
    walls = {name: {} for name in harnesses}
    for _ in range(args.blocks):
        for process in range(args.processes):
            for name, run in harnesses.items():
                # Its default takes some seconds a process: one a block tells enough.
                if name == "Google default" and process >= 1:
                    continue
                for subject, (clocks, us) in run().items():
                    if name.startswith("Google"):
                        clocks *= scale
                    values[name].setdefault(subject, []).append(clocks)
                    walls[name].setdefault(subject, []).append(us)
    print("| function | harness | clocks | bias | spread | wall time of a line, us |")
    print("|---|---|---|---|---|---|")
    for subject in values["bare loop"]:
        truth = statistics.median(values["bare loop"][subject])
        for name in harnesses:
            data = sorted(values[name][subject])
            middle = statistics.median(data)
            quartiles = statistics.quantiles(data, n=4)
            spread = (quartiles[2] - quartiles[0]) / middle
            wall = statistics.median(walls[name][subject])
            print(f"| {subject} | {name} | {middle:.1f} | {middle / truth:.3f} | {100 * spread:.1f}% | {wall:.0f} |")


if __name__ == "__main__":
    main()
