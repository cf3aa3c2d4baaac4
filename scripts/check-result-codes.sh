#!/usr/bin/env bash
# docs/result-codes.md lists what MemoryManager/ResultCodes.h defines. Usage: scripts/check-result-codes.sh [--write]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# shellcheck disable=SC2016 # Markdown's quotes, no commands
table() {
    printf '# Result codes\n\nMade from `MemoryManager/ResultCodes.h` by `scripts/check-result-codes.sh --write`.\n\n'
    printf '| code | name | meaning |\n|---|---|---|\n'
    sed -nE 's/^ *X\((MM_\w+), +([0-9]+), "([^"]+)"\).*/| \2 | `\1` | \3 |/p' MemoryManager/ResultCodes.h
}

if [ "${1-}" = --write ]; then
    table >docs/result-codes.md
else
    diff -u docs/result-codes.md <(table)
fi
echo "$(grep -c '^| [0-9]' docs/result-codes.md) result codes documented"
