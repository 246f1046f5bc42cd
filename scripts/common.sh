# Shared by ./run and ./test: what a bare Debian 12 machine lacks is installed,
# and a preset is configured and built.

say() { printf '== %s\n' "$*"; }
die() { printf '%s\n' "$*" >&2; exit 1; }

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

cache_dir() {
    printf '%s\n' "${TARVIX_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tarvix}"
}

# install PACKAGE...: those that are missing.
install() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} = 0 ] && return 0
    say "installing ${missing[*]}"
    as_root apt-get update -q >/dev/null || true
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null ||
        die "The packages could not be installed: ${missing[*]}"
}

install_build_tools() {
    install g++ cmake ninja-build pkg-config libsdl2-dev googletest libfreetype-dev fonts-dejavu-core
}

# What the benchmarks compare with.
install_bench_peers() {
    install libpixman-1-dev libjpeg62-turbo-dev zlib1g-dev rapidjson-dev libpugixml-dev libboost-dev \
        libjemalloc2 libmimalloc2.0
}

# build PRESET [TARGET...]
build() {
    local preset=$1 log
    shift
    log=$(mktemp)
    if ! { cmake --preset "$preset" >"$log" 2>&1 &&
        cmake --build --preset "$preset" ${1:+--target "$@"} >>"$log" 2>&1; }; then
        tail -n 60 "$log"
        rm -f "$log"
        die "The build of $preset failed."
    fi
    rm -f "$log"
}

# with_display COMMAND...: on the present display, or on a virtual one.
with_display() {
    if [ -n "${DISPLAY:-}" ]; then
        "$@"
        return
    fi
    install xvfb
    local number server status
    number=$(mktemp)
    Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$number" >/dev/null 2>&1 &
    server=$!
    until [ -s "$number" ] || ! kill -0 $server 2>/dev/null; do sleep 0.1; done
    DISPLAY=:$(cat "$number") "$@"
    status=$?
    rm -f "$number"
    kill $server
    wait $server 2>/dev/null
    return $status
}
