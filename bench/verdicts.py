#!/usr/bin/env python3
"""Shows whether the verdicts of `krlab ab` hold: copies that must not be accused, planted changes that must be found.

usage: bench/verdicts.py BUILD_DIR WORK_DIR copies  [--runs 20] [--time 175s] [--threshold 2%] [--confidence 99%]
       bench/verdicts.py BUILD_DIR WORK_DIR planted [--runs 5] [--percent 3,5,10,-3,-5,-10] [...]
       bench/verdicts.py BUILD_DIR WORK_DIR utest   [--runs 20] [--min-time 0.05] [--tool /usr/share/benchmark/compare.py]
       bench/verdicts.py BUILD_DIR WORK_DIR table

copies:  the built library is copied twice and both copies are compared over the whole grid. Of 20 runs 7 are made on the
         machine as it is, 7 with one core loaded and 6 with all of them.
planted: 20 functions of a test build are delayed by the given percents (bench/plant.py); negative percents are speed-ups,
         made by taking the delayed build for the old one. A function counts as found if one of its lines is accused.
utest:   forty lines of two copies under Google Benchmark (BUILD_DIR/bench/bench_google_lines, of a build with
         -DKR_BENCH=ON), 9 repetitions each, judged by the U test of its compare script; loads as in copies.
The readings of a run that accuses wrongly stay in WORK_DIR/wrong-*.db.
Each run is noted in WORK_DIR/runs.jsonl when it is done; what is noted there is not measured again, so that the programs
go on where they were ended. `table` prints what there is. Keys behind -- go to the rig (a shorter grid for a trial).
"""
import argparse
import json
import os
import pathlib
import shutil
import signal
import statistics
import subprocess
import sys
import time

import plant

LOADS = ["as it is", "one core loaded", "all cores loaded"]


class Load:
    """Processes that keep cores busy."""

    def __init__(self, count):
        self.count = count
        self.processes = []

    def __enter__(self):
        for _ in range(self.count):
            self.processes.append(subprocess.Popen([sys.executable, "-c", "while True: pass"]))

    def __exit__(self, *_):
        for process in self.processes:
            process.kill()
            process.wait()


class Journal:
    """The runs that are done."""

    def __init__(self, work):
        self.path = work / "runs.jsonl"
        self.runs = []
        if self.path.exists():
            self.runs = [json.loads(line) for line in self.path.read_text().splitlines()]

    def has(self, kind, case, number):
        return any((run["kind"], run["case"], run["number"]) == (kind, case, number) for run in self.runs)

    def add(self, run):
        self.runs.append(run)
        with self.path.open("a") as file:
            file.write(json.dumps(run) + "\n")


def stolen():
    """Seconds that the host of a virtual machine has kept from its processors since it started."""
    with open("/proc/stat") as file:
        return int(file.readline().split()[8]) / os.sysconf("SC_CLK_TCK")


def compare(args, older, newer, seed):
    """One use of krlab ab; its verdicts, its wall time, and the machine: the load before it, the time stolen meanwhile."""
    load, stolen_before = os.getloadavg()[0], stolen()
    report = args.work / "verdict.json"
    report.unlink(missing_ok=True)
    (args.work / "last.db").unlink(missing_ok=True)
    command = [args.build / "krlab", "ab", f"old={older}", f"new={newer}", "--rig", args.build / "kelvarrig", "--time",
               args.time, "--threshold", args.threshold, "--confidence", args.confidence, "--json", report, "--store",
               args.work / "last.db", "--quiet", "--seed", str(seed), "--", *args.keys]
    begin = time.monotonic()
    status = subprocess.run(command, stdout=subprocess.DEVNULL, check=False).returncode
    if status not in (0, 1):
        raise SystemExit(f"krlab ended with status {status}")
    seconds = time.monotonic() - begin
    machine = {"seconds": seconds, "load": load, "stolen": (stolen() - stolen_before) / seconds / os.cpu_count()}
    return json.loads(report.read_text()), machine


def note(journal, kind, case, number, verdict, machine, planted=None):
    accused = [line for line in verdict["lines"] if line["verdict"] in ("slower", "faster")]
    for line in accused:
        line["planted"] = planted is not None and line["function"] in planted
    # Whoever was accused wrongly can be looked at: all readings of that comparison stay.
    if not all(line["planted"] for line in accused):
        (journal.path.parent / "last.db").rename(journal.path.parent / f"wrong-{kind}-{case}-{number}.db")
    journal.add({"kind": kind, "case": case, "number": number, **machine,
                 "rounds": verdict["rounds"], "summary": verdict["summary"], "accused": accused})


def copy_library(args):
    """Two fresh copies, each in files of its own."""
    targets = [args.work / "copy-old", args.work / "copy-new"]
    for target in targets:
        shutil.rmtree(target, ignore_errors=True)
        target.mkdir(parents=True)
        for name in plant.LIBRARIES:
            shutil.copy((args.build / "lib" / name).resolve(), target / name)
    return targets


def open_runs(args, journal, kind):
    """Number and load of the runs that are still to be made."""
    for number in range(args.runs):
        case = LOADS[min(number * len(LOADS) // args.runs, len(LOADS) - 1)]
        if not journal.has(kind, case, number):
            with Load([0, 1, os.cpu_count()][LOADS.index(case)]):
                yield number, case


def copies(args, journal):
    for number, case in open_runs(args, journal, "copies"):
        note(journal, "copies", case, number, *compare(args, *copy_library(args), number))


def utest(args, journal):
    for number, case in open_runs(args, journal, "utest"):
        begin = time.monotonic()
        outputs = []
        for target in copy_library(args):
            outputs.append(args.work / f"{target.name}.json")
            subprocess.run([args.build / "bench" / "bench_google_lines", "--benchmark_repetitions=9",
                            f"--benchmark_min_time={args.min_time}", f"--benchmark_out={outputs[-1]}",
                            "--benchmark_out_format=json"], check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           env={**os.environ, "LD_LIBRARY_PATH": str(target)})
        judged = args.work / "utest.json"
        # The script is started with the system's Python, for which its packages are installed.
        subprocess.run(["/usr/bin/python3", args.tool, "-d", judged, "benchmarks", *outputs], check=True,
                       stdout=subprocess.DEVNULL)
        tests = [entry["utest"] for entry in json.loads(judged.read_text()) if entry.get("utest")]
        journal.add({"kind": "utest", "case": case, "number": number, "seconds": time.monotonic() - begin,
                     "lines": len(tests), "accused": sum(test["time_pvalue"] < 0.05 for test in tests)})


def planted(args, journal):
    for text in args.percent.split(","):
        percent = float(text)
        out = args.work / f"planted-{abs(percent):g}"
        if not (out / "truth.json").exists():
            plant.plant(args.build, out, abs(percent))
        pair = [out / "base", out / "delayed"]
        older, newer = pair if percent > 0 else reversed(pair)
        for number in range(args.runs):
            if not journal.has("planted", text, number):
                note(journal, "planted", text, number, *compare(args, older, newer, number), plant.FUNCTIONS)


def median(values):
    return statistics.median(values) if values else 0


def print_copies(runs):
    print("| machine | runs | runs that accuse | lines | same | undecided | rounds | seconds | load before |")
    print("|---|---|---|---|---|---|---|---|---|")
    for case in LOADS:
        some = [run for run in runs if run["kind"] == "copies" and run["case"] == case]
        if some:
            of = lambda name: median([run["summary"][name] for run in some])  # noqa: E731
            print(f"| {case} | {len(some)} | {sum(bool(run['accused']) for run in some)} | {of('lines'):.0f} | "
                  f"{of('same'):.0f} | {of('undecided'):.0f} | {median([run['rounds'] for run in some]):.0f} | "
                  f"{median([run['seconds'] for run in some]):.0f} | {median([run['load'] for run in some]):.1f} |")


def print_utest(runs):
    print("| machine | runs | runs that accuse | lines | lines accused a run | seconds |\n|---|---|---|---|---|---|")
    for case in LOADS:
        some = [run for run in runs if run["kind"] == "utest" and run["case"] == case]
        if some:
            print(f"| {case} | {len(some)} | {sum(run['accused'] > 0 for run in some)} | {some[0]['lines']} | "
                  f"{statistics.mean(run['accused'] for run in some):.1f} | "
                  f"{median([run['seconds'] for run in some]):.0f} |")


def print_planted(args, runs):
    print("| planted | true ratio | cases | found | lines found | runs that accuse others | rounds | seconds |")
    print("|---|---|---|---|---|---|---|---|")
    for case in sorted({run["case"] for run in runs if run["kind"] == "planted"}, key=float):
        some = [run for run in runs if run["kind"] == "planted" and run["case"] == case]
        truth = json.loads((args.work / f"planted-{abs(float(case)):g}" / "truth.json").read_text())["lines"]
        ratios = sorted(entry["ratio"] if float(case) > 0 else 1 / entry["ratio"] for entry in truth.values())
        right = "slower" if float(case) > 0 else "faster"
        found = lines = wrong = 0
        for run in some:
            hits = [line for line in run["accused"] if line["planted"] and line["verdict"] == right]
            found += len({line["function"] for line in hits})
            lines += len(hits)
            wrong += len(hits) < len(run["accused"])
        print(f"| {float(case):+g} % | {ratios[len(ratios) // 10]:.3f} .. {ratios[-1 - len(ratios) // 10]:.3f} | "
              f"{len(some) * len(plant.FUNCTIONS)} | {found} | {lines} of {len(some) * len(truth)} | {wrong} of "
              f"{len(some)} | {median([run['rounds'] for run in some]):.0f} | "
              f"{median([run['seconds'] for run in some]):.0f} |")


def main():
    # Whoever ends it ends the load that it made, too.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    own, keys = sys.argv[1:], []
    if "--" in own:
        own, keys = own[:own.index("--")], own[own.index("--") + 1:]
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("work", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("what", choices=["copies", "planted", "utest", "table"])
    parser.add_argument("--runs", type=int)
    parser.add_argument("--time", default="175s")
    parser.add_argument("--threshold", default="2%")
    parser.add_argument("--confidence", default="99%")
    parser.add_argument("--percent", default="3,5,10,-3,-5,-10")
    parser.add_argument("--min-time", default="0.05", help="seconds of a repetition under Google Benchmark")
    parser.add_argument("--tool", default="/usr/share/benchmark/compare.py", help="the compare script")
    args = parser.parse_args(own)
    args.keys = keys
    args.work.mkdir(parents=True, exist_ok=True)
    journal = Journal(args.work)
    args.runs = args.runs or (5 if args.what == "planted" else 20)
    actions = {"copies": copies, "planted": planted, "utest": utest}
    if args.what in actions:
        actions[args.what](args, journal)
    print("Copies under krlab ab\n")
    print_copies(journal.runs)
    print("\nCopies under Google Benchmark, U test of its compare script\n")
    print_utest(journal.runs)
    print("\nPlanted changes under krlab ab\n")
    print_planted(args, journal.runs)


if __name__ == "__main__":
    main()
