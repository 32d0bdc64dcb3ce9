#!/usr/bin/env python3
"""Plants small faults in the sources, one at a time, and tells which of them no test sees.

    tests/mutants/mutants.py --count 100             a hundred, drawn with seed 1 over all rooms
    tests/mutants/mutants.py --room api --count 50
    tests/mutants/mutants.py --file vek/sc/g726/adpcm.cpp --count 20 --seed 7
    tests/mutants/mutants.py --list --count 20       only tells what would be planted

Works on a copy of HEAD in build-mutants/, never on the work tree. A fault that does not compile is no fault: another is
drawn. A fault dies when a test fails, crashes or takes ten times as long, and does so again by itself. Survivors are looked
up in equivalent.txt: there a line says why no test can see it. Exit status 1 if others survive. Results are kept in
build-mutants/results.jsonl, and a run that was cut off goes on where it stood; after a commit only faults that survived or
whose source has changed are planted anew.
"""

import argparse
import functools
import hashlib
import itertools
import json
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
# The test programs that can see a room, those first that are most likely to.
PROGRAMS = {
    "api/src": ["kr_tests", "vk_tests", "cli_tests", "suite_tests"],
    "api/lib": ["vk_tests", "suite_tests", "cli_tests"],
    "veksc": ["suite_tests", "cli_tests"],
    "vek": ["vek_tests", "oracle_tests", "suite_tests"],
}
FOLDERS = {
    "kr_tests": "api", "vk_tests": "lib", "suite_tests": "suites", "vek_tests": "vek", "oracle_tests": "oracle",
    "cli_tests": "cli",
}
LEAST_LIMIT = 60  # seconds that a test may take whatever it took without a fault
LIKELY_SECONDS = 15  # of the tests of a program that are run before all others
MOST_BYTES = 8 << 30  # that a test may ask for: a fault may ask for all there is


def git(*words):
    return subprocess.run(["git", *words], cwd=TOP, capture_output=True, text=True, check=True).stdout


@functools.cache
def tested():
    """What the tests' verdicts hold for: the committed tree but for documents and the like."""
    kept = [line for line in git("ls-tree", "-r", "HEAD", *ROOMS, "cmake", "CMakeLists.txt", "tests").splitlines()
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


class Shard:
    """A running test program, and the test that it is at."""

    EVENT = re.compile(r"\[ +(RUN|OK|FAILED) +\] ([^\s,]+)")

    def __init__(self, command, cwd, environment):
        self.process = subprocess.Popen(
            command, cwd=cwd, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            start_new_session=True, preexec_fn=lambda: Shard.limit("ASAN_OPTIONS" not in environment))
        self.test = "the start"
        self.since = time.monotonic()
        self.rest = ""
        self.took = {}

    @staticmethod
    def limit(memory):
        """The address checks of a program reserve more than there is, and have a limit of their own."""
        if memory:
            resource.setrlimit(resource.RLIMIT_AS, (MOST_BYTES, resource.getrlimit(resource.RLIMIT_AS)[1]))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

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
            now = time.monotonic()
            if word == "RUN":
                self.test = name
            elif name == self.test:
                self.took[name] = max(self.took.get(name, 0), now - self.since)
                if word == "FAILED":
                    return name
            self.since = now
        return ""

    def end(self):
        try:
            os.killpg(self.process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self.process.stdout.close()
        return self.process.wait()


class Copy:
    """The tree that faults are planted in, built once without any."""

    def __init__(self, jobs):
        self.tree = WORK / "tree"
        self.build = WORK / "tree" / "build-test"
        self.jobs = jobs
        self.usual = {}  # program: {test: seconds}
        self.defined, self.wanted, self.headers = {}, {}, {}  # Of objects: their symbols; whose symbol; their headers.

    def prepare(self):
        head = git("rev-parse", "HEAD").strip()
        WORK.mkdir(exist_ok=True)
        stamp = WORK / "usual.json"
        if not self.tree.exists():
            subprocess.run(["git", "clone", "-q", "--no-hardlinks", str(TOP), str(self.tree)], check=True)
        subprocess.run(["git", "fetch", "-q", str(TOP), head], cwd=self.tree, check=True)
        subprocess.run(["git", "checkout", "-qf", head], cwd=self.tree, check=True)
        if not (self.build / "build.ninja").exists():
            options = ["-DKR_WERROR=OFF"]
            subprocess.run(["cmake", "--preset", "test", *options], cwd=self.tree, check=True, stdout=subprocess.DEVNULL)
        every = sorted({p for programs in PROGRAMS.values() for p in programs})
        if not self.compiles(every):
            sys.exit("mutants: the tree does not build without a fault; see build-mutants/build.log")
        if stamp.exists() and json.loads(stamp.read_text())["tree"] == tested():
            self.usual = json.loads(stamp.read_text())["usual"]
            return
        for name in every:
            self.usual[name] = {}
            red = self.red(name)
            if red:
                sys.exit(f"mutants: without a fault {name}: {red}")
        stamp.write_text(json.dumps({"tree": tested(), "usual": self.usual}))

    def compiles(self, targets):
        with open(WORK / "build.log", "w") as log:
            command = ["cmake", "--build", str(self.build), "-j", str(self.jobs), "--target", *targets]
            return subprocess.run(command, stdout=log, stderr=log).returncode == 0

    def red(self, name, chosen=None, but=(), shards=None):
        """How the program's tests end, all or the chosen ones, in so many processes: "" or the first failure."""
        if chosen == []:
            return ""
        program = next(self.build.rglob(f"tests/**/{name}"))
        pattern = (":".join(chosen) if chosen else "*") + ("-" + ":".join(but) if but else "")
        environment = {**os.environ, "KR_TESTED_BUILD": str(self.build)}
        if name in ("vek_tests", "oracle_tests"):
            environment["LD_LIBRARY_PATH"] = str(self.build / "lib")
            environment["ASAN_OPTIONS"] = f"malloc_context_size=4:hard_rss_limit_mb={MOST_BYTES >> 20}"
        shards = shards or self.jobs
        running = []
        for shard in range(shards):
            split = {"GTEST_TOTAL_SHARDS": str(shards), "GTEST_SHARD_INDEX": str(shard)}
            running.append(Shard([str(program), f"--gtest_filter={pattern}"], program.parent, {**environment, **split}))
        usual = self.usual[name]
        try:
            while running:
                ready = select.select([shard.process.stdout for shard in running], [], [], 1)[0]
                for shard in list(running):
                    if shard.process.stdout in ready:
                        failed = shard.read()
                        if failed:
                            return failed
                        if failed is None:
                            running.remove(shard)
                            code = shard.process.wait()
                            shard.process.stdout.close()
                            if code != 0:
                                return f"{shard.test} ends with {code}"
                            if shard.took.keys() - usual.keys():
                                usual.update(shard.took)
                            continue
                    if time.monotonic() - shard.since > max(LEAST_LIMIT, 10 * usual.get(shard.test, LEAST_LIMIT)):
                        return f"{shard.test} takes too long"
            return ""
        finally:
            for shard in running:
                shard.end()

    def stays_red(self, name, red):
        """Whether the test fails by itself too: one that a busy machine made fail has not seen the fault."""
        test = red.split()[0]
        return test not in self.usual[name] or bool(self.red(name, [test], shards=1))

    def seeing(self, path, name):
        """The tests of the program that can see a source; None for all of them."""
        functions = self.functions(path) if path.startswith("vek/sc/") else None
        if functions is None or name not in ("vek_tests", "oracle_tests"):
            return None
        return [test for test, base in names_of(self.usual[name]) if sees(name, base, path, functions)]

    def functions(self, path):
        """The library's functions whose code leads to a source, as the objects refer to one another; None for all."""
        if not self.defined:
            self.read_objects()
        if path.endswith(".cpp"):
            new = [o for o in self.defined if o.endswith("/" + path.removeprefix("vek/") + ".o")]
        else:
            having = [o for o, names in self.headers.items() if str(self.tree / path) in names]
            # Precompiled headers hide what they hold.
            if any(o not in self.defined and o.endswith(".gch") for o in having):
                return None
            new = [o for o in having if o in self.defined]
        seen = set()
        while new:
            at = new.pop()
            if at not in seen:
                seen.add(at)
                new += [user for symbol in self.defined[at] for user in self.wanted.get(symbol, ())]
        return {symbol for o in seen for symbol in self.defined[o] if symbol.startswith("veks")}

    def read_objects(self):
        """What the library's objects define and want, and the headers that they include."""
        objects = [str(o.relative_to(self.build)) for o in (self.build / "vek" / "CMakeFiles").rglob("*.o")]
        self.defined = {o: [] for o in objects}
        for line in self.said(["nm", "-AP", *objects]).splitlines():
            place, symbol, kind = line.split()[:3]
            if kind == "U":
                self.wanted.setdefault(symbol, []).append(place[:-1])
            elif kind.isupper():
                self.defined[place[:-1]].append(symbol)
        for block in self.said(["ninja", "-t", "deps"]).split("\n\n"):
            target, *names = block.split("\n")
            self.headers[target.partition(":")[0]] = {os.path.normpath(self.build / name.strip()) for name in names}

    def said(self, command):
        return subprocess.run(command, cwd=self.build, capture_output=True, text=True, check=True).stdout

    def judge(self, site):
        """One of: no compile, died (with the test), survived."""
        target = self.tree / site.path
        whole = target.read_text()
        lines = whole.split("\n")
        lines[site.line - 1] = site.new
        target.write_text("\n".join(lines))
        try:
            programs = programs_of(site.path)
            first = {p: likely(site.path, p, self.usual[p]) for p in programs}
            for name in programs:
                if not self.compiles([name]):
                    return "no compile", ""
                red = self.red(name, first[name])
                if red and self.stays_red(name, red):
                    return "died", f"{name}: {red}"
            for name in programs:
                unstable = list(first[name])
                seeing = self.seeing(site.path, name)
                while red := self.red(name, seeing, unstable):
                    if self.stays_red(name, red):
                        return "died", f"{name}: {red}"
                    unstable.append(red.split()[0])
            return "survived", ""
        finally:
            target.write_text(whole)


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
    """Each test with its suite's and its own name as the source has them."""
    for name in usual:
        yield name, tuple(next(p for p in reversed(part.split("/")) if not p.isdigit()) for part in name.split(".", 1))


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


def likely(path, program, usual):
    """The tests that speak most of what the source has, as many as run in some seconds."""
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
    for name, base in names_of(usual):
        seconds, score = usual[name], scores.get(base, 0)
        if score > 0 and seconds < LIKELY_SECONDS:
            ranked.append((score, seconds, name))
    chosen, spent = [], 0
    for _, seconds, name in sorted(ranked, reverse=True)[:24]:
        if spent + seconds < LIKELY_SECONDS:
            chosen.append(name)
            spent += seconds
    return chosen


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
        if now and result["source"] == now["source"] and (result["verdict"] != "survived" or result["tree"] == now["tree"]):
            done[result["id"]] = result
    return done


def identity(site):
    return f"{site.path}:{site.line} | {site.new.strip()}"


def tell(site, result, reasons):
    verdict = result["verdict"]
    if verdict == "no compile":
        return
    if verdict == "survived" and site.key() in reasons:
        verdict = "equivalent"
    line = f"{verdict:9} {site.path}:{site.line} ({site.kind})"
    if verdict == "died":
        print(f"{line}  {result['by']}", flush=True)
    else:
        reason = f"\n  {reasons[site.key()]}" if verdict == "equivalent" else ""
        print(f"{line}\n  - {site.old.strip()}\n  + {site.new.strip()}{reason}", flush=True)


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

    if git("status", "--porcelain", *ROOMS):
        sys.exit("mutants: commit your changes first; faults are planted in a copy of HEAD")
    copy = Copy(args.jobs)
    print("Building a copy of HEAD", flush=True)
    copy.prepare()
    reasons = known_equivalents()
    done = finished()
    began = time.monotonic()
    # As many as compile. Headers come last: each of them builds much anew.
    planted = []
    while more := list(itertools.islice(drawn, args.count - len(planted))):
        for site in sorted(more, key=lambda s: not s.path.endswith(".cpp")):
            if identity(site) not in done:
                verdict, red = copy.judge(site)
                result = {"id": identity(site), "verdict": verdict, "by": red, "kind": site.kind, "key": site.key(),
                          **stand(site.path)}
                done[identity(site)] = result
                with open(WORK / "results.jsonl", "a") as out:
                    out.write(json.dumps(result) + "\n")
            tell(site, done[identity(site)], reasons)
        planted += [site for site in more if done[identity(site)]["verdict"] != "no compile"]
    tally = Counter()
    for site in planted:
        verdict = done[identity(site)]["verdict"]
        tally[site.path.partition("/")[0], "equivalent" if verdict == "survived" and site.key() in reasons else verdict] += 1
    for room in ["", *ROOMS]:
        of = Counter()
        for (where, verdict), number in tally.items():
            of[verdict] += number if room in ("", where) else 0
        print(f"{room or 'together'}: {sum(of.values())} planted, {of['died']} died, {of['survived']} survived, "
              f"{of['equivalent']} equivalent")
    print(f"{(time.monotonic() - began) / 60:.1f} minutes")
    return 1 if any(verdict == "survived" for _, verdict in tally) else 0


if __name__ == "__main__":
    sys.exit(main())
