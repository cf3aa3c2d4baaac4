#!/usr/bin/env bash
# How the sources are written: format, tidiness, shell scripts, spelling, the order of the rooms.
# Usage: scripts/check-style.sh [--all | BASE]
#   (none)  the files that differ from the last commit, new ones too
#   BASE    the files that differ from that commit
#   --all   every file
# Installs the Debian packages it needs. clang-tidy sees what 64-bit Linux compiles, not the sources for Windows.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
export LC_ALL=C.UTF-8

every_file() {
    git ls-files --cached --others --exclude-standard 2>/dev/null ||
        find . -type f -not -path './build/*' -not -path './.git/*' -printf '%P\n'
}

changed_files() { # base
    git diff --name-only --diff-filter=d "$1" --
    git ls-files --others --exclude-standard
}

scope=${1-HEAD}
case "$#:$scope" in
1:--all) listing=$(every_file) ;;
0:HEAD) listing=$(changed_files HEAD) ;;
1:-*) echo "Usage: scripts/check-style.sh [--all | BASE]" >&2; exit 2 ;;
1:*) listing=$(changed_files "$scope") ;;
*) echo "Usage: scripts/check-style.sh [--all | BASE]" >&2; exit 2 ;;
esac
mapfile -t files < <(printf '%s\n' "$listing" | sort -u | while read -r file; do [ ! -f "$file" ] || echo "$file"; done)
[ ${#files[@]} -gt 0 ] || { echo "No file to check"; exit 0; }

only() { # pattern [pattern of those to leave out]: the files whose path matches
    printf '%s\n' "${files[@]}" | grep -E "$1" | grep -vE "${2:-^$}" || true
}

# --- the checks: each prints what it finds and fails if there is anything -----------------------------------------

check_format() {
    only '\.(h|cpp)$' | xargs -r -P "$(nproc)" -n 40 clang-format --dry-run --Werror
}

# What .editorconfig asks for and no other check looks at.
check_lines() {
    local found
    found=$(
        only '' '^tests/expected/' | xargs -r grep -nP '[ \t]+$|\r|\t' | sed 's/$/   <- tab, or blank at the end/'
        for file in $(only '' '^tests/expected/'); do
            [ -z "$(tail -c 1 "$file")" ] || echo "$file: no newline at the end"
        done
        only '\.(md|sh|py|txt|cmake|h|cpp)$' '^(tests/expected|interface)/' |
            xargs -r grep -nP '^(?!\|).{121,}' | sed 's/$/   <- more than 120 columns/'
    ) || true
    [ -z "$found" ] || { printf '%s\n' "$found"; return 1; }
}

check_shell() {
    only '\.sh$|^\.ci/run$' | xargs -r shellcheck -x
}

# Whole words of prose; names in mixed case are code and are left out. The spelling is British (scripts/spelling.txt).
check_spelling() {
    only '' '^(interface|tests/expected)/|^scripts/(spelling|known-words)\.txt$' |
        xargs -r codespell -r "\b[A-Z]?[a-z][a-z'-]*\b" -D - -D scripts/spelling.txt -I scripts/known-words.txt
}

check_rooms() {
    scripts/check-rooms.py --drawing >/dev/null
}

# Where CMake joins sources into one, that one is compiled. Prints what to compile for the sources.
joined() { # sources
    local source
    for source in "$@"; do
        grep -rlF "\"$PWD/$source\"" "$tree" --include='unity_*.cxx' || echo "$PWD/$source"
    done | sort -u
}

# The changed sources, and for each changed header the first source that includes it.
sources_to_tidy() {
    local header
    only '\.cpp$'
    for header in $(only '\.h$'); do
        grep -rlE --include='*.cpp' "#include \"(.*/)?${header##*/}\"" \
            MemoryManager Platform tools tests examples fuzz | sort | sed -n 1p
    done
}

check_tidiness() {
    local tree=build/tidy wanted=.
    cmake --preset dev -B "$tree" -DCMAKE_CXX_COMPILER=clang++ -DMM_JOIN_SOURCES=ON \
        -DMM_BUILD_FUZZERS=ON -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
    cp tests/.clang-tidy "$tree/tests/tool" # what is joined lies there
    # Each source once: the library's are compiled a second time for the tests of faults, the tool's for fuzzing.
    jq 'map(select(.command | test("(mm_faulty|mm_platform|fuzz_pictures)\\.dir") | not)) | unique_by(.file)' \
        "$tree/compile_commands.json" >"$tree/once.json"
    mkdir -p "$tree/once"
    mv "$tree/once.json" "$tree/once/compile_commands.json"
    jq -r '.[].file' "$tree/once/compile_commands.json" | sort >"$tree/compiled"
    if [ "$scope" != --all ]; then
        mapfile -t wanted < <(sources_to_tidy | sort -u)
        joined "${wanted[@]}" | comm -12 - "$tree/compiled" >"$tree/wanted"
    else
        cp "$tree/compiled" "$tree/wanted"
    fi
    # What the compiler counts is not what was found: findings are printed, the counts are not.
    xargs -r -a "$tree/wanted" -P "$(nproc)" -n 1 clang-tidy -p "$tree/once" --quiet \
        >"$tree/findings" 2>"$tree/counts" && return
    grep -hvE '^[0-9]+ warnings?( treated as errors?)?( and [0-9]+ errors?)? (generated|treated)|^Suppressed|^Use ' \
        "$tree/findings" "$tree/counts" | awk '!seen[$0]++'
    return 1
}

need_packages "${BUILD_PACKAGES[@]}" clang clang-format clang-tidy codespell git jq libbenchmark-dev \
    libgmock-dev libgtest-dev python3 shellcheck
wrong=()
check() { # name, command
    local start=$SECONDS
    echo "== $1"
    "$2" || wrong+=("$1")
    [ $((SECONDS - start)) -lt 2 ] || echo "($((SECONDS - start)) s)"
}
check "format" check_format
check "lines" check_lines
check "shell scripts" check_shell
check "spelling" check_spelling
check "rooms, and their drawing" check_rooms
check "tidiness" check_tidiness
[ ${#wrong[@]} -eq 0 ] || { printf 'WRONG: %s\n' "${wrong[@]}"; exit 1; }
echo "${#files[@]} files are written as they should be (${SECONDS} s)"
