#!/usr/bin/env bash
# Runs a GoogleTest program, or the shard of it that the environment tells: run_shard.sh COUNTS PROGRAM [ARGUMENTS].
# Of tests that pass nothing is shown. COUNTS gets the numbers of tests run, passed, skipped and failed, and each test by
# its name as "ran" or "skipped". A test that runs several times is one test; one in which the program crashed or hung has failed.
set -u
counts=$1
shift
mkdir -p "$(dirname "$counts")"
rm -f "$counts"
timeout "${KR_SHARD_SECONDS:-570}" "$@" --gtest_color=no 2>&1 | awk -v counts="$counts" '
    # The worst of its runs.
    function note(result) { if (result > worst[running]) worst[running] = result; running = "" }
    /^\[ RUN      \] / { held = ""; running = substr($0, 14) }
    { held = held $0 "\n" }
    # A test may write to the console without ending its line.
    running == "" { if ($0 !~ /^\[[-= ]/ && $0 !~ /^(Note: |Running main|$)/) printf "%s", held; held = "" }
    running == "" { next }
    /\[       OK \] / { note(1); held = "" }
    /\[  SKIPPED \] / { note(2); held = "" }
    /\[  FAILED  \] / { note(3); printf "%s", held; held = "" }
    END {
        if (running != "") {
            printf "%s\n[  FAILED  ] %s: the program ended or hung in it\n", held, running
            note(3)
        }
        for (test in worst) {
            ++count[worst[test]]
            names = names (worst[test] == 2 ? "skipped " : "ran ") test "\n"
        }
        printf "run %d passed %d skipped %d failed %d\n%s", count[1] + count[2] + count[3], count[1], count[2], count[3],
               names > counts
        if (count[3] > 0) exit 1
    }'
results=("${PIPESTATUS[@]}")
# A program that fails after its last test, by a leak for one, fails too.
[ "${results[0]}" -eq 0 ] && [ "${results[1]}" -eq 0 ]
