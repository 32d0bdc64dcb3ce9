# Shared by ./run and ./test: installs only what is missing, builds quietly, and says in one line what is wrong.

kr_install() { # packages
    if ! command -v apt-get >/dev/null 2>&1; then
        return 1
    fi
    sudo=
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null || return 1
        sudo=sudo
    fi
    echo "Installing: $*"
    if ! $sudo apt-get install -y "$@" >/dev/null 2>&1; then
        $sudo apt-get update >/dev/null 2>&1 && $sudo apt-get install -y "$@" >/dev/null 2>&1
    fi
}

kr_fail() {
    echo "$0: $*" >&2
    exit 1
}

kr_need() { # command:package ...
    missing=
    for pair in "$@"; do
        command -v "${pair%%:*}" >/dev/null 2>&1 || missing="$missing ${pair##*:}"
    done
    if [ -n "$missing" ]; then
        kr_install $missing || kr_fail "please install:$missing"
    fi
}

kr_need_file() { # file package
    [ -e "$1" ] || kr_install "$2" || kr_fail "please install: $2"
}

kr_need_lab() { # what the companion stands on
    kr_need_file /usr/include/CLI/CLI.hpp libcli11-dev
    kr_need_file /usr/include/nlohmann/json.hpp nlohmann-json3-dev
    kr_need_file /usr/include/sqlite3.h libsqlite3-dev
    kr_need_file /usr/include/fmt/format.h libfmt-dev
    kr_need_file /usr/include/boost/math/distributions/students_t.hpp libboost-math-dev
    kr_need_file /usr/share/javascript/chart.js libjs-chart.js
}

kr_want() { # packages
    missing=
    for package in "$@"; do
        dpkg -s "$package" >/dev/null 2>&1 || missing="$missing $package"
    done
    # Together in one go, where that goes, is much quicker.
    [ -z "$missing" ] || kr_install $missing || for package in $missing; do
        kr_install "$package" || echo "Not installed, some tests will be skipped: $package"
    done
}

# Where a compiler cache and a quicker linker are installed they are used. The compiler cache needs to be told that
# precompiled headers may be cached.
if command -v ccache >/dev/null 2>&1 && [ -z "${CMAKE_CXX_COMPILER_LAUNCHER:-}" ]; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros,include_file_mtime,include_file_ctime}"
fi
if command -v mold >/dev/null 2>&1 && [ -z "${LDFLAGS:-}" ]; then
    export LDFLAGS=-fuse-ld=mold
fi

kr_build() { # top preset targets
    dir=build-$2
    case $2 in release | lab) dir=build ;; esac
    log="$1/$dir/build.log"
    mkdir -p "$1/$dir"
    # A preset that has changed since is set anew.
    if [ ! -f "$1/$dir/build.ninja" ] || [ "$1/CMakePresets.json" -nt "$1/$dir/build.ninja" ]; then
        echo "Configuring $dir"
        (cd "$1" && cmake --preset "$2") >"$log" 2>&1 || { cat "$log" >&2; kr_fail "configuring failed"; }
    fi
    echo "Building $dir"
    cmake --build "$1/$dir" --target $3 >"$log" 2>&1 || { cat "$log" >&2; kr_fail "the build failed"; }
}
