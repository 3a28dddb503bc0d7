# Shared by the scripts beside it: the steps that take a fresh Debian 12 machine to a build.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

build_packages=(
    g++ cmake ninja-build
    qtbase5-dev libqt5svg5-dev libvtk9-dev libboost-dev
    nlohmann-json3-dev libutfcpp-dev libpcre2-dev libsqlite3-dev libxxhash-dev
    libgoogle-perftools-dev
    libgtest-dev
)
mpi_packages=(libopenmpi-dev openmpi-bin)

# Everything is said on standard error, so that a program's output stays alone on standard output.
say() {
    printf '%s: %s\n' "scripts/${0##*/}" "$*" >&2
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# install_missing PACKAGE...: installs those that are not there yet.
install_missing() {
    local present missing=() package
    present=" $(dpkg-query -W -f='${db:Status-Status}:${Package} ' "$@" 2>/dev/null || true) "
    for package in "$@"; do
        [[ $present == *" installed:$package "* ]] || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    say "installing packages: ${missing[*]}"
    as_root apt-get update -qq >&2
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}

# build_mpi PRESET [TARGET]: as build(), with casetable-mpi.
build_mpi() {
    grep -qs '^CRAWLER_BUILD_MPI:BOOL=ON' "$root/build/$1/CMakeCache.txt" ||
        (cd "$root" && cmake --preset "$1" -DCRAWLER_BUILD_MPI=ON) >/dev/null || return
    build "$@"
}

# build PRESET [TARGET]: configures where that was not done yet, and builds what is out of date.
build() {
    local preset=$1 target=${2:-all} log status=0
    # One build at a time in this checkout.
    mkdir -p "$root/build"
    exec 9>"$root/build/.lock"
    flock 9
    log=$(mktemp)
    if [ ! -f "$root/build/$preset/build.ninja" ]; then
        say "configuring build/$preset"
        (cd "$root" && cmake --preset "$preset") >"$log" 2>&1 || status=$?
    fi
    if [ $status -eq 0 ]; then
        say "bringing build/$preset up to date"
        cmake --build "$root/build/$preset" --target "$target" >"$log" 2>&1 || status=$?
    fi
    [ $status -eq 0 ] || cat "$log" >&2
    rm -f "$log"
    exec 9>&-
    return $status
}
