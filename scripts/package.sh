#!/usr/bin/env bash
# Makes build/packages: three Debian packages, a .tar.gz for Linux and a .zip for Windows (docs/packages.md).
# Usage: scripts/package.sh [linux|windows]     default: both
# Installs the Debian packages it needs. Its builds are in build/package-builds, those for Windows build/win32 and
# build/win64.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
. scripts/progress.sh
system=${1:-linux windows}
builds=$PWD/build/package-builds
packages=$PWD/build/packages
documents=$builds/documents
version=$(sed -nE 's/^project\(MemoryManager VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)

need_packages "${BUILD_PACKAGES[@]}"
mkdir -p "$packages" "$documents"

pack() { # generator, file name without its ending, builds as CPack wants them, folder for the documents
    cpack -G "$1" --config "${3%%;*}/CPackConfig.cmake" -B "$packages" -D CPACK_PACKAGE_FILE_NAME="$2" \
        -D CPACK_INSTALL_CMAKE_PROJECTS="$3" ${4:+-D "CPACK_INSTALLED_DIRECTORIES=$documents;$4"} \
        >"$builds/cpack.log" || { tail -20 "$builds/cpack.log" >&2; exit 1; }
    rm -rf "$packages/_CPack_Packages"
}

collect_documents() { # Debian packages whose code is compiled into the programs
    local package
    rm -f "$documents"/*
    cp LICENSE CHANGELOG.md "$documents"
    for package in "$@"; do
        printf '%s\n\n' "== $package"
        cat "/usr/share/doc/$package/copyright"
        echo
    done >"$documents/NOTICES"
}

package_linux() {
    need_packages dpkg-dev file
    local flags linker_flags name
    name=memorymanager-$version-linux-$(uname -m)
    export DEB_BUILD_MAINT_OPTIONS=hardening=+all
    flags="$(dpkg-buildflags --get CPPFLAGS) $(dpkg-buildflags --get CXXFLAGS) -g0"
    linker_flags=$(dpkg-buildflags --get LDFLAGS)
    # fmt from its headers: the tool then needs no library that another system has in another version.
    collect_documents libcli11-dev nlohmann-json3-dev libfmt-dev
    local options=(-DMM_NOTICES="$documents/NOTICES" -DMM_BUILD_TESTS=OFF -DMM_BUILD_BENCHMARKS=OFF
        -DMM_HEADERS_ONLY=ON -DMM_JOIN_SOURCES=ON -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_SHARED_LINKER_FLAGS="$linker_flags"
        -DCMAKE_EXE_LINKER_FLAGS="$linker_flags")
    build_linux() { # prefix: decides the library's folder below it, and where the tool looks for the library
        cmake --preset release -B "$builds/shared" "${options[@]}" -DCMAKE_INSTALL_PREFIX="$1" >/dev/null
        cmake --preset release -B "$builds/static" "${options[@]}" -DCMAKE_INSTALL_PREFIX="$1" \
            -DBUILD_SHARED_LIBS=OFF -DMM_BUILD_TOOL=OFF >/dev/null
        build_folder "$builds/shared"
        build_folder "$builds/static"
    }
    local both="$builds/shared;MemoryManager;ALL;/;$builds/static;MemoryManager;ALL;/"
    build_linux /usr
    pack DEB unused "$both"
    build_linux /opt/memorymanager
    pack TGZ "$name" "$both" /share/doc/MemoryManager
}

package_windows() {
    need_packages g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix clang libgtest-dev libgmock-dev
    local preset
    for preset in win32 win64; do
        cmake --preset $preset -DMM_NATIVE_TOOL_TESTS= >/dev/null
        build_folder build/$preset --target MemoryManager imgband
    done
    collect_documents libcli11-dev nlohmann-json3-dev libfmt-dev mingw-w64-common gcc-mingw-w64-base
    sed "s/@PROJECT_VERSION@/$version/; s/\$/\r/" packaging/windows/README.txt.in >"$documents/README.txt"
    pack ZIP "memorymanager-$version-windows" \
        "$PWD/build/win64;MemoryManager;ALL;/x64;$PWD/build/win32;MemoryManager;ALL;/x86" /
}

case $system in
linux | windows | 'linux windows') ;;
*) echo "Usage: scripts/package.sh [linux|windows]" >&2; exit 2 ;;
esac
rm -rf "${packages:?}"/*
for name in $system; do
    "package_$name"
done
ls -l "$packages"
