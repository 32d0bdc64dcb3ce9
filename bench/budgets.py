#!/usr/bin/env python3
"""Derives the budgets of the codecs in lab/budgets from the chains of calls in the tests against independent codecs, and
sets the sum of each against what its calls take inside the chain.

usage: bench/budgets.py BUILD_DIR            writes lab/budgets/codecs.json
       bench/budgets.py BUILD_DIR --check    a table: clocks of a frame by `krlab budget` and in the chain, in one run

BUILD_DIR is a build with tests (build-test). The dynamic loader tells a recorder (LD_AUDIT) of each call that the test
program makes of the library, with its arguments; the rules below say which argument is which parameter of the rig.
"""
import argparse
import collections
import json
import os
import pathlib
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
#include <x86intrin.h>
/* The tests run first with the best kernels; what follows vekInitCpu is no more of interest. */
enum { most = 4000000 };
static struct record { const char *name; int arguments[6]; uint64_t clocks; } *records;
static long count;
static int stopped;
unsigned la_version(unsigned version) { return version < LAV_CURRENT ? version : LAV_CURRENT; }
unsigned la_objopen(struct link_map *map, Lmid_t id, uintptr_t *cookie) {
    (void)id; (void)cookie;
    return map->l_name[0] == 0 ? LA_FLG_BINDFROM : strstr(map->l_name, "libvek") ? LA_FLG_BINDTO : 0;
}
uintptr_t la_symbind64(Elf64_Sym *symbol, unsigned index, uintptr_t *from, uintptr_t *to, unsigned *flags,
                       const char *name) {
    (void)index; (void)from; (void)to;
    if (strncmp(name, "veks", 4) != 0 && strcmp(name, "vekInitCpu") != 0) {
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
    }
    stopped |= records == MAP_FAILED || count == most || strcmp(name, "vekInitCpu") == 0;
    if (stopped) { return symbol->st_value; }
    const int arguments[6] = {(int)regs->lr_rdi, (int)regs->lr_rsi, (int)regs->lr_rdx,
                              (int)regs->lr_rcx, (int)regs->lr_r8,  (int)regs->lr_r9};
    records[count].name = name;
    memcpy(records[count].arguments, arguments, sizeof arguments);
    ++count;
#ifdef TIMED
    *frame = 128; /* of arguments on the stack; without it there is no call of pltexit */
    records[count - 1].clocks = __rdtsc();
#endif
    return symbol->st_value;
}
#ifdef TIMED
unsigned la_x86_64_gnu_pltexit(Elf64_Sym *symbol, unsigned index, uintptr_t *from, uintptr_t *to,
                               const La_x86_64_regs *in, La_x86_64_retval *result, const char *name) {
    const uint64_t now = __rdtsc();
    (void)symbol; (void)index; (void)from; (void)to; (void)in; (void)result; (void)name;
    if (!stopped) { records[count - 1].clocks = now - records[count - 1].clocks; }
    return 0;
}
#endif
__attribute__((destructor)) static void tell(void) {
    FILE *out = fopen(getenv("RECORD"), "w");
    for (long i = 0; out != NULL && i < count; ++i) {
        fprintf(out, "%s", records[i].name);
        for (int k = 0; k < 6; ++k) { fprintf(out, " %d", records[i].arguments[k]); }
        fprintf(out, " %llu\n", (unsigned long long)records[i].clocks);
    }
    if (out != NULL) { fclose(out); }
}
"""

AMR = ["BR_4750", "BR_5150", "BR_5900", "BR_6700", "BR_7400", "BR_7950", "BR_10200", "BR_12200"]
AMR_NAMES = ["4.75", "5.15", "5.9", "6.7", "7.4", "7.95", "10.2", "12.2"]
WB = ["BR_6600", "BR_8850", "BR_12650", "BR_14250", "BR_15850", "BR_18250", "BR_19850", "BR_23050", "BR_23850"]
WB_NAMES = ["6.6", "8.85", "12.65", "14.25", "15.85", "18.25", "19.85", "23.05", "23.85"]

# Which argument (from 0) is a parameter, or its value. "rate", "rate6600" (the two tables of the spectral pairs) and
# "subframe" (the number of the function's call in the frame) come from the chain. Parameters without a rule keep the only
# value that the grid has.
RULES = {
    "veksAdaptiveCodebookDecode_AMRWB_16s": {"bfi": "0", "unusableFrame": "0", "Subframe": "subframe", "BitRate": "rate"},
    "veksAdaptiveCodebookDecode_GSMAMR_16s": {"Bfi": "0", "BitRate": "rate", "SubFrame": "subframe"},
    "veksAdaptiveCodebookGainCoeff_AMRWB_16s": {"len": 4},
    "veksAdaptiveCodebookSearch_AMRWB_16s": {"Subframe": "subframe", "BitRate": "rate"},
    "veksAdaptiveCodebookSearch_G723": {"subFrame": "subframe", "BitRate": "rate"},
    "veksAdaptiveCodebookSearch_G729A_16s": {"subFrame": "subframe"},
    "veksAdaptiveCodebookSearch_GSMAMR_16s": {"BitRate": "rate", "SubFrame": "subframe"},
    "veksAlgebraicCodebookDecode_AMRWB_16s": {"BitRate": "rate"},
    "veksAlgebraicCodebookSearch_AMRWB_16s": {"BitRate": "rate"},
    "veksAlgebraicCodebookSearch_GSMAMR_16s": {"BitRate": "rate", "SubFrame": "subframe"},
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
    "veksFixedCodebookDecode_GSMAMR_16s": {"BitRate": "rate", "SubFrame": "subframe"},
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
    "veksInterpolateC_NR_16s": {"Lenght": 5, "Sfs": "2"},
    "veksInterpolateC_NR_G729_16s_Sfs": {"lenght": 5, "scaleFactor": "15"},
    "veksInterpolate_G729_16s": {"length": 3},
    "veksLSFDecode_G723_16s": {"Erase": "0"},
    "veksLSPQuant_GSMAMR_16s": {"BitRate": "rate"},
    "veksLagWindow_G729_32s_I": {"lenght": 1},
    "veksLevinsonDurbin_G729_32s16s": {"Order": 1},
    "veksMPMLQFixedCodebookSearch_G723": {"subFrame": "subframe", "BitRate": "rate"},
    "veksMulPowerC_NR_16s_Sfs": {"length": 3, "scaleFactor": "15"},
    "veksOpenLoopPitchSearchNonDTX_GSMAMR_16s": {"BitRate": "rate"},
    "veksOpenLoopPitchSearch_AMRWB_16s": {"Lenght": "open", "lagSwitcher": "0"},
    "veksPitchPostFilter_G723_16s": {"SubFrame": "subframe", "BitRate": "rate"},
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

Chain = collections.namedtuple("Chain", "test begins frame names rates told side")
FR_DECODER = ("veksRPEQuantDecode_GSMFR_16s", "veksShortTermSynthesisFilter_GSMFR_16s", "veksDeemphasize_GSMFR_16s_I")
# The test, the call with which a frame begins (by name, and an argument where two sides share it), seconds of a frame, names
# and rates from the lowest on, the call and the argument that tell the rate, and which calls of a frame count.
G729_CODER = ("veksHighPassFilter_G729_16s_ISfs", 2, 13)
CHAINS = [
    Chain("GsmFrChainOracle.CoderAndDecoderHaveTheSameBits", "veksHighPassFilter_GSMFR_16s", 0.02, ["GSM FR coder"], [""],
          None, "frcoder"),
    Chain("GsmFrChainOracle.CoderAndDecoderHaveTheSameBits", "veksHighPassFilter_GSMFR_16s", 0.02, ["GSM FR decoder"], [""],
          None, "frdecoder"),
    Chain("AmrChainOracle.CoderHasTheParametersOfTheOtherOneAtAllRates", "veksAutoCorr_GSMAMR_16s32s", 0.02,
          [f"AMR {name} kbit/s coder" for name in AMR_NAMES], AMR, ("veksAutoCorr_GSMAMR_16s32s", 2), ""),
    Chain("AmrChainOracle.DecoderHasTheSamplesOfTheOtherOneAtAllRates", "veksQuantLSPDecode_GSMAMR_16s", 0.02,
          [f"AMR {name} kbit/s decoder" for name in AMR_NAMES], AMR, ("veksFixedCodebookDecode_GSMAMR_16s", 3), ""),
    Chain("AmrWbCoderOracle.HasTheBitsOfTheOtherOneAtAllRates", "veksVAD_AMRWB_16s", 0.02,
          [f"AMR-WB {name} kbit/s coder" for name in WB_NAMES], WB, ("veksAlgebraicCodebookSearch_AMRWB_16s", 5), ""),
    Chain("AmrWbChainOracle.DecoderHasTheSamplesOfTheOtherOneForSpeechAtAllRates", "veksISFQuantDecode_AMRWB_16s", 0.02,
          [f"AMR-WB {name} kbit/s decoder" for name in WB_NAMES], WB, ("veksAlgebraicCodebookDecode_AMRWB_16s", 2), ""),
    Chain("G729ChainOracle.DecoderFollowsTheSynthesisOfTheCoder", G729_CODER, 0.01, ["G.729 Annex A coder"], [""],
          None, "coder"),
    Chain("G729ChainOracle.DecoderFollowsTheSynthesisOfTheCoder", "veksLSFDecode_G729_16s", 0.01,
          ["G.729 Annex A decoder"], [""], None, "decoder"),
    Chain("G723Oracle.CoderOf6300HasTheBitsOfAnOpenCoder", "veksHighPassFilter_G723_16s", 0.03,
          ["G.723.1 6.3 kbit/s coder"], ["BR_6300"], None, ""),
    Chain("G723Oracle.DecoderHasTheSamplesOfAnOpenDecoderOnItsCodersFrames", "veksLSFDecode_G723_16s", 0.03,
          ["G.723.1 6.3 kbit/s decoder"], ["BR_6300"], None, ""),
]


def simple(name, frame, function, **parameters):
    """A side that is one or two calls of a whole frame."""
    functions = [function] if isinstance(function, str) else function
    return {"name": name, "frame_seconds": frame,
            "calls": [{"function": f, "parameters": {k: v for k, v in parameters.items() if k != "mode" or "SBADPCMD" in f},
                       "calls": 1} for f in functions]}


def record(build, test, timed, cache={}):
    """The calls of one test: name, arguments and, if timed, clocks."""
    if (test, timed) in cache:
        return cache[test, timed]
    with tempfile.TemporaryDirectory() as directory:
        source = pathlib.Path(directory, "recorder.c")
        source.write_text(RECORDER)
        subprocess.run(["cc", "-O2", "-fPIC", "-shared", "-o", f"{directory}/recorder.so", source] +
                       (["-DTIMED"] if timed else []), check=True)
        environment = dict(os.environ, LD_AUDIT=f"{directory}/recorder.so", RECORD=f"{directory}/calls")
        subprocess.run([f"{build}/tests/oracle_tests", f"--gtest_filter={test}"], env=environment, check=True,
                       stdout=subprocess.DEVNULL)
        calls = []
        for line in open(f"{directory}/calls"):
            words = line.split()
            if len(words) == 8 and not any(word in words[0] for word in IGNORED):
                calls.append((words[0], [int(word) for word in words[1:7]], int(words[7])))
    cache[test, timed] = calls
    return calls


def counts(chain, function, seen):
    """Does this call, the `seen`-th of its function in the frame, belong to the side?"""
    if chain.side in ("frcoder", "frdecoder"):
        decoder = function in FR_DECODER and (function != FR_DECODER[0] or seen >= 4)
        return decoder == (chain.side == "frdecoder")
    return True


def isCall(call, wanted):
    if isinstance(wanted, tuple):
        return call[0] == wanted[0] and call[1][wanted[1]] == wanted[2]
    return call[0] == wanted


def framesOf(chain, calls):
    """The frames of each rate, each the list of its calls. A frame ends where the next one begins; of G.729, where the
    other side begins."""
    ends = {"coder": "veksLSFDecode_G729_16s", "decoder": G729_CODER}.get(chain.side)
    frames = []
    inside = False
    for call in calls:
        if isCall(call, chain.begins):
            frames.append([])
            inside = True
        elif isCall(call, ends):
            inside = False
        if inside:
            frames[-1].append(call)
    if chain.told is None:
        return [frames]
    byRate = collections.defaultdict(list)
    for frame in frames:
        modes = [arguments[chain.told[1]] for function, arguments, _ in frame if function == chain.told[0]]
        if modes:
            byRate[modes[0]].append(frame)
    assert len(byRate) == len(chain.rates), sorted(byRate)
    return [byRate[mode] for mode in sorted(byRate)]


def lineOf(function, arguments, seen, rate, grid):
    parameters = {}
    for name, value in grid[function][0].items():
        rule = RULES.get(function, {}).get(name, value)
        if isinstance(rule, int):
            rule = str(arguments[rule])
        rule = {"rate": rate, "rate6600": "BR_6600" if rate == "BR_6600" else "BR_8850", "subframe": str(seen % 4),
                "open": "128" if rate == "BR_6600" else "64"}.get(rule, rule)
        parameters[name] = rule
    if function == "veksAdaptiveCodebookSearch_G729A_16s":
        parameters["subFrame"] = str(seen % 2)
    return function, tuple(parameters.items())


def budgetsOf(chain, build, grid):
    budgets = []
    for name, rate, frames in zip(chain.names, chain.rates, framesOf(chain, record(build, chain.test, 0))):
        each = len(frames)
        sums = collections.Counter()
        missing = collections.Counter()
        for frame in frames:
            seen = collections.Counter()
            for function, arguments, _ in frame:
                if not grid[function]:
                    missing[function] += 1
                elif counts(chain, function, seen[function]):
                    sums[lineOf(function, arguments, seen[function], rate, grid)] += 1
                seen[function] += 1
        # What happens in fewer than one frame of fifty is no part of the usual frame.
        budgets.append({"name": name, "frame_seconds": chain.frame,
                        "calls": [{"function": function, "parameters": dict(parameters), "calls": round(count / each, 3)}
                                  for (function, parameters), count in sums.items() if count / each >= 0.02],
                        "missing": [f"{function}, which the rig does not measure, {count / each:.3g} times a frame"
                                    for function, count in missing.items()]})
    return budgets


def gridOf(build, functions):
    """The parameters of each line of the rig's own grids."""
    with tempfile.TemporaryDirectory() as directory:
        table = f"{directory}/grid.csv"
        subprocess.run([f"{build}/kelvarrig", "-B", "-dMethod=Manual", "-dNumLoops=1", "-q+", f"-r{table}"] +
                       [f"-f={function}" for function in functions], check=True, stdout=subprocess.DEVNULL)
        rows = json.loads(subprocess.run([f"{build}/krlab", "tidy", table, "--to", "json"], check=True,
                                         capture_output=True, text=True).stdout)["rows"]
    grid = collections.defaultdict(list)
    for row in rows:
        grid[row["function"]].append(row["parameters"])
    return grid


def write(build, file):
    functions = sorted({call[0] for chain in CHAINS for call in record(build, chain.test, 0)})
    grid = gridOf(build, functions)
    codecs = []
    for chain in CHAINS:
        codecs += budgetsOf(chain, build, grid)
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


def check(build, file):
    """Calls inside the chains are timed by the recorder; what that adds is what it adds to the shortest call."""
    told = subprocess.run([f"{build}/krlab", "budget", file, "--quiet", "--json", "-"], capture_output=True, text=True)
    sums = {codec["name"]: codec["clocks"] for codec in json.loads(told.stdout)["codecs"]}
    print("| codec | krlab budget | in the chain | ratio |\n|---|---|---|---|")
    for chain in CHAINS:
        calls = record(build, chain.test, 1)
        added = sorted(clocks for _, _, clocks in calls)[len(calls) // 1000]
        for name, frames in zip(chain.names, framesOf(chain, calls)):
            totals = []
            for frame in frames:
                seen = collections.Counter()
                total = 0
                for function, _, clocks in frame:
                    total += clocks - added if counts(chain, function, seen[function]) else 0
                    seen[function] += 1
                totals.append(total)
            middle = sorted(totals)[len(totals) // 2]
            print(f"| {name} | {sums[name]:.0f} | {middle} | {sums[name] / middle:.2f} |")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--check", action="store_true")
    options = parser.parse_args()
    file = pathlib.Path(__file__).resolve().parent.parent / "lab" / "budgets" / "codecs.json"
    (check if options.check else write)(options.build, file)


if __name__ == "__main__":
    main()
