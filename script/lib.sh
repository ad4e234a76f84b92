# Shared by the scripts of this folder; sourced, never run.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# A cached result serves every checkout, wherever it lies.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=true

# As many jobs as there are cores, but no more than the memory carries: a compiler takes up to a gigabyte.
jobs() {
    local cores memory
    cores=$(nproc)
    memory=$(awk '/MemAvailable/ {print int($2 / 1048576)}' /proc/meminfo)
    echo $((memory < cores ? (memory > 0 ? memory : 1) : cores))
}

configure() { # PRESET [OPTION…]
    local preset=$1
    shift
    cmake --preset "$preset" "$@" >"build-$preset.log" 2>&1 || {
        cat "build-$preset.log"
        rm -f "build-$preset.log"
        return 1
    }
    rm -f "build-$preset.log"
}

build() { # PRESET [TARGET…]
    local preset=$1
    shift
    local targets=()
    for target in "$@"; do targets+=(--target "$target"); done
    cmake --build --preset "$preset" -j "$(jobs)" "${targets[@]}"
}
