#!/usr/bin/env bash
# clang-tidy over the sources of a folder that the preset `tidy` has configured; nothing needs to be built for it.
#
#     cmake/tidy.sh BUILD [COMMIT]
#
# With COMMIT only what differs from it: sources, and for a header the first source that includes it. With KR_TIDY_MINUTES
# in the environment no file is begun after so many minutes, and the number of those left out is told. Status 1 if there
# was anything to tell about a file.
set -eu -o pipefail
build=$1
since=${2:-}
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"

known() { sed -nE 's/^ *"file": "(.*)",?$/\1/p' "$build/compile_commands.json" | sort -u; }

# Sources that stand for the files of a list.
standing_for() {
    local file first
    while IFS= read -r file; do
        case $file in
        *.cpp) echo "$file" ;;
        *.h | *.inc)
            first=$(git grep -lE "#include [<\"](.*/)?${file##*/}[>\"]" -- '*.cpp' | head -n 1) || true
            [ -z "$first" ] || echo "$first"
            ;;
        esac
    done
}

if [ -n "$since" ]; then
    git rev-parse -q --verify "$since^{commit}" >/dev/null || { echo "tidy.sh: no such commit: $since" >&2; exit 2; }
    files=$({ git diff --name-only --diff-filter=d "$since" -- && git ls-files --others --exclude-standard; } |
        standing_for | sort -u | sed "s|^|$top/|" | { grep -Fxf <(known) || true; })
else
    files=$(known)
fi
[ -n "$files" ] || { echo "No source differs from $since"; exit 0; }

export KR_TIDY_BUILD=$build KR_TIDY_END=0 KR_TIDY_LEFT
KR_TIDY_LEFT=$(mktemp)
trap 'rm -f "$KR_TIDY_LEFT"' EXIT
[ -z "${KR_TIDY_MINUTES:-}" ] || KR_TIDY_END=$(($(date +%s) + 60 * KR_TIDY_MINUTES))
status=0
printf '%s\n' "$files" | tr '\n' '\0' | xargs -0 -n 1 -P "$(nproc)" bash -c '
    if [ "$KR_TIDY_END" -gt 0 ] && [ "$(date +%s)" -ge "$KR_TIDY_END" ]; then
        echo "$1" >>"$KR_TIDY_LEFT"
        exit
    fi
    # The counts of what is suppressed go to the error stream; faults of the parser go to both.
    found=$(clang-tidy --quiet --warnings-as-errors="*" -p "$KR_TIDY_BUILD" "$1" 2>/dev/null) || { printf "%s\n" "$found"; exit 1; }
' tidy || status=1
left=$(wc -l <"$KR_TIDY_LEFT")
echo "clang-tidy: $(($(printf '%s\n' "$files" | wc -l) - left)) files looked at$([ "$left" -eq 0 ] || echo ", $left left out for want of time")"
exit $status
