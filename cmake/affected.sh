# For ./test --affected: from the files that differ from a commit to the rooms whose tests can see them, and from rooms
# to what each of the two builds has to build for that. Files that are not known to matter to some rooms only take all.

all_rooms="api lib vek suites cli own oracle library lab pages scripts install"

kr_rooms_of() { # file: the rooms that can see it
    case $1 in
    docs/library.md | vek/functions.txt | tests/library/* | tools/library/*) echo library ;;
    tests/install/* | CHANGELOG.md) echo install ;;
    tests/pages/* | tools/pages/*) echo pages ;;
    tests/scripts/* | run | krlab | cmake/setup.sh) echo scripts ;;
    tests/own/* | tools/* | docs/own-functions.md | docs/install.md | README.md) echo own ;;
    docs/* | bench/* | *.md | tests/fuzz/* | tests/mutants/* | .clang-tidy | .ci/* | cmake/tidy.sh | .gitignore) ;;
    tests/api/*) echo api ;;
    tests/lib/*) echo lib ;;
    tests/vek/*) echo vek library ;;
    tests/suites/* | tests/suites_values/*) echo suites ;;
    tests/oracle/*) echo oracle library ;;
    tests/cli/rig_process.*) echo cli own pages scripts ;;
    tests/cli/* | tests/fault/*) echo cli ;;
    tests/lab/*) echo lab ;;
    lab/*) echo lab pages ;;
    api/src/*) echo api lib suites cli own lab pages install ;;
    api/lib/*) echo lib suites cli own lab pages ;;
    veksc/src/*) echo suites cli lab pages ;;
    vek/sc/* | vek/s/*) echo vek oracle suites ;;
    *) echo "$all_rooms" ;;
    esac
}

kr_targets_of() { # build room
    case $1:$2 in
    test:api) echo kr_clock_tests ;;
    asan:api) echo kr_tests ;;
    asan:lib) echo vk_tests ;;
    test:lab) echo lab_tests ;;
    test:pages) echo page_tests ;;
    test:scripts) echo script_tests ;;
    asan:suites) echo suite_tests value_tests ;;
    test:vek | test:oracle | test:library | test:cli | test:own | test:install) echo "$2_tests" ;;
    asan:vek) echo veksc ;;
    asan:cli) echo kelvarrig faultrig ;;
    esac
}

kr_affected() { # commit: sets release_targets, sanitizer_targets and labels
    local files rooms room
    files=$(git diff --name-only "$1" -- && git ls-files --others --exclude-standard) || kr_fail "no such commit: $1"
    rooms=$(for file in $files; do kr_rooms_of "$file"; done | tr ' ' '\n' | sort -u)
    release_targets=$(for room in $rooms; do kr_targets_of test "$room"; done | tr '\n' ' ')
    sanitizer_targets=$(for room in $rooms; do kr_targets_of asan "$room"; done | tr '\n' ' ')
    labels=$(echo $rooms | tr ' ' '|')
    labels="^(${labels})\$"
    echo "Rooms that can see what changed since $1:" ${rooms:-none}
}
