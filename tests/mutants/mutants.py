#!/usr/bin/env python3
"""Plants small faults in the sources, one at a time, and tells which of them no test sees.

    tests/mutants/mutants.py --count 100             a hundred, drawn with seed 1 over all rooms
    tests/mutants/mutants.py --room api --count 50
    tests/mutants/mutants.py --file vek/sc/g726/adpcm.cpp --count 20 --seed 7
    tests/mutants/mutants.py --minutes 90            begins no fault after an hour and a half
    tests/mutants/mutants.py --list --count 20       only tells what would be planted

Works on copies of HEAD in build-mutants/, one a core, never on the work tree. Faults in api/ and veksc/ are judged by the
programs of the sanitizer build, as ./test runs them; those in vek/ by the release library, and what survives there by the
sanitized one. A fault that does not compile is no fault: another is drawn. A fault dies when a test fails, crashes or takes
ten times as long, and does so again by itself. Survivors are looked up in equivalent.txt: there a line says why no test can
see it. Exit status 1 if others survive. Results are kept in build-mutants/results.jsonl, and a run that was cut off goes on
where it stood; after a commit only faults that survived or whose source has changed are planted anew.
"""

import argparse
import functools
import hashlib
import itertools
import json
import multiprocessing
import os
import random
import re
import resource
import select
import signal
import subprocess
import sys
import time
from collections import Counter
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
# The two builds of a copy, with what else they are configured. What is built for one fault need not be quick.
RELEASE, CHECKED = "build-test", "build-asan"
PRESETS = {RELEASE: ["test", "-DVEK_KERNEL_OPTIMISATION=-O1"], CHECKED: ["asan"]}
# The test programs that can see a room, those first that are most likely to. `checked`: with the sanitized library.
PROGRAMS = {
    "api/src": ["kr_tests", "vk_tests", "suite_tests", "cli_tests"],
    "api/lib": ["vk_tests", "suite_tests", "cli_tests"],
    "veksc": ["suite_tests", "cli_tests"],
    "vek": ["vek_tests", "oracle_tests", "vek_tests checked", "oracle_tests checked", "suite_tests"],
}
FOLDERS = {
    "kr_tests": "api", "vk_tests": "lib", "suite_tests": "suites", "vek_tests": "vek", "oracle_tests": "oracle",
    "cli_tests": "cli",
}
LAST = "cli_tests"  # Whole programs, which take as long as all others: when all faults have been planted.
LIBRARIES = ["vekcore", "veks", "veksc"]
LEAST_LIMIT = 5  # seconds of processor time that a test may take whatever it took without a fault
MOST_WAIT = 120  # seconds that it may take besides, waiting
LIKELY_SECONDS = (1, 8)  # of the tests of a program that are run first, and then before all others
MOST_BYTES = 4 << 30  # that a test may take: a fault may ask for all there is
TICK = os.sysconf("SC_CLK_TCK")


def git(*words):
    return subprocess.run(["git", *words], cwd=TOP, capture_output=True, text=True, check=True).stdout


@functools.cache
def tested(tests=""):
    """What the tests' verdicts hold for: the committed tree but for documents and the like; of all tests or a folder."""
    kept = [line for line in git("ls-tree", "-r", "HEAD", *ROOMS, "cmake", "CMakeLists.txt", f"tests/{tests}").splitlines()
            if "\ttests/mutants/" not in line]
    return hashlib.sha1("\n".join(kept).encode()).hexdigest()


def sources(room):
    return [f for f in git("ls-files", room).split() if f.endswith((".cpp", ".h", ".inc"))]


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


def spent(pid):
    """Seconds of processor time of a process and of those that it has waited for."""
    fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return sum(int(field) for field in fields[11:15]) / TICK


class Run:
    """A running test program, and the test that it is at."""

    EVENT = re.compile(r"\[ +(RUN|OK|FAILED|SKIPPED) +\] ([^\s,]+)|^Note: kernel level ")

    def __init__(self, command, cwd, environment):
        self.process = subprocess.Popen(command, cwd=cwd, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, start_new_session=True)
        self.test = "the start"
        self.begun()
        self.rest = ""
        self.took = {}  # Seconds of processor time, of all levels of the kernels together.
        self.levels = 1

    def begun(self):
        self.since, self.spent = time.monotonic(), spent(self.process.pid)

    def read(self):
        """Reads on; the name of a test that has failed, if one has. None at the end."""
        data = os.read(self.process.stdout.fileno(), 65536)
        if not data:
            return None
        lines = (self.rest + data.decode(errors="replace")).split("\n")
        self.rest = lines.pop()
        for line in lines:
            event = self.EVENT.search(line)
            if event is None:
                continue
            word, name = event.groups()
            if word is None:
                self.levels += 1
            elif word == "RUN":
                self.test = name
            elif name == self.test:
                self.took[name] = self.took.get(name, 0) + spent(self.process.pid) - self.spent
                if word == "FAILED":
                    return name
                self.test = "the end"  # Where leaks are told.
            self.begun()
        return ""

    def late(self, usual):
        """Whether the test at work takes much more than it did: (by the processor, by the clock)."""
        return (spent(self.process.pid) - self.spent > max(LEAST_LIMIT, 10 * usual),
                time.monotonic() - self.since > MOST_WAIT + 20 * usual)

    def end(self):
        try:
            os.killpg(self.process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self.process.stdout.close()
        return self.process.wait()


class Copy:
    """A tree that faults are planted in, built once without any."""

    def __init__(self, number):
        self.tree = WORK / f"tree-{number}"
        self.log = WORK / f"build-{number}.log"
        self.usual = {}  # program: {test: seconds of processor time}
        self.green = set()  # (program, test) that were seen to pass without a fault
        self.killers = {}  # source: tests that have killed faults of it, the last first
        self.defined, self.wanted, self.headers = {}, {}, {}  # Of objects: their symbols; whose symbol; their headers.

    def prepare(self, jobs):
        head = git("rev-parse", "HEAD").strip()
        WORK.mkdir(exist_ok=True)
        if not self.tree.exists():
            subprocess.run(["git", "clone", "-q", "--no-hardlinks", str(TOP), str(self.tree)], check=True)
        subprocess.run(["git", "fetch", "-q", str(TOP), head], cwd=self.tree, check=True)
        subprocess.run(["git", "checkout", "-qf", head], cwd=self.tree, check=True)
        for build, (preset, *options) in PRESETS.items():
            if not (self.tree / build / "build.ninja").exists():
                subprocess.run(["cmake", "--preset", preset, "-DKR_WERROR=OFF", *options], cwd=self.tree, check=True,
                               stdout=subprocess.DEVNULL)
            targets = [p for p in FOLDERS if build_of(p) == build]
            if not self.compiles(build, targets, jobs, {}):
                sys.exit(f"mutants: the tree does not build without a fault; see {self.log.relative_to(TOP)}")

    def compiles(self, build, targets, jobs=1, settings={"CCACHE_DISABLE": "1"}):
        """A fault is compiled once: it would only fill a compiler's cache."""
        with open(self.log, "w") as log:
            return subprocess.run(["ninja", "-C", str(self.tree / build), f"-j{jobs}", *targets], stdout=log, stderr=log,
                                  env={**os.environ, **settings}).returncode == 0

    def targets(self, path, name):
        """What has to be built anew after a fault before the program can be run: (build, targets)."""
        program, _, checked = name.partition(" ")
        build = CHECKED if checked else build_of(program)
        # Programs find the library when they start: only those that include the source hang on it otherwise.
        of_library = path.startswith("vek/") and all(o.startswith("vek/") for o in self.users(path, build))
        if checked or (of_library and (self.tree / build / "tests" / program).exists()):
            return build, LIBRARIES
        return build, [program]

    def red(self, name, chosen=None, but=(), once=False):
        """How the program's tests end, all or the chosen ones, if wanted at one level only: "" or the first failure."""
        if chosen == []:
            return ""
        program, _, checked = name.partition(" ")
        home = self.tree / build_of(program)
        build = self.tree / CHECKED if checked else home
        pattern = (":".join(chosen) if chosen else "*") + ("-" + ":".join(but) if but else "")
        environment = {**os.environ, "KR_TESTED_BUILD": str(build), "LD_LIBRARY_PATH": str(build / "lib"),
                       "ASAN_OPTIONS": f"malloc_context_size=4:hard_rss_limit_mb={MOST_BYTES >> 20}"}
        usual = self.usual[program]
        run = Run([str(home / "tests" / program), f"--gtest_filter={pattern}"], home / "tests", environment)
        try:
            while True:
                if select.select([run.process.stdout], [], [], 1)[0]:
                    failed = run.read()
                    if failed:
                        return failed
                    if once and run.levels > 1:
                        usual.update({test: took for test, took in run.took.items() if test not in usual})
                        return ""
                    if failed is None:
                        code = run.process.wait()
                        if code != 0:
                            return f"{run.test} ends with {code}"
                        if not checked:
                            usual.update({test: took for test, took in run.took.items() if test not in usual})
                        return ""
                # The checks slow the library down by what no test tells beforehand.
                by_processor, by_clock = run.late(usual.get(run.test, 60) * (10 if checked else 1))
                if by_processor or by_clock:
                    return f"{run.test} takes too long" + ("" if by_processor else " waiting")
        finally:
            run.end()

    def stays_red(self, name, red):
        """Whether the test fails by itself too: one that a busy machine made fail has not seen the fault."""
        test = red.split()[0]
        if red.endswith("takes too long"):
            return True
        return test not in self.usual[name.partition(" ")[0]] or bool(self.red(name, [test]))

    def is_green(self, path, name, test):
        """Whether a test without a fault passes that nothing was known of."""
        if " " not in name or (name, test) in self.green:
            return True
        built = [self.compiles(*self.targets(path, each)) for each in (name.partition(" ")[0], name)]
        if all(built) and not self.red(name, [test]):
            self.green.add((name, test))
        return (name, test) in self.green

    def seeing(self, path, program):
        """The tests of the program that can see a source; None for all of them."""
        functions = self.functions(path) if path.startswith("vek/sc/") else None
        if functions is None or program not in ("vek_tests", "oracle_tests"):
            return None
        return [test for test, base, _ in names_of(self.usual[program]) if sees(program, base, path, functions)]

    def functions(self, path):
        """The library's functions whose code leads to a source, as the objects refer to one another; None for all."""
        if not self.defined:
            self.read_symbols()
        users = self.users(path, RELEASE)
        # Precompiled headers hide what they hold.
        if any(o.endswith(".gch") for o in users):
            return None
        seen, new = set(), [o for o in users if o in self.defined]
        while new:
            at = new.pop()
            if at not in seen:
                seen.add(at)
                new += [user for symbol in self.defined[at] for user in self.wanted.get(symbol, ())]
        return {symbol for o in seen for symbol in self.defined[o] if symbol.startswith("veks")}

    def read_symbols(self):
        """What the library's objects define and want."""
        build = self.tree / RELEASE
        objects = [str(o.relative_to(build)) for o in (build / "vek" / "CMakeFiles").rglob("*.o")]
        self.defined = {o: [] for o in objects}
        for line in self.said(["nm", "-AP", *objects], RELEASE).splitlines():
            place, symbol, kind = line.split()[:3]
            if kind == "U":
                self.wanted.setdefault(symbol, []).append(place[:-1])
            elif kind.isupper():
                self.defined[place[:-1]].append(symbol)

    def users(self, path, build):
        """The objects and precompiled headers of a build that a source is compiled into."""
        if build not in self.headers:
            found = self.headers[build] = {}
            for block in self.said(["ninja", "-t", "deps"], build).split("\n\n"):
                target, *names = block.split("\n")
                for name in names:
                    found.setdefault(os.path.normpath(self.tree / build / name.strip()), []).append(target.partition(":")[0])
        return self.headers[build].get(str(self.tree / path), [])

    def said(self, command, build):
        return subprocess.run(command, cwd=self.tree / build, capture_output=True, text=True, check=True).stdout

    def judge(self, site, last):
        """One of: no compile, died (with the test), survived, open: until the last program has run too."""
        target = self.tree / site.path
        before, began = target.stat(), time.time()
        whole = target.read_text()
        lines = whole.split("\n")
        lines[site.line - 1] = site.new
        # What is compiled anew need not be compiled anew once more without the fault.
        kept = {}
        for build in PRESETS:
            for made in (self.tree / build / user for user in self.users(site.path, build)):
                kept[made] = made.with_name(made.name + ".kept")
        for made, away in kept.items():
            made.rename(away)
        target.write_text("\n".join(lines))
        try:
            verdict, name, red = self.verdict(site.path, last)
        finally:
            target.write_text(whole)
            os.utime(target, ns=(before.st_atime_ns, before.st_mtime_ns))
            # Whatever else has the fault is made anew.
            for made in self.made_since(began):
                made.unlink()
            for made, away in kept.items():
                away.replace(made)
        if verdict == "died" and not self.is_green(site.path, name, red.split()[0]):
            return "survived", ""
        return verdict, f"{name}: {red}" if red else ""

    def made_since(self, began):
        for build in PRESETS:
            for place, _, files in os.walk(self.tree / build):
                for made in (Path(place, name) for name in files):
                    of_code = made.suffix in (".o", ".gch", ".a") or os.access(made, os.X_OK)
                    if of_code and not made.is_symlink() and made.stat().st_mtime >= began:
                        yield made

    def verdict(self, path, last):
        programs = programs_of(path)
        # Elsewhere the levels of the kernels make no difference.
        once = not path.startswith(("vek/sc/kernels/", "vek/core/"))
        done = {name: [] for name in programs}
        for name in programs:
            if " " in name or last:
                continue
            for chosen in likely(path, name, self.usual[name], self.killers.get(path, [])):
                if not done[name] and not self.compiles(*self.targets(path, name)):
                    return "no compile", name, ""
                red = self.red(name, chosen, once=once)
                if red and self.stays_red(name, red):
                    self.killers.setdefault(path, []).insert(0, red.split()[0])
                    return "died", name, red
                done[name] += chosen
        for name in programs:
            if (name == LAST) != last:
                continue
            if not self.compiles(*self.targets(path, name)):
                return "no compile", name, ""
            left = self.seeing(path, name.partition(" ")[0])
            if left is not None:
                left = [test for test in left if test not in done[name]]
            unstable = list(done[name])
            while red := self.red(name, left, unstable, once):
                if self.stays_red(name, red):
                    return "died", name, red
                unstable.append(red.split()[0])
        return "open" if LAST in programs and not last else "survived", "", ""


def build_of(program):
    return RELEASE if program in ("vek_tests", "oracle_tests") else CHECKED


# The tests of each program: suite and name, with the words of the test and of its file.
_tests_of = {}
_words_of = {}


def words_of(path):
    """The project's names in a source; in a header or a source of kernels those of the sources that include it too."""
    if not _words_of:
        texts = {p: (TOP / p).read_text() for room in ROOMS for p in sources(room)}
        users = {}
        for source, text in texts.items():
            for header in re.findall(r'^#include "(?:.*/)?([^"/]+)"', text, re.MULTILINE):
                users.setdefault(header, []).append(source)
        for source, text in texts.items():
            seen, new = set(), [source]
            while new:
                at = new.pop()
                if at not in seen:
                    seen.add(at)
                    # Who includes it; of kernels, who includes the header of their table.
                    new += users.get(re.sub(r"^k_(.*)\.cpp$", r"\1.h", Path(at).name), [])
            # What half the tree includes speaks of everything.
            used = seen if len(seen) < 40 else {source}
            _words_of[source] = {w for p in used for w in re.findall(r"\b(?:veks|vek|kr|vk)\w{4,}\b", texts[p])}
    return _words_of[path]


def names_of(usual):
    """Each test with its suite's and its own name as the source has them, and the value that it has been given."""
    for name in usual:
        suite, test = name.split(".", 1)
        test, _, value = test.partition("/")
        yield name, (next(p for p in reversed(suite.split("/")) if not p.isdigit()), test), value


@functools.cache
def files_named():
    """The files of the tests and of the library by their names."""
    found = {}
    for path in git("ls-files", "tests", "vek").split():
        found.setdefault(Path(path).name, []).append(TOP / path)
    return found


@functools.cache
def included(file):
    """What a test file includes, with the sources beside the headers: (files, names of functions)."""
    files, functions, new = set(), set(), [file]
    while new:
        at = new.pop()
        if at in files:
            continue
        files.add(at)
        text = at.read_text()
        functions.update(re.findall(r"\bveks\w+", text))
        for name in re.findall(r'^\s*#include "([^"]+)"', text, re.MULTILINE):
            found = files_named().get(Path(name).name, [])
            if not found:
                functions.add("every function")  # A generated list of them.
            for p in found:
                if p.is_relative_to(TOP / "tests"):
                    new += [q for q in (p, p.with_suffix(".cpp")) if q.exists()]
                else:
                    files.add(p)
    return files, functions


@functools.cache
def files_of(program):
    """The files of a program's tests by the suite and the name."""
    found = {}
    for file in sorted((TOP / "tests" / FOLDERS[program]).rglob("*.cpp")):
        for test in re.findall(r"^(?:TYPED_)?TEST(?:_F|_P)?\((\w+),\s*(\w+)\)", file.read_text(), re.MULTILINE):
            found[test] = file
    return found


def sees(program, base, path, functions):
    """Whether a test calls one of the functions, or speaks of none by name; or includes the source itself."""
    file = files_of(program).get(base)
    if file is None:
        return True
    files, named = included(file)
    return not named or "every function" in named or bool(named & functions) or TOP / path in files


def likely(path, program, usual, killers):
    """The tests that speak most of what the source has, as many as run in a second; then as run in some more."""
    folder = FOLDERS[program]
    if program not in _tests_of:
        found = []
        for file in sorted((TOP / "tests" / folder).rglob("*.cpp")):
            text = file.read_text()
            begins = list(re.finditer(r"^(?:TYPED_)?TEST(?:_F|_P)?\((\w+),\s*(\w+)\)", text, re.MULTILINE))
            for test, after in zip(begins, begins[1:] + [None]):
                body = text[test.start():after.start() if after else len(text)]
                found.append((test.groups(), set(re.findall(r"\w{6,}", body)), set(re.findall(r"\w{6,}", text)), file.stem))
        _tests_of[program] = found
    words = words_of(path)
    stem = re.sub(r"^[kp]_", "", Path(path).stem)
    # A name that many tests use tells little.
    body_uses = Counter(w for _, body, _, _ in _tests_of[program] for w in body & words)
    file_uses = Counter(w for _, _, text, _ in _tests_of[program] for w in text & words)
    scores = {}
    for names, body, text, file in _tests_of[program]:
        score = sum(1 / body_uses[w] for w in body & words) + sum(0.5 / file_uses[w] for w in text & words)
        scores[names] = score + (1 if file.startswith(stem) else 0)
    ranked = []
    for name, base, value in names_of(usual):
        seconds, score = usual[name], scores.get(base, 0) + (2 if value in words else 0)
        if score > 0 and seconds < LIKELY_SECONDS[-1]:
            ranked.append((score, seconds, name))
    ranked.sort(reverse=True)
    left = [name for name in killers if name in usual] + [name for _, _, name in ranked[:24]]
    for most in LIKELY_SECONDS:
        chosen, together = [], 0
        for name in dict.fromkeys(left):
            if together + usual[name] < most:
                chosen.append(name)
                together += usual[name]
        left = [name for name in left if name not in chosen]
        if chosen:
            yield chosen


def known_equivalents():
    if not EQUIVALENT.exists():
        return {}
    lines = [line for line in EQUIVALENT.read_text().splitlines() if line and not line.startswith("#")]
    return {key: reason for key, _, reason in (line.rpartition(" | ") for line in lines)}


@functools.cache
def source_of(path):
    return hashlib.sha1((TOP / path).read_bytes()).hexdigest()


def stand(path):
    """What a verdict holds for: the source if the fault died, the whole tree if it survived."""
    return {"source": source_of(path), "tree": tested()}


def finished():
    """The verdicts that still hold, by the fault."""
    results = WORK / "results.jsonl"
    if not results.exists():
        return {}
    done = {}
    for line in results.read_text().splitlines():
        result = json.loads(line)
        path = result["id"].partition(":")[0]
        now = (TOP / path).exists() and stand(path)
        alive = result["verdict"] in ("survived", "open")
        if now and result["source"] == now["source"] and (not alive or result["tree"] == now["tree"]):
            done[result["id"]] = result
    return done


def identity(site):
    return f"{site.path}:{site.line} | {site.new.strip()}"


def tell(site, result, reasons):
    verdict = result["verdict"]
    if verdict == "no compile":
        return
    if verdict in ("survived", "open") and site.key() in reasons:
        verdict = "equivalent"
    line = f"{verdict:9} {site.path}:{site.line} ({site.kind})"
    if verdict == "died":
        print(f"{line}  {result['by']}", flush=True)
    else:
        reason = f"\n  {reasons[site.key()]}" if verdict == "equivalent" else ""
        print(f"{line}\n  - {site.old.strip()}\n  + {site.new.strip()}{reason}", flush=True)


g_copy = None  # Of a process that judges.
g_last = 0


def starts(numbers, last):
    global g_copy, g_last
    g_copy, g_last = Copy(numbers.get()), last
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def measures(program):
    g_copy.usual[program] = {}
    return program, g_copy.usual[program], g_copy.red(program, once=True)


def usual_seconds(pool):
    """What each test takes without a fault, in seconds of a processor."""
    stamp = WORK / "usual.json"
    known = json.loads(stamp.read_text()) if stamp.exists() else {}
    found = {p: known[p]["usual"] for p in FOLDERS if p in known and known[p]["tree"] == tested(FOLDERS[p])}
    for program, took, red in pool.imap_unordered(measures, [p for p in FOLDERS if p not in found]):
        if red:
            sys.exit(f"mutants: without a fault {program}: {red}")
        found[program] = took
        known[program] = {"tree": tested(FOLDERS[program]), "usual": took}
        stamp.write_text(json.dumps(known))
    return found


def judges(work):
    site, usual, last = work
    if time.monotonic() > g_last:
        return site, None
    g_copy.usual = g_copy.usual if len(g_copy.usual) == len(usual) else usual
    before = used()
    verdict, red = g_copy.judge(site, last)
    return site, {"id": identity(site), "verdict": verdict, "by": red, "kind": site.kind, "key": site.key(),
                  "seconds": round(used() - before, 2), **stand(site.path)}


def used():
    """Seconds of processor time that this process and its children have taken."""
    return sum(sum(resource.getrusage(who)[:2]) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=100, help="how many that compile (100)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--room", choices=sorted(ROOMS))
    parser.add_argument("--file", help="only in this source")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="faults at once, each in a copy of its own")
    parser.add_argument("--minutes", type=float, default=1e6, help="begin no fault later than this")
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

    if git("status", "--porcelain", *ROOMS):
        sys.exit("mutants: commit your changes first; faults are planted in a copy of HEAD")
    print("Building copies of HEAD", flush=True)
    numbers = multiprocessing.Queue()
    for number in range(args.jobs):
        Copy(number).prepare(os.cpu_count())
        numbers.put(number)
    reasons = known_equivalents()
    done = finished()
    began = time.monotonic()
    last = began + 60 * args.minutes
    with multiprocessing.Pool(args.jobs, starts, (numbers, last)) as pool:
        usual = usual_seconds(pool)
        # As many as compile. Headers come late, as each of them builds much anew; last what is known to stay alive.
        planted, late = [], False
        while not late and (more := list(itertools.islice(drawn, args.count - len(planted)))):
            more.sort(key=lambda site: (site.key() in reasons, not site.path.endswith(".cpp")))
            for site in more:
                if identity(site) in done:
                    tell(site, done[identity(site)], reasons)
            for last in (False, True):
                state = "open" if last else ""
                new = [site for site in more if done.get(identity(site), {"verdict": ""})["verdict"] == state]
                for site, result in pool.imap_unordered(judges, ((site, usual, last) for site in new)):
                    if result is None:
                        late = True
                        continue
                    result["seconds"] += done[identity(site)]["seconds"] if last else 0
                    done[identity(site)] = result
                    with open(WORK / "results.jsonl", "a") as out:
                        out.write(json.dumps(result) + "\n")
                    tell(site, result, reasons)
            planted += [site for site in more if identity(site) in done and done[identity(site)]["verdict"] != "no compile"]
    tally = Counter()
    seconds = 0
    for site in planted:
        result = done[identity(site)]
        seconds += result["seconds"]
        alive = result["verdict"] in ("survived", "open")
        of = "equivalent" if alive and site.key() in reasons else result["verdict"]
        tally[site.path.partition("/")[0], of] += 1
    for room in ["", *ROOMS]:
        of = Counter()
        for (where, verdict), number in tally.items():
            of[verdict] += number if room in ("", where) else 0
        print(f"{room or 'together'}: {sum(of.values())} planted, {of['died']} died, {of['survived']} survived, "
              f"{of['open']} open, {of['equivalent']} equivalent")
    print(f"{(time.monotonic() - began) / 60:.1f} minutes; {seconds / max(1, len(planted)):.1f} seconds of a processor a fault")
    return 1 if any(verdict in ("survived", "open") for _, verdict in tally) else 0


if __name__ == "__main__":
    sys.exit(main())
