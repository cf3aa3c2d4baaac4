#!/usr/bin/env bash
# Builds the fuzz targets and runs each of them. Usage: scripts/fuzz.sh [SECONDS] [--32]
#   SECONDS  for each target, 20 unless given
#   --32     for 32-bit Linux
# Prints executions, coverage and peak memory of every target, and fails on a finding, whose input is then in
# build/fuzz/findings (with --32 build/fuzz32/findings). What reached something new is kept in corpus/ beside it and
# is where the next run starts. Installs the Debian packages it needs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
. scripts/progress.sh

seconds=20 preset=fuzz seed=0
for argument in "$@"; do
    case $argument in
    --32) preset=fuzz32 ;;
    '' | *[!0-9]*) echo "Usage: scripts/fuzz.sh [SECONDS] [--32]" >&2; exit 2 ;;
    *) seconds=$argument ;;
    esac
done
export seconds folder=$PWD/build/$preset

# Files of more than 16 MiB are refused, as by a full disk. What the library may have, its budget of 64 KiB and 8 MiB
# more, is held in two ways: the targets add the charges up, and no single allocation may exceed 8 MiB. The limit of the
# whole process only stops what runs away: sanitizers and fuzzer have 60 MiB for themselves, and the band of an image
# may be one line of any length.
run_target() { # name
    local work=$folder/corpus/$1 status=0
    mkdir -p "$work" "$folder/temporary"
    trap '' XFSZ
    ulimit -f 16384
    TMPDIR=$folder/temporary ASAN_OPTIONS=quarantine_size_mb=4 "$folder/fuzz/fuzz_$1" "$work" \
        -max_total_time="$seconds" -malloc_limit_mb=8 -rss_limit_mb=1024 -timeout=20 -handle_xfsz=0 \
        -print_final_stats=1 -artifact_prefix="$folder/findings/$1-" >"$folder/$1.log" 2>&1 || status=$?
    awk -v name="$1" -v status="$status" '
        /^#[0-9]/ { for (i = 2; i < NF; ++i) if ($i == "cov:") coverage = $(i + 1) }
        /executed_units/ { runs = $2 }
        /average_exec/ { speed = $2 }
        /peak_rss/ { memory = $2 }
        END { printf "  %-14s %9d executions, %6d a second, %5d edges, %4d MiB at most%s\n",
              name, runs, speed, coverage, memory, status ? ": FINDING" : "" }' "$folder/$1.log"
    [ "$status" -eq 0 ] || { grep -nE -m1 -A12 'ERROR:|Assertion|runtime error' "$folder/$1.log"; return 1; }
}
export -f run_target

need_packages "${BUILD_PACKAGES[@]}" clang libclang-rt-14-dev libgtest-dev libgmock-dev
[ "$preset" = fuzz ] || need_packages g++-multilib
cmake --preset "$preset" >/dev/null
build_folder "$folder" --target fuzz_targets
mkdir -p "$folder/findings"
while read -r name bytes; do
    mkdir -p "$folder/corpus/$name"
    base64 -d <<<"$bytes" >"$folder/corpus/$name/seed$seed"
    seed=$((seed + 1))
done < <(grep -v '^#' fuzz/seeds.txt)
printf '%s\n' ExternalImage ImportExport KeyTable Planner UnitBands |
    xargs -P "$(nproc)" -I{} bash -euc 'run_target {}'
