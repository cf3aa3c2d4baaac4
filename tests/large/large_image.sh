#!/usr/bin/env bash
# A picture of 1.9 GiB through a budget of 100 MiB: enlarged, turned, filtered and exported, in both schemes.
# Usage: large_image.sh IMGBAND [ARGUMENT...], the command that runs the tool, which may limit its addresses.
# Needs 8 GB in $TMPDIR (or /tmp); exit status 77 where they are missing.
set -euo pipefail
imgband=("$@")
budget=$((100 << 20))

folder=$(mktemp -d "${TMPDIR:-/tmp}/large_image.XXXXXX")
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir temp
if [ "$(df --output=avail -B1 . | tail -1)" -lt 9000000000 ]; then
    echo "skipped: less than 9 GB are free in $folder"
    exit 77
fi

number() { sed -n "s/^  \"$1\": \([0-9]*\).*/\1/p" job.json; } # of the whole run

job() { # arguments of the tool; checks what it took
    local start=$SECONDS key
    echo "imgband $*"
    if ! "${imgband[@]}" "$@" --budget $budget --temp-dir "$folder/temp" --json >job.json 2>errors.txt; then
        cat errors.txt
        exit 1
    fi
    for key in peak_budget_bytes peak_private_bytes peak_mapped_bytes; do
        [ "$(number $key)" -le $budget ] || { echo "$key is $(number $key)"; exit 1; }
    done
    [ -z "$(ls temp)" ] || { ls -l temp; exit 1; }
    echo "  $((SECONDS - start)) s; most of the budget $(($(number peak_budget_bytes) >> 20)) MiB," \
        "private $(($(number peak_private_bytes) >> 20)) MiB, mapped $(($(number peak_mapped_bytes) >> 20)) MiB"
}

has_sum() { # file, checksum that it has on every target
    [ "$(cksum "$1" | cut -d' ' -f1)" = "$2" ] || { echo "another picture: $(cksum "$1")"; exit 1; }
}

job make small.bmp --size 5500x5796 --to bgra32
has_sum small.bmp 1194109951
job enlarge small.bmp first.bmp --factor 4 --op linear
has_sum first.bmp 255883046

job convert first.bmp turned.bmp --turn --scheme whole
has_sum turned.bmp 3119245696
rm turned.bmp
for scheme in unit whole; do
    job filter first.bmp soft.bmp --op gauss --scheme $scheme
    has_sum soft.bmp 2157000883
    rm soft.bmp
done
job convert first.bmp first.raw --to raw64 # positions up to 4 GiB
job convert first.raw back.bmp --from raw64 --size 22000x23184 --to bgra32
cmp first.bmp back.bmp
