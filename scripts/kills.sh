#!/usr/bin/env bash
# Ends real jobs at random moments, and looks at what they leave: no bytes in the temporary folder, no half output,
# and no name after the next clean-up, there and beside the output.
# Usage: scripts/kills.sh IMGBAND [KILLS [INTERRUPTS]]
#   KILLS       runs that SIGKILL ends (default 2000)
#   INTERRUPTS  runs each that SIGINT and SIGTERM end (default 300)
set -euo pipefail
program=$(realpath "$1")
kills=${2:-2000}
interrupts=${3:-300}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir tmp out
export TMPDIR=$folder/tmp

"$program" make in.bmp --size 1500x1400 --pattern gradient --quiet
"$program" filter in.bmp right --op box --budget 12M --quiet
jobs=("--scheme whole" "--scheme unit" "--scheme unit --access mmap" "--scheme whole --access mmap")
ended=0 finished=0 torn=0 bytes=0 names=0 refused=0

# What lies where a run was ended: data under a name, and an output that is not the right one.
look() {
    if [ -e out/new ] && ! cmp -s out/new right; then torn=$((torn + 1)); fi
    cmp -s out/old right || cmp -s out/old before || torn=$((torn + 1))
    bytes=$((bytes + $(find tmp -type f -printf '%s\n' | awk '{ n += $1 } END { print n + 0 }')))
}

# One run that a signal ends after a random part of its time. Every other one replaces an output.
end_one() { # signal, the exit status that it gives, number
    local output=new status=0
    [ $(($3 % 2)) = 0 ] || output=old
    rm -f out/new
    cp -f before out/old
    # A shell lets its background jobs ignore SIGINT.
    # shellcheck disable=SC2086 # options
    env --default-signal=INT "$program" filter in.bmp "out/$output" --op box --budget 12M --quiet \
        ${jobs[$3 / 2 % 4]} 2>/dev/null &
    local number=$!
    sleep "0.0$((RANDOM % 1000))"
    kill "-$1" "$number" 2>/dev/null || true
    wait "$number" 2>/dev/null || status=$?
    case $status in
    0) finished=$((finished + 1)) ;;
    "$2") ended=$((ended + 1)) ;;
    *) # before the program was ready for signals
        [ "$1" != KILL ] && [ $status = $((128 + $(kill -l "$1"))) ] || refused=$((refused + 1)) ;;
    esac
    look
    if [ "$1" != KILL ]; then
        names=$((names + $(find tmp out -type f -not -name new -not -name old | wc -l)))
    fi
}

printf 'the picture that was there' >before
for ((i = 0; i < kills; i++)); do end_one KILL 137 "$i"; done
"$program" clean --all --quiet
"$program" clean --all --quiet --temp-dir out
names=$(find tmp out -type f -not -name new -not -name old | wc -l)
for ((i = 0; i < interrupts; i++)); do
    end_one INT 130 "$i"
    end_one TERM 143 "$i"
done
printf 'Ended %d runs, %d were finished before. Left: %d bytes, %d names, %d torn outputs; other endings: %d\n' \
    "$ended" "$finished" "$bytes" "$names" "$torn" "$refused"
[ $((bytes + names + torn + refused)) = 0 ] && [ "$ended" -gt $((kills / 4)) ]
