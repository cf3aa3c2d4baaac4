#!/usr/bin/env bash
# Every public header compiles alone, with every compiler, as C++17 and C++20, without warnings; and the documented
# layout, which the library's own build asserts, holds by the rules of the vendor's compiler for Windows too.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/interface.sh

work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
make_version_header "$work"
warnings=(-Wall -Wextra -Wconversion -Wshadow -Werror -fsyntax-only)
vendor="clang++ --target=i686-pc-windows-msvc -nostdinc -isystem tests/headers"

public_headers() { # compiler: what the interface consists of with it, but for the system's headers
    printf '#include <%s>\n' "${UMBRELLA_HEADERS[@]}" | $1 -std=c++17 -I "$work" -I . -MM -x c++ - |
        tr ' ' '\n' | sed -nE 's|^(\./)?(.*/)?(MemoryManager\|Platform)/(.*\.h)$|\3/\4|p'
}

compile_alone() { # number, compiler: a source for each header
    local sources=$work/$1 header
    mkdir "$sources"
    for header in $(public_headers "$2"); do
        echo "#include <$header>" >"$sources/${header//\//.}.cpp"
    done
    for standard in c++17 c++20; do
        $2 -std=$standard "${warnings[@]}" -I "$work" -I . "$sources"/*.cpp
    done
    echo "$(find "$sources" -type f | wc -l) headers compile alone: $2"
}

compilers=(g++ "g++ -m32" clang++ i686-w64-mingw32-g++-posix x86_64-w64-mingw32-g++-posix "$vendor")
jobs=()
for i in "${!compilers[@]}"; do
    compile_alone "$i" "${compilers[i]}" &
    jobs+=($!)
done
for job in "${jobs[@]}"; do
    wait "$job"
done
$vendor -std=c++20 "${warnings[@]}" -I "$work" -I . MemoryManager/*/RecordLayout.cpp
echo "The documented layout holds: $vendor"
