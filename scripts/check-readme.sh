#!/usr/bin/env bash
# The host that README.md shows is examples/import_export.cpp, character for character.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# shellcheck disable=SC2016 # the fence of a code block, no command
diff -u examples/import_export.cpp <(sed -n '/^```cpp$/,/^```$/{//!p}' README.md)
echo "README.md shows examples/import_export.cpp"
