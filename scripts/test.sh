#!/usr/bin/env bash
# Builds every target and runs all tests. Usage: scripts/test.sh [--quick]
#   --quick  64-bit Linux only
# Installs the Debian packages it needs. Build folders are build/<preset>; build/wine runs the Windows programs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh

case "$#:${1-}" in
0:) targets=(linux-x86-64 linux-i386 windows-x86 windows-x86-64) ;;
1:--quick) targets=(linux-x86-64) ;;
*) sed -n '2,3s/^# //p' "$0" >&2; exit 2 ;;
esac

jobs=$(nproc)
results=build/results
rm -rf "$results"
mkdir -p "$results"
closing_lines=()

step() { # title, command
    local title=$1 start=$SECONDS
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
    sed -nE "0,/<testsuite/s/.*$2=\"([0-9]+)\".*/\1/p" "$results/$1.xml" | head -1
}

build_and_test() { # preset, title, further settings of CMake
    local preset=$1 title=$2 start=$SECONDS total skipped
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
    wait "$wine_installation" || true
    if [ -e "$results/wine$1" ]; then
        build_and_test "win$1" "$2" "${settings[@]}"
    else
        step "$2: build" build "win$1" "${settings[@]}"
        closing_lines+=("NOT RUN: $2: Wine for $1 bits could not be installed: $(tail -1 "$results/wine$1.log")")
    fi
}

passed=0 all_skipped=0
need_packages "${BUILD_PACKAGES[@]}" clang libclang-rt-14-dev libgtest-dev libgmock-dev libbenchmark-dev \
    g++-multilib binutils jq imagemagick netpbm e2fsprogs chromium fonts-noto-cjk fonts-dejavu-core
if [ ${#targets[@]} -gt 1 ]; then
    need_packages g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix
    install_wine &
    wine_installation=$!
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
step "interface as described" scripts/check-interface.sh "${libraries[@]}"
step "changes of the interface are found" scripts/check-interface.sh --self-test
step "documented result codes" scripts/check-result-codes.sh
if [ ${#targets[@]} -gt 1 ]; then
    step "public headers alone, with every compiler" scripts/check-headers.sh
    step "packages and their users" scripts/test-package.sh
fi

printf '\n'
printf '%s\n' "${closing_lines[@]}"
echo "$passed passed, 0 failed, $all_skipped skipped"
