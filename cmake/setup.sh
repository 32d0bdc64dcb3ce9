# Shared by ./run, ./test and ./krlab: installs only what is missing, builds quietly, and says in one line what is wrong.

kr_fail() {
    echo "$0: $*" >&2
    exit 1
}

# True if packages can be installed here, with `sudo` as the way to it.
kr_can_install() {
    command -v apt-get >/dev/null 2>&1 || return 1
    sudo=
    [ "$(id -u)" -ne 0 ] || return 0
    command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null || return 1
    sudo=sudo
}

kr_updated=
kr_install() { # packages
    kr_can_install || return 1
    echo "Installing: $*"
    $sudo apt-get install -y "$@" >/dev/null 2>&1 && return 0
    # Without a network each update takes long to fail: once is enough.
    [ -z "$kr_updated" ] || return 1
    kr_updated=yes
    $sudo apt-get update >/dev/null 2>&1 && $sudo apt-get install -y "$@" >/dev/null 2>&1
}

kr_need() { # command:package ...
    local missing= pair
    for pair in "$@"; do
        command -v "${pair%%:*}" >/dev/null 2>&1 || missing="$missing ${pair##*:}"
    done
    if [ -n "$missing" ]; then
        kr_install $missing || kr_fail "please install:$missing"
    fi
}

kr_need_files() { # file:package ...
    local missing= pair
    for pair in "$@"; do
        [ -e "${pair%%:*}" ] || missing="$missing ${pair##*:}"
    done
    if [ -n "$missing" ]; then
        kr_install $missing || kr_fail "please install:$missing"
    fi
}

# What the library's kernels stand on.
kr_library_files="/usr/include/hwy/highway.h:libhwy-dev"

# What the companion stands on.
kr_lab_files="/usr/include/CLI/CLI.hpp:libcli11-dev /usr/include/nlohmann/json.hpp:nlohmann-json3-dev
    /usr/include/sqlite3.h:libsqlite3-dev /usr/include/fmt/format.h:libfmt-dev
    /usr/include/boost/math/distributions/students_t.hpp:libboost-math-dev
    /usr/share/javascript/chart.js:libjs-chart.js"

kr_want() { # consequence package ...: what is done without, if need be
    local consequence=$1 missing= without= package
    shift
    for package in "$@"; do
        dpkg -s "$package" >/dev/null 2>&1 || missing="$missing $package"
    done
    # Together in one go, where that goes, is much quicker.
    if [ -n "$missing" ] && ! kr_install $missing; then
        for package in $missing; do
            kr_install "$package" || without="$without $package"
        done
    fi
    [ -z "$without" ] || echo "Not installed, $consequence:$without"
}

# Where a compiler cache and a quicker linker are installed they are used. The compiler cache needs to be told that
# precompiled headers may be cached; not that headers may be newer than the compiler's start, or what was compiled with
# one that was edited meanwhile would pass for what the new one gives.
if command -v ccache >/dev/null 2>&1 && [ -z "${CMAKE_CXX_COMPILER_LAUNCHER:-}" ]; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"
fi
# Versions of mold before 2 set some programs so that they do not start, or never come to an end.
if [ -z "${LDFLAGS:-}" ]; then
    case $(mold --version 2>/dev/null) in
    '' | "mold 0."* | "mold 1."*) ;;
    *) export LDFLAGS=-fuse-ld=mold ;;
    esac
fi

kr_cached() { # cache name: the value, of whatever type
    sed -n "s/^$2:[A-Z]*=//p" "$1"
}

# A folder that was set up for another checkout builds that one. It is not simply made anew, since tables lie in it.
kr_refuse_foreign() { # top dir
    local home
    [ -f "$1/$2/CMakeCache.txt" ] || return 0
    home=$(kr_cached "$1/$2/CMakeCache.txt" CMAKE_HOME_DIRECTORY)
    [ -z "$home" ] || [ "$home" -ef "$1" ] ||
        kr_fail "$2 belongs to the checkout in $home; save your tables from it, remove it and try again"
}

# Choices that were made once by hand stay in the cache of a build folder: what differs from the preset, or where that
# names no value from the default of CMakeLists.txt, is told.
kr_tell_choices() { # top dir preset
    local cache=$1/$2/CMakeCache.txt chosen
    [ -f "$cache" ] || return 0
    chosen=$({
        # A default, then the preset's value, then what is in force; the companion shares the rig's folder.
        printf 'default VEK_ROOT=\ndefault CMAKE_CXX_FLAGS=\n'
        cat "$1"/CMakeLists.txt "$1"/vek/CMakeLists.txt 2>/dev/null | sed -nE \
            -e 's/^option\(([A-Z_]+) "[^"]*" ([A-Z]+)\)$/default \1=\2/p' \
            -e 's/^set\(([A-Z_]+) "?([^" ]*)"? CACHE .*/default \1=\2/p'
        (cd "$1" && cmake -N --preset "$3" 2>/dev/null) | sed -nE 's/^  ([A-Z_]+)(:[A-Z]+)?="(.*)"$/default \1=\3/p'
        sed -nE 's/^((KR|VEK)_[A-Z_]+|CMAKE_(BUILD_TYPE|CXX_FLAGS|CXX_COMPILER)):[A-Z]+=(.*)/cached \1=\4/p' "$cache"
    } | awk '
        { equals = index($0, "="); name = substr($0, 1, equals - 1); value = substr($0, equals + 1) }
        sub(/^default /, "", name) { normal[name] = value; next }
        sub(/^cached /, "", name) && name != "KR_LAB" {
            if (name == "CMAKE_CXX_COMPILER") {
                base = value
                sub(/.*\//, "", base)
                if (name in normal ? base == normal[name] : base ~ /^[cg]\+\+$/) next
            } else if (!(name in normal) || value == normal[name]) {
                next
            }
            printf " %s=%s", name, value
        }')
    [ -z "$chosen" ] || echo "In force in $2 by an earlier choice:$chosen (rm -r $2/CMakeCache.txt $2/CMakeFiles forgets it)"
}

# Copies a build's output to the log. On a terminal the last step that began stands in a line that is written over.
kr_progress() { # log
    local line columns
    if [ ! -t 1 ]; then
        cat >"$1"
        return
    fi
    columns=$(tput cols 2>/dev/null || echo 80)
    while IFS= read -r line; do
        printf '%s\n' "$line" >&3
        case $line in
        '['[0-9]*/*) line="  ${line/Building CXX object /}" && printf '\r%s\033[K' "${line:0:columns-1}" ;;
        esac
    done 3>"$1"
    printf '\r\033[K'
}

kr_folder() { # preset: its build folder
    case $1 in release | lab) echo build ;; *) echo "build-$1" ;; esac
}

kr_configure() { # top preset [word for cmake ...]
    local top=$1 preset=$2 dir
    shift 2
    dir=$(kr_folder "$preset")
    kr_refuse_foreign "$top" "$dir"
    mkdir -p "$top/$dir" 2>/dev/null && [ -w "$top/$dir" ] || kr_fail "can't write to $top/$dir"
    # A preset that has changed since is set anew.
    if [ ! -f "$top/$dir/build.ninja" ] || [ ! -f "$top/$dir/CMakeCache.txt" ] ||
        [ "$top/CMakePresets.json" -nt "$top/$dir/build.ninja" ]; then
        echo "Configuring $dir"
        (cd "$top" && cmake --preset "$preset" "$@") >"$top/$dir/build.log" 2>&1 ||
            { cat "$top/$dir/build.log" >&2; kr_fail "configuring failed"; }
    fi
    kr_tell_choices "$top" "$dir" "$preset"
}

kr_build() { # top preset targets
    local dir log
    dir=$(kr_folder "$2")
    log=$1/$dir/build.log
    kr_configure "$1" "$2"
    echo "Building $dir"
    # The compiler takes up to 2 GB for a unit: in large pages, which kernels mostly give only to who asks for them, the
    # companion is compiled in a tenth less time.
    (set -o pipefail; export NINJA_STATUS='[%f/%t] ' GLIBC_TUNABLES=${GLIBC_TUNABLES:-glibc.malloc.hugetlb=1}
        cmake --build "$1/$dir" --target $3 2>&1 | kr_progress "$log") ||
        { cat "$log" >&2; kr_fail "the build failed"; }
}
