#!/usr/bin/env python3
"""Derives the budgets of the codecs in lab/budgets from the chains of calls that bench_chains makes, and sets the sum of
each against its chain.

usage: bench/budgets.py BUILD_DIR                    writes lab/budgets/codecs.json
       bench/budgets.py BUILD_DIR --check            what `krlab budget` tells of a frame beside the chain, in one run:
                                                     clocks, and instructions under callgrind
       bench/budgets.py BUILD_DIR --check --calls    the same call by call

BUILD_DIR is a build with KR_BENCH and KR_LAB (cmake --preset bench -DKR_LAB=ON). The dynamic loader tells a recorder
(LD_AUDIT) of each call that the program makes of the library, with its arguments; the rules below say which argument is which
parameter of the rig. --codec PART takes only codecs with this in their name; --rounds N measures the clocks so often.
"""
import argparse
import collections
import json
import os
import pathlib
import re
import subprocess
import tempfile

RECORDER = r"""
#define _GNU_SOURCE
#include <link.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
enum { most = 1000000, arguments = 10 };
static struct record { const char *name; int arguments[arguments]; } *records;
static long count;
unsigned la_version(unsigned version) { return version < LAV_CURRENT ? version : LAV_CURRENT; }
unsigned la_objopen(struct link_map *map, Lmid_t id, uintptr_t *cookie) {
    (void)id; (void)cookie;
    return map->l_name[0] == 0 ? LA_FLG_BINDFROM : strstr(map->l_name, "libvek") ? LA_FLG_BINDTO : 0;
}
uintptr_t la_symbind64(Elf64_Sym *symbol, unsigned index, uintptr_t *from, uintptr_t *to, unsigned *flags,
                       const char *name) {
    (void)index; (void)from; (void)to;
    if (strncmp(name, "veks", 4) != 0 && strcmp(name, "vekInit") != 0) {
        *flags |= LA_SYMB_NOPLTENTER | LA_SYMB_NOPLTEXIT;
    }
    return symbol->st_value;
}
Elf64_Addr la_x86_64_gnu_pltenter(Elf64_Sym *symbol, unsigned index, uintptr_t *from, uintptr_t *to,
                                  La_x86_64_regs *regs, unsigned *flags, const char *name, long *frame) {
    (void)index; (void)from; (void)to; (void)flags; (void)frame;
    if (records == NULL) {
        records = mmap(NULL, most * sizeof *records, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE,
                       -1, 0);
        if (records == MAP_FAILED) { abort(); }
    }
    if (count == most) { abort(); }
    /* Behind the six in registers they stand over the address of the return. */
    const long *const stack = (const long *)regs->lr_rsp + 1;
    const int values[arguments] = {(int)regs->lr_rdi, (int)regs->lr_rsi, (int)regs->lr_rdx, (int)regs->lr_rcx,
                                   (int)regs->lr_r8,  (int)regs->lr_r9,  (int)stack[0],     (int)stack[1],
                                   (int)stack[2],     (int)stack[3]};
    records[count].name = name;
    memcpy(records[count++].arguments, values, sizeof values);
    return symbol->st_value;
}
__attribute__((destructor)) static void tell(void) {
    FILE *out = fopen(getenv("RECORD"), "w");
    for (long i = 0; out != NULL && i < count; ++i) {
        fprintf(out, "%s", records[i].name);
        for (int k = 0; k < arguments; ++k) { fprintf(out, " %d", records[i].arguments[k]); }
        fprintf(out, "\n");
    }
    if (out != NULL) { fclose(out); }
}
"""

# Which argument (from 0) is a parameter, or its value. "rate" and "rate6600" (the two tables of the spectral pairs) come from
# the codec. Parameters without a rule keep the first value that the grid has.
RULES = {
    "veksAdaptiveCodebookDecode_AMRWB_16s": {"bfi": "0", "unusableFrame": "0", "Subframe": 5, "BitRate": "rate"},
    "veksAdaptiveCodebookDecode_GSMAMR_16s": {"Bfi": "0", "BitRate": "rate", "SubFrame": 5},
    "veksAdaptiveCodebookGainCoeff_AMRWB_16s": {"len": 4},
    "veksAdaptiveCodebookSearch_AMRWB_16s": {"Subframe": 8, "BitRate": "rate"},
    "veksAdaptiveCodebookSearch_G723": {"subFrame": 7, "BitRate": "rate"},
    "veksAdaptiveCodebookSearch_G729A_16s": {"subFrame": 6},
    "veksAdaptiveCodebookSearch_GSMAMR_16s": {"BitRate": "rate", "SubFrame": 8},
    "veksAlgebraicCodebookDecode_AMRWB_16s": {"BitRate": "rate"},
    "veksAlgebraicCodebookSearch_AMRWB_16s": {"BitRate": "rate"},
    "veksAlgebraicCodebookSearch_GSMAMR_16s": {"BitRate": "rate", "SubFrame": 8},
    "veksAutoCorr_16s32s": {"lenght": 1, "lenght Dst": 3},
    "veksAutoCorr_G723_16s": {"BitRate": "rate"},
    "veksAutoCorr_GSMAMR_16s32s": {"BitRate": "rate"},
    "veksAutoCorr_NormE_16s32s": {"lenght": 1, "lenght Dst": 3},
    "veksConvPartial_16s_Sfs": {"scaleFactor": "12"},
    "veksConvPartial_NR_16s": {"len_c": 3},
    "veksCrossCorrLagMax_16s": {"length": 2},
    "veksCrossCorr_NormM_16s": {"lenght": 2},
    "veksDecodeAdaptiveVector_G723_16s": {"BitRate": "rate"},
    "veksDecodeGain_AMRWB_16s": {"BitRate": "rate", "bfi": "0", "prevBfi": "0"},
    "veksDeemphasize_AMRWB_32s16s": {"Lenght": 3},
    "veksDeemphasize_AMRWB_NR_16s_I": {"Lenght": 2},
    "veksDeemphasize_GSMFR_16s_I": {"length": 1},
    "veksDotProd_G729A_16s32s": {"lenght": 2},
    "veksFixedCodebookDecode_GSMAMR_16s": {"BitRate": "rate", "SubFrame": 2},
    "veksGainQuant_AMRWB_16s": {"BitRate": "rate", "valClipFlag": "0"},
    "veksGainQuant_G729_16s": {"tameflag": "0"},
    "veksHarmonicFilter_16s_I": {"lenght": 3},
    "veksHarmonicFilter_NR_16s": {"lenght": 5},
    "veksHarmonicNoiseSubtract_G723_16s_I": {"lenght": "60"},
    "veksHighPassFilter_AMRWB_16s_ISfs": {"leni": 1},
    "veksHighPassFilter_Direct_AMRWB_16s": {"lend": 3, "valBounds": 4},
    "veksHighPassFilter_G729_16s_ISfs": {"lenght": 1, "scaleFactor": "13"},
    "veksHighPassFilter_GSMFR_16s": {"length": 2},
    "veksISFQuantDecode_AMRWB_16s": {"BitRate": "rate6600", "Bfi": "0"},
    "veksISFQuant_AMRWB_16s": {"BitRate": "rate6600"},
    "veksISFToISP_AMRWB_16s": {"len": 2},
    "veksISPToLPC_AMRWB_16s": {"len": 2},
    "veksImpulseResponseTarget_GSMAMR_16s": {"BitRate": "rate"},
    "veksInterpolateC_NR_16s": {"Lenght": 7, "Sfs": 5},
    "veksInterpolateC_NR_G729_16s_Sfs": {"lenght": 5, "scaleFactor": "15"},
    "veksInterpolate_G729_16s": {"length": 3},
    "veksLSFDecode_G723_16s": {"Erase": "0"},
    "veksLSPQuant_GSMAMR_16s": {"BitRate": "rate"},
    "veksLagWindow_G729_32s_I": {"lenght": 1},
    "veksLevinsonDurbin_G729_32s16s": {"Order": 1},
    "veksMPMLQFixedCodebookSearch_G723": {"subFrame": 9, "BitRate": "rate"},
    "veksMulPowerC_NR_16s_Sfs": {"length": 3, "scaleFactor": "15"},
    "veksOpenLoopPitchSearchNonDTX_GSMAMR_16s": {"BitRate": "rate"},
    "veksOpenLoopPitchSearch_AMRWB_16s": {"Lenght": 9, "lagSwitcher": "0"},
    "veksPitchPostFilter_G723_16s": {"SubFrame": 5, "BitRate": "rate"},
    "veksPostFilter_GSMAMR_16s": {"BitRate": "rate"},
    "veksPreemphasize_AMRWB_16s_ISfs": {"Lenght": 2},
    "veksPreemphasize_GSMFR_16s": {"length": 2},
    "veksQuantLSPDecode_GSMAMR_16s": {"BitRate": "rate", "Num bfi": "0"},
    "veksResidualFilter_AMRWB_16s_Sfs": {"LPCOrder": 1, "len": 4},
    "veksResidualFilter_G729_16s": {"lenght": "40"},
    "veksSchur_GSMFR_32s16s": {"length Dst": 2},
    "veksShortTermAnalysisFilter_GSMFR_16s_I": {"length": 2},
    "veksShortTermSynthesisFilter_GSMFR_16s": {"length": 3},
    "veksSynthesisFilterZeroStateResponse_NR_16s": {"lenght": 2, "scaleFactor": 3},
    "veksSynthesisFilter_AMRWB_16s32s_I": {"Lenght": 4, "valLpcOrder": 1},
    "veksSynthesisFilter_G729E_16s": {"valLPCOrder": 1, "lenght": 4},
    "veksSynthesisFilter_NR_16s_Sfs": {"lenght": 3, "i_mem": "1"},
    "veksWeightingFilter_GSMFR_16s": {"dstLength": 2},
}
IGNORED = ("Init_", "GetSize_", "StateSize_", "GetStateSize_")
# Calls that are left out of a budget, and why.
LEFT_OUT = {"veksDecodeAdaptiveVector_G729_16s":
            "which the rig measures with a delay of 0, where it takes twelve times as many instructions"}
# What a chain does between the calls, by beginning and end of the codec's name.
BETWEEN = [
    ("GSM FR", " coder", "log area ratios, gains, grid and block maximum"),
    ("GSM FR", "decoder", "log area ratios, the excitation from lag and grid"),
    ("G.729", " coder", "coefficients of the weighting, what is left of the target"),
    ("G.729", "decoder", "the pulses of the code vector"),
    ("G.723.1", " coder", "weighting filters, noise shaping, the code vector"),
    ("G.723.1", "decoder", "the code vector, scalings, coefficients of the formant filter"),
    ("AMR-WB", " coder", "decimation, scalings, targets, the choice of the vector's filter, voicing"),
    ("AMR-WB", "decoder", "voicing, scalings, enhancement, oversampling to 16 kHz, the band above 6.4 kHz"),
    ("AMR", " coder", "high-pass, the quantiser of the gains, what the filters remember"),
    ("AMR", "decoder", "gains, phase dispersion, enhancement of the pitch, smoothing, high-pass"),
]
FRAMES = 100
# Seconds of a frame, by the beginning of the codec's name; rates by their words.
SECONDS = {"GSM FR": 0.02, "AMR": 0.02, "G.729": 0.01, "G.723.1": 0.03}
RATES = {"4.75": "BR_4750", "5.15": "BR_5150", "5.9": "BR_5900", "6.7": "BR_6700", "7.4": "BR_7400", "7.95": "BR_7950",
         "10.2": "BR_10200", "12.2": "BR_12200", "6.6": "BR_6600", "8.85": "BR_8850", "12.65": "BR_12650",
         "14.25": "BR_14250", "15.85": "BR_15850", "18.25": "BR_18250", "19.85": "BR_19850", "23.05": "BR_23050",
         "23.85": "BR_23850", "6.3": "BR_6300"}


def tool(*words, **more):
    return subprocess.run([str(word) for word in words], check=True, capture_output=True, text=True, **more).stdout


def chainNames(build):
    return tool(f"{build}/bench/bench_chains", "--names").splitlines()


def rateOf(name):
    found = re.search(r"([0-9.]+) kbit/s", name)
    return RATES[found.group(1)] if found else ""


def framesOf(build, name):
    """The frames of a codec, each the list of its calls: function and arguments."""
    with tempfile.TemporaryDirectory() as directory:
        source = pathlib.Path(directory, "recorder.c")
        source.write_text(RECORDER)
        tool("cc", "-O2", "-fPIC", "-shared", "-o", f"{directory}/recorder.so", source)
        tool(f"{build}/bench/bench_chains", "--once", "--frames", FRAMES, name,
             env=dict(os.environ, LD_AUDIT=f"{directory}/recorder.so", RECORD=f"{directory}/calls"))
        frames = []
        for line in open(f"{directory}/calls"):
            function, *arguments = line.split()
            if function == "vekInit":
                frames.append([])
            elif frames and not any(word in function for word in IGNORED):
                frames[-1].append((function, [int(word) for word in arguments]))
    assert len(frames) == FRAMES, name
    return frames


def lineOf(function, arguments, rate, grid):
    parameters = {}
    for name, values in grid[function].items():
        rule = RULES.get(function, {}).get(name, values[0])
        rule = str(arguments[rule]) if isinstance(rule, int) else rule
        rule = {"rate": rate, "rate6600": "BR_6600" if rate == "BR_6600" else "BR_8850"}.get(rule, rule)
        parameters[name] = rule
    return function, tuple(parameters.items())


def budgetOf(build, name, frames, grid):
    sums = collections.Counter()
    missing = collections.Counter()
    for frame in frames:
        for function, arguments in frame:
            if function in grid and function not in LEFT_OUT:
                sums[lineOf(function, arguments, rateOf(name), grid)] += 1
            else:
                missing[function] += 1
    instructions, calls = chainInstructions(build, name)
    between = next(words for start, end, words in BETWEEN if name.startswith(start) and name.endswith(end))
    # What happens in fewer than one frame of fifty is no part of the usual frame.
    return {"name": name, "frame_seconds": next(s for word, s in SECONDS.items() if name.startswith(word)),
            "calls": [{"function": function, "parameters": dict(parameters), "calls": round(count / len(frames), 3)}
                      for (function, parameters), count in sums.items() if count / len(frames) >= 0.02],
            "missing": [f"{function}, {LEFT_OUT.get(function, 'which the rig does not measure')}, "
                        f"{count / len(frames):.3g} times a frame" for function, count in missing.items()] +
                       [f"what is no call of the library ({between}): {(1 - sum(calls.values()) / instructions) * 100:.0f} % of "
                        "the instructions of the whole chain"]}


def simple(name, frame, function, **parameters):
    """A side that is one or two calls of a whole frame."""
    functions = [function] if isinstance(function, str) else function
    return {"name": name, "frame_seconds": frame,
            "calls": [{"function": f, "parameters": {k: v for k, v in parameters.items() if k != "mode" or "SBADPCMD" in f},
                       "calls": 1} for f in functions]}


def gridOf(build, functions):
    """The values that the rig's own grid has for each parameter of a function, in its order."""
    with tempfile.TemporaryDirectory() as directory:
        table = f"{directory}/grid.csv"
        tool(f"{build}/kelvarrig", "-B", "-dMethod=Manual", "-dNumLoops=1", "-q+", f"-r{table}",
             *[f"-f={function}" for function in functions])
        rows = json.loads(tool(f"{build}/krlab", "tidy", table, "--to", "json"))["rows"]
    grid = {}
    for row in rows:
        parameters = grid.setdefault(row["function"], {})
        for name, value in row["parameters"].items():
            values = parameters.setdefault(name, [])
            if value not in values:
                values.append(value)
    return grid


def write(build, file):
    frames = {name: framesOf(build, name) for name in chainNames(build)}
    grid = gridOf(build, sorted({call[0] for side in frames.values() for frame in side for call in frame}))
    codecs = [budgetOf(build, name, side, grid) for name, side in frames.items()]
    codecs.append(simple("G.722 coder", 0.02, ["veksQMFEncode_G722_16s", "veksSBADPCMEncode_G722_16s"], len="320"))
    codecs.append(simple("G.722 decoder", 0.02, ["veksSBADPCMDecode_G722_16s", "veksQMFDecode_G722_16s"], len="320",
                         mode="1"))
    for rate in (16, 24, 32, 40):
        codecs.append(simple(f"G.726 {rate} kbit/s coder", 0.02, "veksEncode_G726_16s8u", Lenght="160",
                             BitRate=f"BR_{rate}000"))
        codecs.append(simple(f"G.726 {rate} kbit/s decoder", 0.02, "veksDecode_G726_8u16s", Lenght="160",
                             BitRate=f"BR_{rate}000", PCMLaw="LINEAR"))
    codecs.sort(key=lambda codec: codec["name"])
    file.parent.mkdir(exist_ok=True)
    file.write_text('{\n"schema": "krlab-budget-1",\n"codecs": [\n' + ",\n".join(
        '{ "name": %s, "frame_seconds": %g, "missing": %s, "calls": [\n%s ] }' % (
            json.dumps(codec["name"]), codec["frame_seconds"], json.dumps(codec.get("missing", [])),
            ",\n".join("  " + json.dumps(call) for call in codec["calls"])) for codec in codecs) + "\n] }\n")


Call = collections.namedtuple("Call", "calls clocks instructions")


def chainInstructions(build, name):
    """Instructions of a frame, and of the calls of each function in it."""
    with tempfile.TemporaryDirectory() as directory:
        tool("valgrind", "--tool=callgrind", "--toggle-collect=*chain_frame*", f"--callgrind-out-file={directory}/out",
             f"{build}/bench/bench_chains", "--once", "--frames", FRAMES, name, env=dict(os.environ, LD_BIND_NOW="1"))
        names = {}
        total = 0
        functions = collections.Counter()

        def nameOf(text):
            number, _, word = text.partition(" ")
            return names.setdefault(number, word) if word else names[number]

        files = {}

        def objectOf(text):
            number, _, word = text.partition(" ")
            return files.setdefault(number, word) if word else files[number]

        mine, callee, isCall = "", "", False
        for line in open(f"{directory}/out"):
            key, _, value = line.rstrip("\n").partition("=")
            if key == "ob":
                mine = objectOf(value)
            elif key == "fn":
                nameOf(value)
            elif key == "cob":
                objectOf(value)
            elif key == "cfn":
                callee = nameOf(value)
            elif key == "calls":
                isCall = True
            elif line[:1] in "0123456789+-*" and line.strip():
                cost = int(line.split()[-1]) if len(line.split()) > 1 else 0
                if not isCall:
                    total += cost
                elif callee.startswith("veks") and "libvek" not in mine:
                    functions[callee.split("'")[0]] += cost
                isCall = False
    return total / FRAMES, {function: cost / FRAMES for function, cost in functions.items()}


def lowQuarter(values):
    low = sorted(values)[:max(1, len(values) // 4)]
    return sum(low) / len(low)


def clocksOf(build, file, names, rounds):
    """Clocks of each line by `krlab budget`, of each codec's frames, and of the calls of each function in them. Both sides
    take turns, so that what the machine does in between is shared; the mean of the lowest quarter of the rounds counts."""
    lines = collections.defaultdict(list)
    chains = collections.defaultdict(lambda: collections.defaultdict(list))
    chosen = [word for name in names for word in ("--codec", name)]
    for _ in range(rounds):
        told = json.loads(tool(f"{build}/krlab", "budget", file, "--quiet", "--passes", 1, *chosen, "--json", "-"))
        figures = {call["line"]: call["clocks"] for codec in told["codecs"] for call in codec["calls"]}
        for line, clocks in figures.items():
            lines[line].append(clocks)
        for line in tool(f"{build}/bench/bench_chains", "--calls", "--repeats", 8, *names).splitlines():
            codec, function, calls, clocks = line.split("\t")
            chains[codec][function].append((float(calls), float(calls) * (1 if function == "frame" else float(clocks))))
    return ({line: lowQuarter(clocks) for line, clocks in lines.items()},
            {name: {function: (readings[0][0], lowQuarter([clocks for _, clocks in readings]))
                    for function, readings in functions.items()} for name, functions in chains.items()})


def countsOf(build, calls):
    """Instructions of each line."""
    with tempfile.TemporaryDirectory() as directory:
        tool(f"{build}/krlab", "count", "--quiet", "--store", f"{directory}/counts.db", "--json", f"{directory}/counts.json",
             *[word for line in sorted({textOf(call) for call in calls}) for word in ("--line", line)])
        counted = json.load(open(f"{directory}/counts.json"))["lines"]
    return {textOf(line, sorted): line["instructions"] for line in counted}


def textOf(call, order=list):
    """A line as `krlab` writes it, its parameters in this order."""
    return " ".join([call["function"]] + [f'"{name}"={value}' if " " in name else f"{name}={value}"
                                          for name, value in order(call["parameters"].items())])


def sumOf(codec, clocks, counts):
    """The budget of each function of a codec: calls, clocks and instructions of a frame."""
    functions = {}
    for call in codec["calls"]:
        was = functions.get(call["function"], Call(0, 0, 0))
        times = call["calls"]
        functions[call["function"]] = Call(was.calls + times, was.clocks + times * clocks[textOf(call)],
                                           was.instructions + times * counts[textOf(call, sorted)])
    return functions


def check(build, file, part, byCall, rounds):
    names = [name for name in chainNames(build) if part in name]
    budgets = {codec["name"]: codec for codec in json.load(open(file))["codecs"] if codec["name"] in names}
    counts = countsOf(build, [call for codec in budgets.values() for call in codec["calls"]])
    clocks, chains = clocksOf(build, file, names, rounds)
    heads = ["codec", "budget", "the same calls in the chain", "budget to them", "whole frame", "rest of it",
             "instructions: budget", "the same calls in the chain", "budget to them", "rest of the frame"]
    print("| " + " | ".join(heads) + " |\n" + "|---" * len(heads) + "|")
    for name in names:
        budget = sumOf(budgets[name], clocks, counts)
        frameCount, chainCounts = chainInstructions(build, name)
        frame = chains[name].pop("frame")[1]
        # Of the chain those calls that the budget has.
        sums = [sum(call.clocks for call in budget.values()), sum(chains[name][function][1] for function in budget),
                sum(call.instructions for call in budget.values()), sum(chainCounts[function] for function in budget)]
        print(f"| {name} | {sums[0]:.0f} | {sums[1]:.0f} | {(sums[0] / sums[1] - 1) * 100:+.0f} % | {frame:.0f} | "
              f"{(1 - sums[1] / frame) * 100:.0f} % | {sums[2]:.0f} | {sums[3]:.0f} | {(sums[2] / sums[3] - 1) * 100:+.1f} % | "
              f"{(1 - sums[3] / frameCount) * 100:.0f} % |", flush=True)
        for function, (calls, inChain) in sorted(chains[name].items(), key=lambda one: -one[1][1]) if byCall else []:
            own = budget.get(function, Call(0, 0, 0))
            print(f"    {function}: {own.calls:.3g} / {calls:.3g} calls, clocks {own.clocks:.0f} / {inChain:.0f}, "
                  f"instructions {own.instructions:.0f} / {chainCounts.get(function, 0):.0f}", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--calls", action="store_true")
    parser.add_argument("--codec", default="")
    parser.add_argument("--rounds", type=int, default=12)
    options = parser.parse_args()
    file = pathlib.Path(__file__).resolve().parent.parent / "lab" / "budgets" / "codecs.json"
    if options.check:
        check(options.build, file, options.codec, options.calls, options.rounds)
    else:
        write(options.build, file)


if __name__ == "__main__":
    main()
