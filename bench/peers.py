#!/usr/bin/env python3
"""Writes the table of clocks beside independent open packages: ours and theirs in processes that take turns.

usage: bench/peers.py BUILD_DIR [--processes 9] [--only PATTERN] [--out FILE] [--note TEXT]
       bench/peers.py BUILD_DIR --check
Runs bench_peers of the build, for each side that many times, in turn; each process gives the lowest reading of each row, and
the median of these counts. Rows are sorted by their ratio; behind them stand the geometric means by function and the rows
above 1.0. Without --out the table goes to the console. A file in bench/figures, named by the machine
(family-25-model-17.txt), gets a column in docs/library.md.
--check measures nothing: each function of vek/functions.txt must have a row or a reason in bench/nopeer.txt, not both.
"""
import argparse
import fnmatch
import math
import pathlib
import re
import shutil
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# What a peer's name begins with, and the package that its version is asked of.
PACKAGES = {
    "bcg729": "libbcg729-dev", "fftw3": "libfftw3-dev", "fftw3f": "libfftw3-dev", "libavcodec": "libavcodec-dev",
    "libavutil": "libavutil-dev", "libgsm": "libgsm1-dev", "opencore-amrnb": "libopencore-amrnb-dev",
    "opencore-amrwb": "libopencore-amrwb-dev", "opus": "libopus-dev", "spandsp": "libspandsp-dev",
    "speex": "libspeex-dev", "speexdsp": "libspeexdsp-dev", "vo-amrwbenc": "libvo-amrwbenc-dev",
    "volk": "libvolk2-dev", "webrtc": "libwebrtc-audio-processing-dev",
}
WIDTHS = {0: "plain code", 1: "128 bits", 2: "256 bits", 3: "512 bits"}


def fail(cause):
    sys.exit(f"peers.py: {cause}")


def run(build, *keys):
    """Lines of bench_peers, split at tabs."""
    program = pathlib.Path(build) / "bench" / "bench_peers"
    if not program.exists():
        fail(f"no {program}: build the target bench_peers first (-DKR_BENCH=ON)")
    done = subprocess.run([program, *keys], capture_output=True, text=True)
    if done.returncode != 0:
        fail(f"{program.name} ended with {done.returncode}: {done.stderr.strip()}")
    return [line.split("\t") for line in done.stdout.splitlines()]


def geometric_mean(values):
    return math.exp(sum(map(math.log, values)) / len(values))


def measure(build, processes, only):
    """Medians of the processes' lowest readings: {(functions, size, data, peer): (ours, theirs)}."""
    keys = ["--tab"] + ([only] if only else [])
    readings = {}
    for _ in range(processes):
        for side, column in (("ours", -2), ("peer", -1)):
            for row in run(build, "--side", side, *keys):
                readings.setdefault(tuple(row[1:5]), {}).setdefault(side, []).append(float(row[column]))
    if not readings:
        fail("no row" + (f" holds {only}" if only else ""))
    return {row: tuple(statistics.median(sides[side]) for side in ("ours", "peer")) for row, sides in readings.items()}


def by_function(ratios):
    """The geometric mean of each function's rows; one of several functions in a row counts for each of them."""
    of = {}
    for (functions, *_), ratio in ratios.items():
        for function in functions.split(" + "):
            of.setdefault(function, []).append(ratio)
    return {function: geometric_mean(values) for function, values in sorted(of.items())}


def versions(rows):
    """Debian's versions of the packages that the rows name."""
    told = []
    for name in sorted({peer.split(",")[0].split()[0] for _, _, _, peer in rows}):
        if name in PACKAGES and shutil.which("dpkg-query"):
            asked = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", PACKAGES[name]], capture_output=True, text=True)
            told.append(f"{name} {asked.stdout or '(version unknown)'}")
    return ", ".join(told)


def by_peer(ratios):
    """Rows, geometric mean and rows above 1.0 of packages and of each build of plain loops."""
    of = {}
    for (*_, peer), ratio in ratios.items():
        of.setdefault(peer.removesuffix(" in float") if peer.startswith("plain loop") else "packages", []).append(ratio)
    return "; ".join(f"{kind}: {len(values)} rows, {geometric_mean(values):.3f}, {sum(r > 1 for r in values)} above 1.0"
                     for kind, values in sorted(of.items()))


def table(machine, medians, processes, note):
    ratios = {row: ours / theirs for row, (ours, theirs) in medians.items()}
    functions = by_function(ratios)
    slower = sorted((row for row in ratios if ratios[row] > 1), key=ratios.get, reverse=True)

    def told(row):
        ours, theirs = medians[row]
        return f"{ratios[row]:6.2f} {ours:10.1f} {theirs:10.1f}  {' | '.join(row)}"

    lines = [
        f"machine: CPUID family {machine['family']}, model {machine['model']}, registers of {machine['register bits']} bits, "
        f"counter at {machine['counter MHz']} MHz",
        f"kernels: level {machine['kernel level']} ({WIDTHS.get(int(machine['kernel level']), 'unknown')})",
        f"packages: {versions(ratios) or 'none'}; plain loops by {machine['compiler']}",
        f"readings: medians of the lowest of {processes} processes a side" + (f"; {note}" if note else ""),
        f"summary: {len(ratios)} rows, geometric mean {geometric_mean(ratios.values()):.3f}; {len(functions)} functions, "
        f"geometric mean {geometric_mean(functions.values()):.3f}; {len(slower)} rows above 1.0",
        f"by peer: {by_peer(ratios)}",
        "",
        " ratio       ours       peer  functions | size | data | peer",
        *(told(row) for row in sorted(ratios, key=ratios.get, reverse=True)),
        "",
        "geometric mean by function",
        *(f"{mean:6.2f}  {function}" for function, mean in functions.items()),
        "",
        "rows above 1.0",
        *(told(row) for row in slower),
    ]
    return "\n".join(lines) + "\n"


def known_functions():
    """The functions of vek/functions.txt."""
    names = []
    for line in (ROOT / "vek" / "functions.txt").read_text().splitlines():
        if line.startswith("vek"):
            names += line.split(" | ")[0].split(", ")
    return names


def without_peer():
    """Patterns and reasons of bench/nopeer.txt."""
    reasons = {}
    for number, line in enumerate((ROOT / "bench" / "nopeer.txt").read_text().splitlines(), 1):
        if line and not line.startswith("//"):
            names, bar, reason = line.partition(" | ")
            if not bar or not reason:
                fail(f"bench/nopeer.txt, line {number}: functions without a reason")
            for name in names.split(", "):
                reasons[name] = reason
    return reasons


def check(rows):
    """Faults in what has a row and what has none."""
    functions = known_functions()
    named = {name for row in rows for name in row[1].split(" + ")}
    reasons = without_peer()
    excused = {name for name in functions for pattern in reasons if fnmatch.fnmatchcase(name, pattern)}
    return ([f"{name}: has neither a row nor a reason" for name in functions if name not in named | excused] +
            [f"{name}: has a row and a reason" for name in functions if name in named & excused] +
            [f"{name}: is in a row, but not in vek/functions.txt" for name in sorted(named - set(functions))] +
            [f"{pattern}: is in bench/nopeer.txt for nothing" for pattern in reasons
             if not fnmatch.filter(functions, pattern)])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--processes", type=int, default=9)
    parser.add_argument("--only", metavar="PATTERN", help="rows that hold this regular expression")
    parser.add_argument("--out", metavar="FILE")
    parser.add_argument("--note", default="", help="what else the reader should know, such as other work on the machine")
    parser.add_argument("--check", action="store_true")
    args = parser.parse_args()
    if args.processes < 1:
        fail("--processes needs at least 1")
    if args.check:
        rows = run(args.build, "--list", "--tab")
        faults = check(rows)
        print(*faults, sep="\n", end="\n" if faults else "")
        covered = {name for row in rows for name in row[1].split(" + ")}
        print(f"{len(rows)} rows of {len(covered)} functions; {len(faults)} faults")
        return 1 if faults else 0
    machine = {key: value for key, value in run(args.build, "--machine")}
    text = table(machine, measure(args.build, args.processes, args.only), args.processes, args.note)
    if args.out:
        pathlib.Path(args.out).write_text(text)
        print(next(line for line in text.splitlines() if line.startswith("summary: ")))
    else:
        print(text, end="")
    return 0


if __name__ == "__main__":
    sys.exit(main())
