#!/usr/bin/env bash
# What killed runs leave in the temporary folder, what clean removes of it, and what it leaves alone.
# Usage: leftovers.sh IMGBAND
set -euo pipefail
program=$(realpath "$1")
folder=$(mktemp -d)
finish() {
    [ -z "${live-}" ] || kill -9 "$live" 2>/dev/null || true
    rm -rf "$folder"
}
trap finish EXIT
cd "$folder"
mkdir tmp
export TMPDIR=$folder/tmp

fail() { # what
    echo "FAILED: $1"
    exit 1
}
expect() { # what, file, extended regular expression that the whole file must match
    grep -Pzoq -- "\A$3\z" "$2" || { cat "$2"; fail "$1"; }
}
start() { # files there are then; the run's number is in $!
    "$program" make a.bmp --size 9000x9000 --budget 12M &
    until [ "$(find tmp -name 'LRG*' | wc -l)" = "$1" ]; do sleep .01; done
}

# Beside the output: a killed run leaves nothing, and the next one removes what others left, unless it is locked.
printf 123 >.imgband-0123456789abcdef
printf 123 >.imgband-0123456789abcde
exec 9>.imgband-fedcba9876543210
flock 9
start 1
kill -9 $!
wait $! || true
"$program" clean --all
[ "$(echo .imgband-*)" = '.imgband-0123456789abcde .imgband-fedcba9876543210' ] || fail "there are: $(echo .imgband-*)"
exec 9>&-
"$program" clean --all --temp-dir . 2>errors
expect 'an unlocked file is a leftover' errors '.*: 1 leftover of 0 bytes removed\n'

start 1
live=$!
held=$(echo tmp/LRG*)
start 2
kill -9 $!
wait $! || true

for name in LRG-notes.txt LRG.tmp LRG123.tmp LRGabcd.tmp XLRG1234.tmp LRG1234.tmp.old LRG123456789.tmp; do
    touch "tmp/$name" # no names of the library's, or too short or long
done
ln -s LRG.tmp tmp/LRGAAAA.tmp
mkdir tmp/LRGBBBB.tmp
mkfifo tmp/LRGCCCC.tmp
touch tmp/LRGDDDD.tmp
chown 1 tmp/LRGDDDD.tmp 2>/dev/null || rm tmp/LRGDDDD.tmp # somebody else's
touch -hd '3 days ago' tmp/LRG*[!0-9A-F].* tmp/LRG{AAAA,CCCC}.tmp tmp/LRGDDDD*
find tmp | sort >before

old_leftover() {
    printf 12345 >tmp/LRG1234.tmp
    touch -d '3 days ago' tmp/LRG1234.tmp
}
old_leftover
"$program" make b.bmp --size 9x9
find tmp | sort | cmp - before || fail 'a job removes another thing than an old leftover'
old_leftover
find tmp | sort >before

"$program" clean --dry-run >dry 2>errors
expect 'a dry run tells name, size and age' dry '(.*\n)*LRG1234\.tmp  5 bytes, 3 days old\n(.*\n)*'
expect 'a dry run counts' errors '(.*\n)*.*: 1 leftover of 5 bytes; 1 younger than an hour left alone, try --all\n'
find tmp | sort | cmp - before || fail 'a dry run removes something'

chmod 555 tmp
without=(setpriv --bounding-set=-dac_override) # the superuser's right to write everywhere
"${without[@]}" true 2>/dev/null || without=()
status=0
"${without[@]}" "$program" clean --all >refused 2>errors || status=$?
chmod 755 tmp
[ $status = 4 ] || fail "clean ended with $status where it may not remove files"
expect 'files that cannot be removed are told' refused '(LRG.* bytes, .*: Permission denied\n){2}'
find tmp | sort | cmp - before || fail 'something is gone from a folder that is write-protected'

"$program" clean --all --json >json 2>errors
"$program" clean --all 2>errors
expect 'nothing is left to clean' errors '(.*\n)*.*: 0 leftovers of 0 bytes removed\n'
gone=$(comm -23 before <(find tmp | sort) | sed "s|^tmp/||")
[ "$(wc -l <<<"$gone")" = 2 ] || fail "not two files are gone: $gone"
grep -qx LRG1234.tmp <<<"$gone" || fail 'the old leftover is still there'
grep -q '"total_bytes": 5' json || fail 'the bytes are counted wrong'
grep -q '"total_files": 2' json || fail 'the files are counted wrong'
removed=$(tr -d "\n" <json | grep -oP "\{[^{}]*\"removed\": true[^{}]*\}" | grep -oP "\"name\": \"\K[^\"]*" | sort)
[ "$removed" = "$(sort <<<"$gone")" ] || fail "told as removed: $removed, gone: $gone"
[ -e "$held" ] || fail 'a living run lost its file'
