#!/usr/bin/env bash
# Builds every target and runs all tests. Usage: scripts/test.sh [--quick]
#   --quick  64-bit Linux only
# Installs the Debian packages it needs. Needs root: for the Windows programs, full disks and the packages' test.
# Build folders are build/<preset>; build/wine runs the Windows programs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh

case "$#:${1-}" in
0:) targets=(linux-x86-64 linux-i386 windows-x86 windows-x86-64) ;;
1:--quick) targets=(linux-x86-64) ;;
*) echo "Usage: scripts/test.sh [--quick]" >&2; exit 2 ;;
esac

jobs=$(nproc)
results=build/results
rm -rf "$results"
mkdir -p "$results"
closing_lines=()
not_run=0
wine_installation=
current="installing packages"

close() { # at the end, whatever it is
    local status=$?
    [ -z "$wine_installation" ] || kill -- "-$wine_installation" 2>/dev/null || true
    end_wine
    [ "$status" -eq 0 ] || closing_lines+=("FAILED: $current")
    printf '\n'
    printf '%s\n' "${closing_lines[@]}"
}
trap close EXIT

step() { # title, command
    local title=$1 start=$SECONDS
    current=$title
    shift
    echo "== $title"
    "$@"
    closing_lines+=("passed: $title ($((SECONDS - start)) s)")
}

build() { # preset, further settings of CMake
    cmake --preset "$@" >/dev/null
    cmake --build --preset "$1" --parallel "$jobs" -- --quiet
}

run_tests() { # preset
    ctest --preset "$1" --parallel "$jobs" --timeout 600 --no-tests=error --output-on-failure \
        --output-junit "$PWD/$results/$1.xml" |
        sed -E '/^ *[0-9]+\/[0-9]+ Test +#.*Passed/d; /^ *Start +[0-9]+:/d'
}

count() { # preset, attribute of its results
    sed -nE "/<testsuite/,/>/s/.*\b$2=\"([0-9]+)\".*/\1/p" "$results/$1.xml" | grep -m1 .
}

build_and_test() { # preset, title, further settings of CMake
    local preset=$1 title=$2 start=$SECONDS total skipped
    current=$title
    echo "== $title"
    build "$preset" "${@:3}"
    run_tests "$preset"
    total=$(count "$preset" tests) skipped=$(count "$preset" skipped)
    closing_lines+=("passed: $title: $((total - skipped)) tests, $skipped skipped ($((SECONDS - start)) s)")
    passed=$((passed + total - skipped)) all_skipped=$((all_skipped + skipped))
}

# In the background, while the first target is built: it mostly waits for the network and the disk.
install_wine() {
    local bits
    for bits in 32 64; do
        scripts/install-wine.sh "$bits" >"$results/wine$bits.log" 2>&1 && touch "$results/wine$bits"
    done
}

# A target whose run-time cannot be had is built, and named as not run.
build_and_test_under_wine() { # word size, title
    local settings=(-DMM_NATIVE_TOOL_TESTS="$PWD/build/release/tests/tool/tool_tests")
    [ -z "$wine_installation" ] || wait "$wine_installation" || true
    wine_installation=
    if [ -e "$results/wine$1" ]; then
        build_and_test "win$1" "$2" "${settings[@]}"
    else
        step "$2: build" build "win$1" "${settings[@]}"
        not_run=$((not_run + 1))
        closing_lines+=("NOT RUN: $2: Wine for $1 bits could not be installed: $(tail -1 "$results/wine$1.log")")
    fi
}

passed=0 all_skipped=0
need_packages "${BUILD_PACKAGES[@]}" clang libclang-rt-14-dev libgtest-dev libgmock-dev libbenchmark-dev \
    g++-multilib binutils jq imagemagick netpbm e2fsprogs chromium fonts-noto-cjk fonts-dejavu-core
if [ ${#targets[@]} -gt 1 ]; then
    need_packages g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix
    set -m # a group of its own, to be ended as a whole
    install_wine &
    wine_installation=$!
    set +m
fi

libraries=()
for target in "${targets[@]}"; do
    case $target in
    linux-x86-64)
        build_and_test release "$target: g++, shared library"
        build_and_test asan "$target: clang++, static library, address and undefined-behaviour sanitizers"
        build_and_test tsan "$target: g++, static library, thread sanitizer"
        libraries+=(build/release/MemoryManager/libMemoryManager.so)
        ;;
    linux-i386)
        build_and_test i386 "$target: g++, shared library"
        libraries+=(build/i386/MemoryManager/libMemoryManager.so)
        ;;
    windows-x86)
        build_and_test_under_wine 32 "$target: g++, DLL"
        libraries+=(build/win32/bin/MemoryManager.dll)
        ;;
    windows-x86-64)
        build_and_test_under_wine 64 "$target: g++, DLL"
        libraries+=(build/win64/bin/MemoryManager.dll)
        ;;
    esac
done
step "interface as described: ${targets[*]}" scripts/check-interface.sh "${libraries[@]}"
step "changes of the interface are found" scripts/check-interface.sh --self-test
step "documented result codes" scripts/check-result-codes.sh
if [ ${#targets[@]} -gt 1 ]; then
    step "public headers alone, with every compiler" scripts/check-headers.sh
    step "packages and their users" scripts/test-package.sh
    if [ -e "$results/package-not-run" ]; then
        not_run=$((not_run + $(wc -l <"$results/package-not-run")))
        mapfile -t -O ${#closing_lines[@]} closing_lines <"$results/package-not-run"
    fi
fi

closing_lines+=("" "Parts that were not run: $not_run" "$passed passed, 0 failed, $all_skipped skipped")
