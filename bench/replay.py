#!/usr/bin/env python3
"""Replays rows drawn over all families, and resumes runs killed at random moments; prints what came of it.

    bench/replay.py BUILD [--rows 30] [--kills 50] [--seed 1]

BUILD is a directory with kelvarrig and krlab. Exit status 1 if a row was not measured again, or if a resumed table
lacks a line of a whole run or has one twice."""

import argparse
import collections
import pathlib
import random
import subprocess
import sys
import tempfile
import time

# Short measurements: what is tried here is which lines are measured, not how well.
QUICK = ["-dMethod=Iterative", "-dStopNumLoops=1"]


def rows(table):
    """Line numbers of the rows with the cells that tell them apart."""
    found = []
    heading = None
    for number, line in enumerate(table.read_text().splitlines(), 1):
        cells = line.split(",")
        if cells[0] == "funcBase":
            heading = cells.index("Comment")
        elif heading is not None and len(cells) > heading and cells[heading] != "parmNames":
            found.append((number, ",".join(cells[:heading])))
    return found


def family(row):
    words = row.split(",")[0].split("_")
    return words[1] if len(words) > 1 else "common"


def replay(build, table, count, draw):
    """One row of each family in turn until there are enough."""
    families = collections.defaultdict(list)
    for number, row in rows(table):
        families[family(row)].append((number, row))
    for members in families.values():
        draw.shuffle(members)
    order = sorted(families)
    failed = 0
    for i in range(count):
        members = families[order[i % len(order)]]
        number, row = members[i // len(order) % len(members)]
        result = subprocess.run([build / "krlab", "replay", "--quiet", f"{table}:{number}", "--", *QUICK],
                                capture_output=True, text=True)
        if result.returncode != 0 or "now:" not in result.stdout:
            failed += 1
            print(f"  row {number} ({row}): {result.stderr.strip()}")
    print(f"replay: {count - failed} of {count} rows of {len(order)} families measured again")
    return failed


def start_measuring(build, table):
    """A process of the rig that has written its heading."""
    process = subprocess.Popen([build / "kelvarrig", "-B", f"-r{table}", *QUICK], stdout=subprocess.DEVNULL)
    while process.poll() is None and not (table.exists() and "funcBase" in table.read_text()):
        time.sleep(0.01)
    return process


def resume(build, table, kills, draw, seconds):
    wanted = collections.Counter(row for _, row in rows(table))
    failed = 0
    for _ in range(kills):
        part = table.with_name("part.csv")
        process = start_measuring(build, part)
        moment = draw.uniform(0, seconds)
        time.sleep(moment)
        process.kill()
        process.wait()
        before = len(rows(part))
        result = subprocess.run([build / "krlab", "resume", "--quiet", part, "--", *QUICK], capture_output=True, text=True)
        counts = collections.Counter(row for _, row in rows(part))
        if counts != wanted:
            failed += 1
            print(f"  killed after {moment:.2f} s with {before} rows: {result.stderr.strip()}"
                  f" {sum((wanted - counts).values())} lines lack, {sum((counts - wanted).values())} are too many")
        part.unlink()
    print(f"resume: {kills - failed} of {kills} killed runs got each line once")
    return failed


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=lambda path: pathlib.Path(path).resolve())
    parser.add_argument("--rows", type=int, default=30)
    parser.add_argument("--kills", type=int, default=50)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    draw = random.Random(options.seed)
    with tempfile.TemporaryDirectory() as directory:
        table = pathlib.Path(directory) / "whole.csv"
        process = start_measuring(options.build, table)
        start = time.monotonic()
        process.wait()
        seconds = time.monotonic() - start
        failed = replay(options.build, table, options.rows, draw)
        failed += resume(options.build, table, options.kills, draw, seconds)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
