#!/usr/bin/env python3
"""Builds test copies of the library in which some functions are delayed by a known share of their calls.

usage: bench/plant.py BUILD_DIR OUT_DIR PERCENT [--passes 8]
Makes OUT_DIR/base and OUT_DIR/delayed. In both, each function of the list is entered through a stub that waits until all
before it is done and jumps on to the real one; in `delayed` the stub counts down before that, beside nothing else. What a
countdown takes is timed by itself, what a function takes is the smallest of many readings of `base`.
OUT_DIR/truth.json tells, for each line of these functions, the ratio that follows.
"""
import argparse
import json
import math
import pathlib
import re
import shutil
import statistics
import subprocess

# Different families, 70 to 56,000 clocks with the stub; no function of the list calls another one, and none is called from within the
# library. All lines of a function take nearly the same time, except the one before the last, whose longest line sets the delay.
FUNCTIONS = [
    "veksFullbandController_EC_16s", "veksEncDTXBuffer_AMRWB_16s", "veksResidualFilter_G729_16s",
    "veksAdaptiveCodebookGain_GSMAMR_16s", "veksLSFDecode_G7291_16s", "veksDecomposeMLTToDCT_G722_16s",
    "veksSyntesisFilterZeroInput_G728_16s", "veksTiltCompensation_G723_32s16s", "veksSubbandAnalysis_16s32sc_Sfs",
    "veksSynthesisFilter_G723_16s", "veksSubbandController_EC_32f", "veksLevinsonDurbin_G729B",
    "veksImpulseResponseTarget_GSMAMR_16s", "veksLPCToLSP_G729_32f", "veksOpenLoopPitchSearch_G723_16s",
    "veksPostFilter_GSMAMR_16s", "veksLSPQuant_G729E_32f", "veksGainQuant_G723_16s",
    "veksBandJoinUpsample_AMRWBE_16s", "veksISFQuant_AMRWB_16s",
]
LIBRARIES = ["libvekcore.so.1", "libveks.so.1", "libveksc.so.1"]
REAL = "libveksr.so.1"  # as long as the name that it replaces

# Nothing before the countdown or after it runs beside it, so that it lasts as long as it does by itself.
STUB = """
__asm__(".text\\n.p2align 6\\n.globl {name}\\n.type {name},@function\\n{name}:\\n\\tlfence\\n{delay}\\tlfence\\n"
        "\\tjmp *real_{index}(%rip)\\n.size {name}, .-{name}\\n");
__attribute__((visibility("hidden"))) void *real_{index};
"""
# One clock of the core for each step. A short countdown is written out: it has no end for the processor to foresee.
LONGEST_WRITTEN_OUT = 64

TIMER = r"""
#include <stdint.h>
#include <stdio.h>
#include <x86intrin.h>
{functions}
static void (*const functions[])(void) = {{ {names} }};
static const int calls[] = {{ {calls} }};
enum {{ count = sizeof functions / sizeof functions[0] }};
int main(void) {{
    uint64_t best[count];
    for (int i = 0; i < count; ++i) {{ best[i] = UINT64_MAX; }}
    const uint64_t begin = __rdtsc();
    for (int round = 0; round < 2000 || __rdtsc() - begin < 20000000000; ++round) {{
        for (int i = 0; i < count; ++i) {{
            const uint64_t start = __rdtsc();
            for (int call = 0; call < calls[i]; ++call) {{ functions[i](); }}
            const uint64_t clocks = __rdtsc() - start;
            if (clocks < best[i]) {{ best[i] = clocks; }}
        }}
    }}
    for (int i = 0; i < count; ++i) {{ printf("%.2f\n", (double)best[i] / calls[i]); }}
    return 0;
}}
"""


def delay_text(count):
    """The instructions of a countdown of `count` clocks of the core."""
    if count <= LONGEST_WRITTEN_OUT:
        return f"\\t.rept {count}\\n\\tdecl %r11d\\n\\t.endr\\n" if count else ""
    return f"\\tmovl ${count}, %r11d\\n1:\\tdecl %r11d\\n\\tjnz 1b\\n"


def delays(out, counts):
    """What countdowns take in clocks of the counter: the smallest of many readings, less that of none."""
    functions, names, calls = "", [], []
    for index, count in enumerate([0, *counts]):
        names.append(f"delay{index}")
        calls.append(str(1 + 20000 // (count + 30)))  # a reading of 10 us: long beside the counter's step, short beside noise
        functions += (f'__asm__(".text\\n.p2align 6\\ndelay{index}:\\n\\tlfence\\n{delay_text(count)}\\tlfence\\n\\tret\\n");\n'
                      f'extern void delay{index}(void);\n')
    source, program = out / "timer.c", out / "timer"
    source.write_text(TIMER.format(functions=functions, names=", ".join(names), calls=", ".join(calls)))
    subprocess.run(["cc", "-O2", "-o", program, source], check=True)
    none, *clocks = map(float, subprocess.run([program], check=True, capture_output=True, text=True).stdout.split())
    return [value - none for value in clocks]


def build_library(source, out, counts):
    """Copies the three objects to `out`, the suites' one behind a stub library that has its name."""
    out.mkdir(parents=True, exist_ok=True)
    for name in LIBRARIES[:2]:
        shutil.copy((source / name).resolve(), out / name)
    # The real one must not be taken for the stub that has its name.
    real = (source / LIBRARIES[2]).read_bytes()
    (out / REAL).write_bytes(real.replace(LIBRARIES[2].encode() + b"\0", REAL.encode() + b"\0"))
    text = "#define _GNU_SOURCE\n#include <dlfcn.h>\n#include <stdlib.h>\n"
    for index, name in enumerate(FUNCTIONS):
        text += STUB.format(name=name, index=index, delay=delay_text(counts.get(name, 0)))
    text += "static void *find(const char *name) {\n    void *real = dlsym(RTLD_NEXT, name);\n"
    text += "    if (real == NULL) {\n        abort();\n    }\n    return real;\n}\n"
    text += "__attribute__((constructor)) static void findAll(void) {\n"
    text += "".join(f'    real_{i} = find("{name}");\n' for i, name in enumerate(FUNCTIONS)) + "}\n"
    stub = out / "stub.c"
    stub.write_text(text)
    subprocess.run(["cc", "-O2", "-fPIC", "-shared", "-o", out / LIBRARIES[2], stub, f"-Wl,-soname,{LIBRARIES[2]}",
                    "-Wl,--no-as-needed", f"-L{out}", f"-l:{REAL}", "-Wl,-rpath,$ORIGIN"], check=True)


def measure(rig, libraries, loops):
    """The smallest clocks per call of each line of the functions in one process, from whole counts."""
    command = [rig, "-B", "-LINFO", "-dMethod=Iterative", f"-dStartNumLoops={loops}", "-dStopNumLoops=1", "-dAccuracy=0"]
    text = subprocess.run([*command, *(f"-f={name}" for name in FUNCTIONS)], capture_output=True, text=True, check=False,
                          env={"LD_LIBRARY_PATH": str(libraries)}).stdout
    result, function, parameters, count, best = {}, "", "", 0, math.inf
    for line in text.splitlines():
        if match := re.match(r"\| Function  : (\S+)", line):
            function = match[1]
        elif match := re.match(r" +(?:num|stop)Loops +=\s*(\d+)", line):
            count = int(match[1])
        elif match := re.match(r" +(?:num|stop)Clocks += *(\d+)", line):
            best = min(best, int(match[1]) / count)
        elif "perf=" in line:
            result[f"{function} {parameters}"] = best
            best = math.inf
        elif "=" in line and not line.startswith((" ", "|")):
            parameters = line.strip()
    return result


def levels(rig, libraries, passes):
    """The same from several processes. Readings of one call to 64: what is short fits between two disturbances."""
    best = {}
    for _ in range(passes):
        for loops in (64, 8):
            for line, clocks in measure(rig, libraries, loops).items():
                best[line] = min(best.get(line, math.inf), clocks)
    return best


def longest(clocks):
    """The longest line of each function."""
    result = {}
    for line, value in clocks.items():
        name = line.split(" ", 1)[0]
        if value > result.get(name, ("", 0))[1]:
            result[name] = (line, value)
    return result


def plant(build, out, percent, passes=8):
    build, out = pathlib.Path(build).resolve(), pathlib.Path(out).resolve()
    build_library(build / "lib", out / "base", {})
    base = levels(build / "kelvarrig", out / "base", passes)
    wanted = {name: value * percent / 100 for name, (_, value) in longest(base).items()}
    missing = [name for name in FUNCTIONS if name not in wanted]
    if missing:
        raise SystemExit(f"no line was measured of {', '.join(missing)}")
    [unit] = delays(out, [10000])
    counts = [max(1, round(clocks / unit * 10000)) for clocks in wanted.values()]
    for _ in range(2):
        taken = delays(out, counts)
        counts = [max(1, count + round((clocks - got) / unit * 10000))
                  for count, clocks, got in zip(counts, wanted.values(), taken)]
    delay = dict(zip(wanted, delays(out, counts)))
    build_library(build / "lib", out / "delayed", dict(zip(wanted, counts)))
    truth = {line: {"clocks": clocks, "ratio": 1 + delay[line.split(" ", 1)[0]] / clocks} for line, clocks in base.items()}
    (out / "truth.json").write_text(json.dumps({"percent": percent, "counts": dict(zip(wanted, counts)), "lines": truth},
                                               indent=1))
    return truth


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("out")
    parser.add_argument("percent", type=float)
    parser.add_argument("--passes", type=int, default=8, help="for measuring what the functions take")
    args = parser.parse_args()
    truth = plant(args.build, args.out, args.percent, args.passes)
    names = {}
    for line, entry in truth.items():
        names.setdefault(line.split(" ", 1)[0], []).append(entry)
    print("| function | lines | clocks | true ratio |\n|---|---|---|---|")
    for name, entries in names.items():
        clocks = [entry["clocks"] for entry in entries]
        ratios = [entry["ratio"] for entry in entries]
        print(f"| {name} | {len(entries)} | {min(clocks):.0f} .. {max(clocks):.0f} | "
              f"{min(ratios):.3f} .. {max(ratios):.3f}, median {statistics.median(ratios):.3f} |")


if __name__ == "__main__":
    main()
