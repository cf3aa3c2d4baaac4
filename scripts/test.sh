#!/usr/bin/env bash
# Builds the library and the tool and tests them. Usage: scripts/test.sh [--all]
#   (none)  for this machine, 64-bit Linux: all tests, the interface, the documented result codes, the style of the
#           changed files
#   --all   for all four targets; sanitizers, fuzz targets, every compiler's view of the headers, the style of every
#           file, and the packages as well
# Installs the Debian packages it needs, as root or with sudo. What the machine cannot do is named NOT RUN, with the
# reason, in the closing lines; FAILED is what is wrong. Build folders are build/<preset>; build/wine runs the Windows
# programs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
. scripts/progress.sh

case "$#:${1-}" in
0:) all= ;;
1:--all) all=yes ;;
*) echo "Usage: scripts/test.sh [--all]" >&2; exit 2 ;;
esac

results=build/results
rm -rf "$results"
mkdir -p "$results"
closing_lines=()
passed=0 all_skipped=0 not_run=0
wine_installation=
current="installing packages"

# Runs at the end, however it comes: no process stays, and the last words are the closing lines.
close() {
    local status=$?
    [ -z "$wine_installation" ] || kill -- "-$wine_installation" 2>/dev/null || true
    end_wine
    [ "$status" -eq 0 ] || closing_lines+=("FAILED: $current")
    printf '\n'
    printf '%s\n' "${closing_lines[@]}"
}
trap close EXIT

begin() { # title
    current=$1
    step_start=$SECONDS
    echo "== $1"
}

step() { # title, command
    begin "$1"
    "${@:2}"
    closing_lines+=("passed: $1 ($((SECONDS - step_start)) s)")
}

not_run() { # what, and why
    closing_lines+=("NOT RUN: $1")
    not_run=$((not_run + 1))
}

build() { # preset, further settings of CMake
    cmake --preset "$@" >/dev/null
    build_folder "build/$1"
}

run_tests() { # preset
    ctest --preset "$1" --parallel "$(nproc)" --timeout 600 --no-tests=error --output-on-failure \
        --output-junit "$PWD/$results/$1.xml" | show_progress tested
}

count() { # preset, attribute of its results
    sed -nE "/<testsuite/,/>/s/.*\b$2=\"([0-9]+)\".*/\1/p" "$results/$1.xml" | grep -m1 .
}

# Why tests were skipped, each reason once: the line after "Skipped" of a test program, or a script's own words.
list_skipped() { # preset
    awk '
        /<testcase/ { skipped = 0; reason = "" }
        /<skipped/ { skipped = 1 }
        /<system-out>/ && !/Running main/ { reason = $0; sub(/.*<system-out>/, "", reason) }
        wanted { reason = $0; wanted = 0 }
        /: Skipped$/ { wanted = 1 }
        /<\/testcase/ && skipped { tests[reason]++ }
        END { for (reason in tests) printf "  skipped: %d: %s\n", tests[reason], reason }' "$results/$1.xml" |
        LC_ALL=C sort
}

build_and_test() { # preset, title, further settings of CMake
    local preset=$1 title=$2 total skipped
    begin "$title"
    build "$preset" "${@:3}"
    run_tests "$preset"
    total=$(count "$preset" tests) skipped=$(count "$preset" skipped)
    closing_lines+=("passed: $title: $((total - skipped)) tests, $skipped skipped ($((SECONDS - step_start)) s)")
    mapfile -t -O ${#closing_lines[@]} closing_lines < <(list_skipped "$preset")
    passed=$((passed + total - skipped)) all_skipped=$((all_skipped + skipped))
}

# A target whose programs this machine cannot run is built all the same.
build_and_test_if() { # command whose last line says why its programs do not run; then as build_and_test
    local reason
    if reason=$($1 2>&1); then
        build_and_test "${@:2}"
    else
        step "$3: build" build "$2" "${@:4}"
        not_run "$3: ${reason##*$'\n'}"
    fi
}

# A kernel may have no 32-bit programs, and a container not the address space that a sanitizer wants.
programs_run() { # compiler and its options
    echo 'int main() {}' >"$results/probe.cpp"
    if ! "$@" "$results/probe.cpp" -o "$results/probe" || ! "$results/probe"; then
        echo "programs of $* do not start on this machine"
        return 1
    fi
}

# In the background, while the first target is built: it mostly waits for the network and the disk.
install_wine() {
    local bits
    for bits in 32 64; do
        scripts/install-wine.sh "$bits" >"$results/wine$bits.log" 2>&1 && touch "$results/wine$bits"
    done
}

wine_runs() { # word size
    [ -e "$results/wine$1" ] || { echo "Wine could not be installed: $(tail -1 "$results/wine$1.log")"; return 1; }
}

test_fuzz_targets() {
    local title="fuzz targets, 20 s each" reason
    if reason=$(programs_run clang++ -fsanitize=fuzzer-no-link,address,undefined 2>&1); then
        step "$title" scripts/fuzz.sh
    else
        not_run "$title: ${reason##*$'\n'}"
    fi
}

test_this_machine() {
    build_and_test release "linux-x86-64: g++, shared library"
}

test_other_builds() {
    build_and_test_if "programs_run clang++ -fsanitize=address,undefined" asan \
        "linux-x86-64: clang++, static library, address and undefined-behaviour sanitizers"
    build_and_test_if "programs_run g++ -fsanitize=thread" tsan \
        "linux-x86-64: g++, static library, thread sanitizer, tests with several threads"
    test_fuzz_targets
    build_and_test_if "programs_run g++ -m32" i386 "linux-i386: g++, shared library"
}

test_windows() {
    local settings=(-DMM_NATIVE_TOOL_TESTS="$PWD/build/release/tests/tool/tool_tests")
    wait "$wine_installation" || true
    wine_installation=
    build_and_test_if "wine_runs 32" win32 "windows-x86: g++, DLL" "${settings[@]}"
    build_and_test_if "wine_runs 64" win64 "windows-x86-64: g++, DLL" "${settings[@]}"
}

# Libraries that were built are compared too.
check_interface() {
    step "interface as described" scripts/check-interface.sh "$@"
    step "changes of the interface are found" scripts/check-interface.sh --self-test
    step "documented result codes" scripts/check-result-codes.sh
}

check_style() {
    if [ -n "$all" ]; then
        step "style of every file" scripts/check-style.sh --all
    elif git rev-parse --quiet --verify HEAD >/dev/null 2>&1; then
        step "style of the changed files" scripts/check-style.sh
    else
        not_run "style of the changed files (Git knows no commit here to compare with)"
    fi
}

test_packages() {
    local line
    step "packages and their users" scripts/test-package.sh
    while read -r line; do
        not_run "$line"
    done < <(cat "$results/package-not-run" 2>/dev/null)
}

need_packages "${BUILD_PACKAGES[@]}" clang libgtest-dev libgmock-dev libbenchmark-dev g++-multilib binutils jq git \
    imagemagick netpbm e2fsprogs chromium fonts-noto-cjk fonts-dejavu-core python3
if [ -z "$all" ]; then
    test_this_machine
    check_interface build/release/MemoryManager/libMemoryManager.so
    check_style
else
    need_packages libclang-rt-14-dev g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix
    set -m # a group of its own, to be ended as a whole
    install_wine &
    wine_installation=$!
    set +m
    test_this_machine
    test_other_builds
    test_windows
    check_interface build/{release,i386}/MemoryManager/libMemoryManager.so build/win{32,64}/bin/MemoryManager.dll
    check_style
    step "public headers alone, with every compiler" scripts/check-headers.sh
    test_packages
fi

closing_lines+=("" "Parts that were not run: $not_run" "$passed passed, 0 failed, $all_skipped skipped")
