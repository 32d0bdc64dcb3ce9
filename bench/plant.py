#!/usr/bin/env python3
"""Builds test copies of the library in which some functions are delayed by a known share of their calls.

usage: bench/plant.py BUILD_DIR OUT_DIR PERCENT [--passes 5]
Makes OUT_DIR/base and OUT_DIR/delayed. In both, each function of the list is entered through a stub that jumps on to the
real one; in `delayed` the stub counts down first. The counts are found by measuring. OUT_DIR/truth.json tells, for each
line of these functions, the ratio that a long measurement gives.
"""
import argparse
import json
import math
import pathlib
import re
import shutil
import statistics
import subprocess

# Different families, 20 to 70,000 clocks; no function of the list calls another one, and none is called from within the
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

STUB = """
__asm__(".text\\n.p2align 6\\n.globl {name}\\n.type {name},@function\\n{name}:\\n{delay}\\tjmp *real_{index}(%rip)\\n"
        ".size {name}, .-{name}\\n");
__attribute__((visibility("hidden"))) void *real_{index};
"""
DELAY = "\\tmovl ${count}, %r11d\\n1:\\tdecl %r11d\\n\\tjnz 1b\\n"


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
        count = counts.get(name, 0)
        text += STUB.format(name=name, index=index, delay=DELAY.format(count=count) if count else "")
    text += "static void *find(const char *name) {\n    void *real = dlsym(RTLD_NEXT, name);\n"
    text += "    if (real == NULL) {\n        abort();\n    }\n    return real;\n}\n"
    text += "__attribute__((constructor)) static void findAll(void) {\n"
    text += "".join(f'    real_{i} = find("{name}");\n' for i, name in enumerate(FUNCTIONS)) + "}\n"
    stub = out / "stub.c"
    stub.write_text(text)
    subprocess.run(["cc", "-O2", "-fPIC", "-shared", "-o", out / LIBRARIES[2], stub, f"-Wl,-soname,{LIBRARIES[2]}",
                    "-Wl,--no-as-needed", f"-L{out}", f"-l:{REAL}", "-Wl,-rpath,$ORIGIN"], check=True)


def measure(rig, libraries, loops):
    """Clocks per call of each line of the functions, from whole counts."""
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


def smallest(rig, directories, passes, loops):
    """The smallest clocks of each line in each directory, the passes taken in turn."""
    best = [{} for _ in directories]
    for _ in range(passes):
        for values, directory in zip(best, directories):
            for line, clocks in measure(rig, directory, loops).items():
                values[line] = min(values.get(line, math.inf), clocks)
    return best


def longest(clocks):
    """The longest line of each function."""
    result = {}
    for line, value in clocks.items():
        name = line.split(" ", 1)[0]
        if value > result.get(name, ("", 0))[1]:
            result[name] = (line, value)
    return result


def plant(build, out, percent, passes):
    build, out = pathlib.Path(build).resolve(), pathlib.Path(out).resolve()
    rig, source = build / "kelvarrig", build / "lib"
    build_library(source, out / "base", {})
    [base] = smallest(rig, [out / "base"], passes, 64)
    share = percent / 100
    counts = {name: max(1, round(value * share)) for name, (_, value) in longest(base).items()}
    missing = [name for name in FUNCTIONS if name not in counts]
    if missing:
        raise SystemExit(f"no line was measured of {', '.join(missing)}")
    for _ in range(3):
        build_library(source, out / "delayed", counts)
        base, delayed = smallest(rig, [out / "base", out / "delayed"], passes, 64)
        for name, (line, value) in longest(base).items():
            got = delayed[line] - value
            # A countdown runs beside the function's own work in part: at most doubled in a step.
            factor = min(2.0, max(0.5, value * share / got)) if got > 0 else 2.0
            counts[name] = max(1, round(counts[name] * factor))
    build_library(source, out / "delayed", counts)
    base, delayed = smallest(rig, [out / "base", out / "delayed"], 2 * passes, 64)
    truth = {line: {"clocks": base[line], "ratio": delayed[line] / base[line]} for line in base}
    (out / "truth.json").write_text(json.dumps({"percent": percent, "counts": counts, "lines": truth}, indent=1))
    return truth


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("out")
    parser.add_argument("percent", type=float)
    parser.add_argument("--passes", type=int, default=5)
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
