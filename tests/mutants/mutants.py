#!/usr/bin/env python3
"""Plants small faults in the sources, one at a time, and tells which of them no test sees.

    tests/mutants/mutants.py --count 100             a hundred, drawn with seed 1 over all rooms
    tests/mutants/mutants.py --room api --count 50
    tests/mutants/mutants.py --file vek/sc/g726/adpcm.cpp --count 20 --seed 7
    tests/mutants/mutants.py --list --count 20       only tells what would be planted

Works on a copy of HEAD in build-mutants/, never on the work tree. A fault that does not compile is no fault: another is
drawn. A fault dies when a test fails, crashes or takes ten times as long. Survivors are looked up in equivalent.txt: there
a line says why no test can see it. Exit status 1 if others survive. Results are kept in build-mutants/results.jsonl, and a
run that was cut off goes on where it stood.
"""

import argparse
import json
import os
import random
import re
import subprocess
import sys
import time
from pathlib import Path

from sites import sites_of

TOP = Path(__file__).resolve().parents[2]
WORK = TOP / "build-mutants"
EQUIVALENT = Path(__file__).resolve().parent / "equivalent.txt"

# How often a room and a kind are drawn: by what goes wrong in real edits, not by how many sites there are.
ROOMS = {"api": 35, "veksc": 20, "vek": 45}
KINDS = {
    "bound": 14, "comparison": 10, "operator": 16, "logic": 10, "constant": 16, "table": 3, "rounding": 8,
    "arguments": 7, "dropped": 12, "condition": 8,
}
# The test programs that can see a room, those first that are most likely to.
PROGRAMS = {
    "api/src": ["kr_tests", "vk_tests", "cli_tests", "suite_tests"],
    "api/lib": ["vk_tests", "suite_tests", "cli_tests"],
    "veksc": ["suite_tests", "cli_tests"],
    "vek": ["vek_tests", "oracle_tests", "suite_tests"],
}
BUILD_LIMIT = 600
LEAST_LIMIT = 60  # seconds that a program of tests may take whatever it took without a fault


def sources(room):
    listed = subprocess.run(["git", "ls-files", room], cwd=TOP, capture_output=True, text=True, check=True)
    return [f for f in listed.stdout.split() if f.endswith((".cpp", ".h", ".inc"))]


def all_sites(args):
    by = {}
    for room in ROOMS:
        if args.room and room != args.room:
            continue
        for path in sources(room):
            if args.file and path != args.file:
                continue
            for site in sites_of(path, (TOP / path).read_text()):
                by.setdefault((room, site.kind), []).append(site)
    return by


def draw(by, seed):
    """Sites without end, no two of one line: room and kind by weight, then any of theirs."""
    generator = random.Random(seed)
    left = {key: list(sites) for key, sites in sorted(by.items())}
    taken = set()
    while any(left.values()):
        keys = [key for key, sites in left.items() if sites]
        key = generator.choices(keys, [ROOMS[room] * KINDS[kind] for room, kind in keys])[0]
        site = left[key].pop(generator.randrange(len(left[key])))
        if (site.path, site.line) not in taken:
            taken.add((site.path, site.line))
            yield site


def programs_of(path):
    return next(programs for room, programs in PROGRAMS.items() if path.startswith(room + "/"))


class Copy:
    """The tree that faults are planted in, built once without any."""

    def __init__(self, jobs):
        self.tree = WORK / "tree"
        self.build = WORK / "tree" / "build-test"
        self.jobs = jobs
        self.usual = {}

    def prepare(self):
        head = subprocess.run(["git", "rev-parse", "HEAD"], cwd=TOP, capture_output=True, text=True, check=True).stdout
        WORK.mkdir(exist_ok=True)
        stamp = WORK / "head"
        if not self.tree.exists():
            subprocess.run(["git", "clone", "-q", "--no-hardlinks", str(TOP), str(self.tree)], check=True)
        if not stamp.exists() or stamp.read_text() != head:
            subprocess.run(["git", "fetch", "-q", "origin"], cwd=self.tree, check=True)
            (WORK / "results.jsonl").unlink(missing_ok=True)
        subprocess.run(["git", "checkout", "-qf", head.strip()], cwd=self.tree, check=True)
        stamp.write_text(head)
        if not (self.build / "build.ninja").exists():
            options = ["-DKR_WERROR=OFF"]
            subprocess.run(["cmake", "--preset", "test", *options], cwd=self.tree, check=True, stdout=subprocess.DEVNULL)
        if not self.compiles(sorted({p for programs in PROGRAMS.values() for p in programs})):
            sys.exit("mutants: the tree does not build without a fault; see build-mutants/build.log")
        for name in sorted({p for programs in PROGRAMS.values() for p in programs}):
            began = time.monotonic()
            if not self.passes(name, 600):
                sys.exit(f"mutants: {name} fails without a fault")
            self.usual[name] = time.monotonic() - began

    def compiles(self, targets):
        with open(WORK / "build.log", "w") as log:
            command = ["cmake", "--build", str(self.build), "-j", str(self.jobs), "--target", *targets]
            try:
                return subprocess.run(command, stdout=log, stderr=log, timeout=BUILD_LIMIT).returncode == 0
            except subprocess.TimeoutExpired:
                return False

    def passes(self, name, limit, pattern=None):
        """Whether the program's tests pass; it leaves its first failure in self.red."""
        program = next(self.build.rglob(f"tests/**/{name}"))
        command = [str(program), "--gtest_fail_fast", "--gtest_brief=1"]
        if pattern:
            command.append(f"--gtest_filter={pattern}")
        try:
            run = subprocess.run(command, cwd=program.parent, capture_output=True, text=True, errors="replace",
                                 timeout=limit, stdin=subprocess.DEVNULL)
        except subprocess.TimeoutExpired:
            self.red = f"{name}: takes too long"
            return False
        failed = re.search(r"\[  FAILED  \] (\S+)", run.stdout)
        self.red = f"{name}: {failed.group(1) if failed else 'ends with ' + str(run.returncode)}"
        return run.returncode == 0

    def judge(self, site):
        """One of: no compile, died (with the test), survived."""
        target = self.tree / site.path
        whole = target.read_text()
        lines = whole.split("\n")
        lines[site.line - 1] = site.new
        target.write_text("\n".join(lines))
        try:
            programs = programs_of(site.path)
            if not self.compiles(programs):
                return "no compile", ""
            for name, pattern in [(p, likely(site.path, p)) for p in programs] + [(p, None) for p in programs]:
                if pattern != "" and not self.passes(name, max(LEAST_LIMIT, 10 * self.usual[name]), pattern):
                    return "died", self.red
            return "survived", ""
        finally:
            target.write_text(whole)


# Which tests speak of which public functions, and which functions a source holds: those are run first.
_tests_of = {}


def likely(path, program):
    """A filter with the tests that name a public function of this source or of those that include or call it."""
    folder = {"kr_tests": "api", "vk_tests": "lib", "suite_tests": "suites", "vek_tests": "vek",
              "oracle_tests": "oracle", "cli_tests": "cli"}[program]
    if program not in _tests_of:
        _tests_of[program] = []
        for file in sorted((TOP / "tests" / folder).rglob("*.cpp")):
            text = file.read_text()
            suites = set(re.findall(r"^TEST(?:_F|_P)?\((\w+),", text, re.MULTILINE))
            _tests_of[program].append((set(re.findall(r"\b\w{6,}\b", text)), file.stem, suites))
    text = (TOP / path).read_text()
    words = set(re.findall(r"\b(?:veks|vek|kr|vk)\w{4,}\b", text))
    stem = re.sub(r"^[kp]_", "", Path(path).stem)
    scored = []
    for names, file, suites in _tests_of[program]:
        score = len(words & names) + (50 if file.startswith(stem) else 0)
        if score and suites:
            scored.append((score, sorted(suites)))
    scored.sort(key=lambda s: -s[0])
    chosen = [suite for _, suites in scored[:4] for suite in suites]
    return ":".join(f"{s}.*:*/{s}.*:{s}/*" for s in chosen)


def known_equivalents():
    if not EQUIVALENT.exists():
        return {}
    lines = [line for line in EQUIVALENT.read_text().splitlines() if line and not line.startswith("#")]
    return {key: reason for key, _, reason in (line.rpartition(" | ") for line in lines)}


def finished():
    results = WORK / "results.jsonl"
    if not results.exists():
        return {}
    return {json.loads(line)["id"]: json.loads(line) for line in results.read_text().splitlines()}


def identity(site):
    return f"{site.path}:{site.line} | {site.new.strip()}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=100, help="how many that compile (100)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--room", choices=sorted(ROOMS))
    parser.add_argument("--file", help="only in this source")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--list", action="store_true", help="tell what would be planted, build nothing")
    args = parser.parse_args()

    by = all_sites(args)
    if not by:
        parser.error("no place to plant a fault in")
    drawn = draw(by, args.seed)
    if args.list:
        for _, site in zip(range(args.count), drawn):
            print(f"{site.path}:{site.line} ({site.kind})\n  - {site.old.strip()}\n  + {site.new.strip()}")
        return 0

    changed = subprocess.run(["git", "status", "--porcelain", *ROOMS], cwd=TOP, capture_output=True, text=True, check=True)
    if changed.stdout:
        sys.exit("mutants: commit your changes first; faults are planted in a copy of HEAD")
    copy = Copy(args.jobs)
    print("Building a copy of HEAD", flush=True)
    copy.prepare()
    reasons = known_equivalents()
    done = finished()
    began = time.monotonic()
    tally = {"died": 0, "survived": 0, "equivalent": 0}
    for site in drawn:
        if sum(tally.values()) >= args.count:
            break
        result = done.get(identity(site))
        if result is None:
            verdict, red = copy.judge(site)
            result = {"id": identity(site), "verdict": verdict, "by": red, "kind": site.kind, "key": site.key()}
            with open(WORK / "results.jsonl", "a") as out:
                out.write(json.dumps(result) + "\n")
        verdict = result["verdict"]
        if verdict == "no compile":
            continue
        if verdict == "survived" and site.key() in reasons:
            verdict = "equivalent"
        tally[verdict] += 1
        if verdict == "died":
            print(f"died      {site.path}:{site.line} ({site.kind})  {result['by']}", flush=True)
        else:
            print(f"{verdict:9} {site.path}:{site.line} ({site.kind})\n  - {site.old.strip()}\n  + {site.new.strip()}")
            if verdict == "equivalent":
                print(f"  {reasons[site.key()]}")
            sys.stdout.flush()
    minutes = (time.monotonic() - began) / 60
    print(f"{sum(tally.values())} planted, {tally['died']} died, {tally['survived']} survived, "
          f"{tally['equivalent']} equivalent; {minutes:.1f} minutes")
    return 1 if tally["survived"] else 0


if __name__ == "__main__":
    sys.exit(main())
