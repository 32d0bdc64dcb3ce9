#!/usr/bin/env bash
# Runs a GoogleTest program, or the shard of it that the environment tells: run_shard.sh COUNTS PROGRAM [ARGUMENTS].
# Of tests that pass nothing is shown. COUNTS gets the numbers of tests run, passed, skipped and failed, and the names of
# those skipped; a test in which the program crashed or hung counts as failed and is named.
set -u
counts=$1
shift
mkdir -p "$(dirname "$counts")"
rm -f "$counts"
timeout "${KR_SHARD_SECONDS:-570}" "$@" --gtest_color=no 2>&1 | awk -v counts="$counts" '
    /^\[ RUN      \] / { held = ""; running = substr($0, 14); ++run }
    { held = held $0 "\n" }
    # A test may write to the console without ending its line.
    /\[       OK \] / && running != "" { ++passed; held = ""; running = "" }
    /\[  SKIPPED \] / && running != "" { ++skipped; names = names "skipped " running "\n"; held = ""; running = "" }
    /\[  FAILED  \] / && running != "" { ++failed; printf "%s", held; held = ""; running = "" }
    running == "" { if ($0 !~ /^\[[-= ]/ && $0 !~ /^(Note: |Running main|$)/ && held != "") printf "%s", held; held = "" }
    END {
        if (running != "") {
            ++failed
            printf "%s\n[  FAILED  ] %s: the program ended or hung in it\n", held, running
        }
        printf "run %d passed %d skipped %d failed %d\n%s", run, passed, skipped, failed, names > counts
        if (failed > 0) exit 1
    }'
results=("${PIPESTATUS[@]}")
# A program that fails after its last test, by a leak for one, fails too.
[ "${results[0]}" -eq 0 ] && [ "${results[1]}" -eq 0 ]
