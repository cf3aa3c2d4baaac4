#!/usr/bin/env bash
# Builds everything that is supported and runs all tests. Usage: scripts/test.sh
# Installs the Debian packages it needs. Build folders are build/<preset>.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "${BUILD_PACKAGES[@]}" clang libclang-rt-14-dev libgtest-dev libgmock-dev libbenchmark-dev \
    g++-multilib g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix binutils imagemagick netpbm e2fsprogs \
    chromium fonts-noto-cjk fonts-dejavu-core

jobs=$(nproc)
done_steps=()

step() { # title, then the command
    local title=$1 start=$SECONDS
    shift
    echo "== $title"
    "$@"
    done_steps+=("$title ($((SECONDS - start)) s)")
}

build() { # preset
    cmake --preset "$1" >/dev/null
    cmake --build --preset "$1" --parallel "$jobs" -- --quiet
}

build_and_test() { # preset
    build "$1"
    ctest --preset "$1" --parallel "$jobs" --no-tests=error --output-on-failure |
        sed -E '/^ *[0-9]+\/[0-9]+ Test +#.*Passed/d; /^ *Start +[0-9]+:/d'
}

step "g++, debug, static library" build_and_test dev
step "g++, release, shared library" build_and_test release
step "exported names" scripts/check-exports.sh build/release/MemoryManager/libMemoryManager.so
step "public headers alone" scripts/check-headers.sh
step "documented result codes" scripts/check-result-codes.sh
step "clang++, debug, static library" build_and_test clang
step "address and undefined-behaviour sanitizers" build_and_test asan
step "thread sanitizer" build_and_test tsan
for target in i386 win32 win64; do
    step "library for $target (build only)" build "$target"
done

printf '\nPassed:\n'
printf '  %s\n' "${done_steps[@]}"
