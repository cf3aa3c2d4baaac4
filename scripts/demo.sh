#!/usr/bin/env bash
# The main job, from an empty machine to checked pictures: a bitmap of 12000 x 12000 pixels, many times larger
# than the memory it is given, goes to 32 bits, to 16 bits a sample and back. A small one is filtered and enlarged.
# Usage: scripts/demo.sh [FOLDER]      FOLDER keeps the pictures; default ${TMPDIR:-/tmp}/imgband-demo
set -euo pipefail
folder=$(realpath -m "${1:-${TMPDIR:-/tmp}/imgband-demo}")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
. scripts/progress.sh

width=12000
height=12000
budget_mib=64
margin_mib=24 # what the process may take beside the budget
needed_mib=2400 # the pictures; bands go straight from file to file, without temporary ones

mkdir -p "$folder"
free_mib=$(($(df --output=avail -k "$folder" | tail -1) / 1024))
if [ "$free_mib" -lt "$needed_mib" ]; then
    echo "$folder has $free_mib MiB free, $needed_mib MiB are needed. Give another folder: scripts/demo.sh FOLDER" >&2
    exit 4
fi

echo "== Build of the tool, which takes a minute or two"
need_packages "${BUILD_PACKAGES[@]}" netpbm
cmake --preset release -B build/demo -DMM_BUILD_TESTS=OFF -DMM_BUILD_BENCHMARKS=OFF -DMM_JOIN_SOURCES=ON >/dev/null
build_folder build/demo --target imgband
imgband=$PWD/build/demo/tools/imgband/imgband

run() { # arguments of imgband: prints its plan, and holds its peak against the budget
    printf '\n$ imgband'
    printf ' %s' "$@"
    printf ' --budget %sM --verbose\n' "$budget_mib"
    { "$imgband" "$@" --budget "${budget_mib}M" --temp-dir "$folder" --verbose --json >last-run.json; } 2>&1
    local peak limit=$(((budget_mib + margin_mib) * 1048576))
    peak=$(sed -n 's/^  "peak_private_bytes": \([0-9]*\).*/\1/p' last-run.json)
    if [ -z "$peak" ] || [ "$peak" -gt "$limit" ]; then
        echo "FAILED: peak private memory of ${peak:-unknown} bytes, allowed are $limit" >&2
        exit 1
    fi
    echo "  peak $peak bytes <= $limit bytes ($budget_mib MiB budget + $margin_mib MiB)"
}

same() { # title, two files or pipes: every byte compared
    printf '  %s: ' "$1"
    if ! cmp "$2" "$3"; then
        echo "FAILED: $1" >&2
        exit 1
    fi
    echo "yes"
}

# The pixels of a bitmap as netpbm reads them, without a header: from top to bottom, red, green, blue.
pixels() { bmptopnm -quiet "$1" | tail -c $((width * height * 3)); }

# The same as raw 48-bit pixels. A sample scaled to 16 bits has two equal bytes, so their order does not matter.
pixels48() { bmptopnm -quiet "$1" | pamchannel 2 1 0 | pamdepth -quiet 65535 | tail -c $((width * height * 6)); }

cd "$folder"
echo
echo "== Pictures of $width x $height pixels inside $budget_mib MiB, in $folder"
run make first24.bmp --size "${width}x$height"
run convert first24.bmp second32.bmp --to bgra32
run convert second32.bmp third48.raw --to raw48
run convert third48.raw fourth24.bmp --from raw48 --size "${width}x$height" --to bgr24

run make small24.bmp --size 1203x901
run filter small24.bmp smooth24.bmp --op box --radius 2
run enlarge small24.bmp large24.bmp --factor 3 --op nearest
printf '\n$ imgband filter first24.bmp other.bmp --op gauss --budget %sM --plan\n' "$budget_mib"
"$imgband" filter first24.bmp other.bmp --op gauss --budget "${budget_mib}M" --plan

echo
echo "== Every pixel compared, as netpbm reads them"
[ "$(pixels first24.bmp | wc -c)" -eq $((width * height * 3)) ] # else two empty pipes would be equal
same "first24.bmp and second32.bmp have the same colours" <(pixels first24.bmp) <(pixels second32.bmp)
same "third48.raw has the same colours, scaled to 16 bits" <(pixels48 first24.bmp) third48.raw
same "fourth24.bmp is first24.bmp again, byte for byte" first24.bmp fourth24.bmp
same "large24.bmp is small24.bmp enlarged by netpbm" <(bmptopnm -quiet small24.bmp | pamenlarge 3) \
    <(bmptopnm -quiet large24.bmp)
inner() { pamcut -left 2 -top 2 -right -3 -bottom -3; } # netpbm leaves the edges as they are
same "smooth24.bmp is small24.bmp smoothed by netpbm, but for its edges" \
    <(bmptopnm -quiet small24.bmp | pnmsmooth -quiet -width=5 -height=5 | inner) <(bmptopnm -quiet smooth24.bmp | inner)
bmptopnm -quiet first24.bmp | pamscale -nomix -xsize=1200 | pnmtopng -quiet >preview.png
rm -f last-run.json

echo
echo "== Done in $SECONDS s. The pictures, and a small preview of them, are in $folder:"
ls -l --block-size=1 first24.bmp second32.bmp third48.raw fourth24.bmp small24.bmp smooth24.bmp large24.bmp \
    preview.png
echo "Remove them with: rm -r $folder"
