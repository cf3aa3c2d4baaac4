#!/usr/bin/env bash
# What is installed is complete, can be moved and used by others; what is packaged works on a bare Debian and on
# Windows. Usage: scripts/test-package.sh
# Everything is taken from the packages, and the builds, of scripts/package.sh. Needs root.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
need_packages "${BUILD_PACKAGES[@]}" binutils pkg-config lintian unzip

version=$(sed -nE 's/^project\(MemoryManager VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
packages=$PWD/build/packages
root=$PWD/build/package-root
work=$(mktemp -d)
prefix=$work/moved/here
trap close EXIT
closing_lines=()

close() {
    end_wine
    rm -rf "$work" "$root"
}

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

quietly() { # command: its output only if it fails
    "$@" >"$work/output" 2>&1 || { cat "$work/output" >&2; fail "$*"; }
}

step() { # title, command
    echo "== $1"
    "${@:2}"
    closing_lines+=("passed: $1")
}

not_run() { # what, and why; test.sh reads it too
    mkdir -p build/results
    echo "$1" >>build/results/package-not-run
    closing_lines+=("NOT RUN: $1")
}

files_below() { (cd "$1" && find . ! -type d | LC_ALL=C sort | sed "s|^\./||; s/$version/VERSION/g"); }

install_all() { # every component apart, then all of them together in one folder that is moved
    local component file shared=build/package-builds/shared static=build/package-builds/static
    for component in Runtime Development Tools; do
        quietly cmake --install $shared --prefix "$work/$component" --component "$component"
    done
    quietly cmake --install $static --prefix "$work/Static"
    for component in Runtime Development Tools; do
        files_below "$work/$component" | sed "s/^/$component /"
    done >"$work/installed"
    for file in $(cd "$work/Static" && find . ! -type d | LC_ALL=C sort); do
        if [ ! -e "$work/Development/$file" ]; then
            echo "Static ${file#./}" >>"$work/installed"
        else
            cmp "$work/Development/$file" "$work/Static/$file" || fail "a shared and a static build differ in $file"
        fi
    done
    diff -u <(grep -v ^Windows tests/consumer/installed-files.txt) "$work/installed" ||
        fail "other files are installed than intended"

    quietly cmake --install $shared --prefix "$work/built/here"
    diff <(files_below "$work/built/here") <(cd "$work" && for component in Runtime Development Tools; do
        files_below "$component"; done | LC_ALL=C sort) || fail "files that belong to no component are installed"
    mkdir "$work/moved"
    mv "$work/built/here" "$work/moved"
    cp -a "$work/moved/here" "$work/Shared"
    cp -a "$work/Static/." "$prefix"
    if grep -rIlF -e "$PWD" -e "$work" "$prefix"; then
        fail "these files name a folder of this machine"
    fi
}

printed() { # words: the last command's output has a line that begins with them
    grep -q "^$1" "$work/output" || fail "printed was: $(cat "$work/output")"
}

run_host() { # program, shared or static: it works, and is linked as it should be
    local needed
    LD_LIBRARY_PATH=$prefix/lib quietly "$1"
    printed "MemoryManager $version, headers of $version: done"
    needed=$(readelf -d "$1" | sed -nE 's/.*NEEDED.*\[(libMemoryManager.*)\]/\1/p')
    case $2 in
        shared) [ "$needed" = libMemoryManager.so.1 ] || fail "$1 needs '$needed', not libMemoryManager.so.1" ;;
        static) [ -z "$needed" ] || fail "$1 needs $needed, but is to be linked statically" ;;
    esac
}

consumer() { # name, options of cmake: builds the foreign project
    quietly cmake -S tests/consumer -B "$work/$1" -G Ninja "${@:2}"
    quietly cmake --build "$work/$1" --parallel "$(nproc)"
}

find_package_works() {
    local found=(-DCMAKE_PREFIX_PATH="$prefix" -DMM_VERSION=1.0) standard
    consumer found-shared "${found[@]}" -DMM_COMPONENTS="Runtime;Development;Tools"
    consumer found-static "${found[@]}" -DMemoryManager_SHARED_LIBS=OFF
    consumer found-static-only -DCMAKE_PREFIX_PATH="$work/Static" -DMM_VERSION=1
    for standard in 17 20; do
        run_host "$work/found-shared/host$standard" shared
        run_host "$work/found-static/host$standard" static
        run_host "$work/found-static-only/host$standard" static
    done
}

refuses() { # words of the message, options of cmake
    rm -rf "$work/refused"
    if cmake -S tests/consumer -B "$work/refused" -G Ninja "${@:2}" >"$work/output" 2>&1; then
        fail "found, although: $1"
    fi
    tr -s ' \n' ' ' <"$work/output" | grep -qF "$1" || fail "refused, but not because: $1: $(cat "$work/output")"
}

find_package_refuses() {
    local installed=-DCMAKE_PREFIX_PATH=$prefix
    refuses 'compatible with requested version "2"' "$installed" -DMM_VERSION=2
    refuses 'compatible with requested version "1.1"' "$installed" -DMM_VERSION=1.1
    refuses 'Component Extras of MemoryManager is not installed.' "$installed" -DMM_COMPONENTS="Runtime;Extras"
    refuses 'Component Runtime of MemoryManager is not installed. Component Tools of MemoryManager is not installed.' \
        -DCMAKE_PREFIX_PATH="$work/Static" -DMM_COMPONENTS="Runtime;Development;Tools"
    refuses 'There is no static library' -DCMAKE_PREFIX_PATH="$work/Shared" -DMemoryManager_SHARED_LIBS=OFF
    refuses 'There is no shared or static library' -DCMAKE_PREFIX_PATH="$work/Development"
}

pkg_config_works() {
    local standard shared static
    export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
    [ "$(pkg-config --modversion MemoryManager)" = "$version" ] || fail "pkg-config tells another version"
    [[ " $(pkg-config --static --cflags MemoryManager) " = *' -DMM_STATIC '* ]] || fail "no -DMM_STATIC from pkg-config"
    read -ra shared <<<"$(pkg-config --cflags --libs MemoryManager)"
    read -ra static <<<"$(pkg-config --static --cflags --libs MemoryManager)"
    for standard in 17 20; do
        quietly g++ -std=c++$standard tests/consumer/host.cpp -o "$work/pc-shared" "${shared[@]}"
        run_host "$work/pc-shared" shared
        quietly g++ -std=c++$standard tests/consumer/host.cpp -o "$work/pc-static" -static "${static[@]}"
        run_host "$work/pc-static" static
    done
}

subdirectory_works() {
    local kind
    consumer inside-shared -DMM_SOURCES="$PWD"
    consumer inside-static -DMM_SOURCES="$PWD" -DBUILD_SHARED_LIBS=OFF
    for kind in shared static; do
        run_host "$work/inside-$kind/host17" $kind
        quietly cmake --install "$work/inside-$kind" --prefix "$work/inside-$kind/prefix"
        [ ! -e "$work/inside-$kind/prefix" ] || fail "the library installs itself with a project that only uses it"
    done
    if grep -q '^BUILD_SHARED_LIBS' "$work/inside-shared/CMakeCache.txt"; then
        fail "the library decides what kind of library those of its host are"
    fi
}

tool_is_documented() { # every option that the tool tells of is in its page
    local imgband=$prefix/bin/imgband command option options
    [ "$("$imgband" --version)" = "imgband $version" ] || fail "imgband --version: $("$imgband" --version)"
    gzip -dc "$prefix/share/man/man1/imgband.1.gz" | sed 's/\\-/-/g' >"$work/page"
    for command in make info convert filter enlarge plan clean; do
        quietly "$imgband" $command --help
        options=$(grep -oE -- '--[a-z][a-z-]+' "$work/output")
        for option in $options; do
            grep -qF -- "$option" "$work/page" || fail "imgband.1 does not tell of imgband $command $option"
        done
    done
}

packages_are_sound() {
    local deb names=() unpacked=$work/unpacked archive
    lintian --allow-root --fail-on error,warning "$packages"/*.deb || fail "lintian has objections"
    for deb in "$packages"/*.deb; do
        names+=("$(dpkg-deb -f "$deb" Package)")
        dpkg-deb -x "$deb" "$unpacked"
    done
    [ "${names[*]}" = "imgband libmemorymanager-dev libmemorymanager1" ] || fail "packages: ${names[*]}"
    consumer from-debian -DCMAKE_PREFIX_PATH="$unpacked/usr" -DMM_COMPONENTS="Runtime;Development;Tools"
    quietly env LD_LIBRARY_PATH="$(echo "$unpacked"/usr/lib/*-linux-gnu)" "$work/from-debian/host17"
    printed "MemoryManager $version, headers of $version: done"
    (cd "$packages" && quietly sha256sum --check ./*.sha256)
    mkdir "$work/archive"
    tar xf "$packages/memorymanager-$version-linux-$(uname -m).tar.gz" -C "$work/archive"
    archive=$(echo "$work"/archive/*)
    [ "$(env -i "$archive/bin/imgband" --version)" = "imgband $version" ] || fail "the tool of the archive does not run"
    consumer from-archive -DCMAKE_PREFIX_PATH="$archive" -DMM_COMPONENTS="Runtime;Development;Tools"
    run_host "$work/from-archive/host17" shared
    if grep -rlF -e "$PWD" "$unpacked" "$archive"; then
        fail "these packaged files name a folder of this machine"
    fi
}

windows_archive_works() {
    local bits word compiler
    quietly unzip -q "$packages/memorymanager-$version-windows.zip" -d "$work/zip"
    for bits in 32 64; do
        case $bits in
            32) word=x86 compiler=i686-w64-mingw32-g++-posix ;;
            64) word=x64 compiler=x86_64-w64-mingw32-g++-posix ;;
        esac
        prefix=$(echo "$work"/zip/*/$word)
        diff -u <(sed -n 's/^Windows //p' tests/consumer/installed-files.txt) <(files_below "$prefix") ||
            fail "other files are in $word than intended"
        consumer "windows$bits" -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_CXX_COMPILER=$compiler \
            -DCMAKE_EXE_LINKER_FLAGS=-static \
            -DCMAKE_PREFIX_PATH="$prefix" -DMM_COMPONENTS="Runtime;Development;Tools" -DMemoryManager_SHARED_LIBS=ON
        cp "$prefix/bin/MemoryManager.dll" "$work/windows$bits"
        (cd "$work/windows$bits" && quietly "$OLDPWD/scripts/wine.sh" $bits host17.exe)
        printed "MemoryManager $version, headers of $version: done"
        quietly scripts/wine.sh $bits "$prefix/bin/imgband.exe" --version
        printed "imgband $version"
    done
}

windows_archive() {
    if scripts/install-wine.sh 32 >"$work/output" 2>&1 && scripts/install-wine.sh 64 >"$work/output" 2>&1; then
        step "archive for Windows: hosts and tool, 32 and 64 bits" windows_archive_works
    else
        not_run "archive for Windows ($(tail -1 "$work/output"))"
    fi
}

# A small Debian system of its own, of this one's release, complete or not at all. mmdebstrap needs neither mounts nor
# device files, so that an ordinary container will do.
make_root() { # folder
    local folder=$1 release mirror
    need_packages mmdebstrap || return
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    # shellcheck disable=SC2016 # apt's own name
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Codename: $release" | head -1)
    rm -rf "$folder.unfinished"
    mmdebstrap --mode=root --variant=minbase "$release" "$folder.unfinished" "$mirror" || return
    mv "$folder.unfinished" "$folder"
}

in_root() { chroot "$root" "$@"; } # command with its arguments, in the bare system: without /proc

files_of_root() { # but what apt and dpkg keep for themselves
    find "$root" -xdev -regex "$root/\(var/lib/dpkg\|var/lib/apt\|var/log\|var/cache\|tmp\)" -prune -o -print |
        LC_ALL=C sort
}

packages_work_on_bare_debian() {
    local deb debs=() names=(libmemorymanager1 libmemorymanager-dev imgband)
    rm -rf "$root"
    cp -a build/bare-root "$root"
    files_of_root >"$work/before"
    for deb in "$packages"/*.deb; do
        cp "$deb" "$root/tmp"
        debs+=("/tmp/${deb##*/}")
    done
    quietly in_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${debs[@]}"
    in_root sh -euc 'cd /tmp
        ldconfig -p | grep -q libMemoryManager.so.1
        imgband make photo.bmp --size 3000x2000
        imgband convert photo.bmp photo.raw --to raw48 --scheme whole --budget 12M --report run.html --report run.json
        imgband convert photo.raw back.bmp --from raw48 --size 3000x2000 --to bgr24
        imgband info back.bmp
        cmp photo.bmp back.bmp
        grep -q "</html>" run.html
        grep -q "\"peak_budget_bytes\"" run.json' >"$work/output" 2>&1 ||
        fail "imgband on a bare Debian: $(cat "$work/output")"
    quietly in_root dpkg --purge "${names[@]}"
    files_of_root | diff "$work/before" - || fail "purging the packages leaves or takes files"
}

bare_debian() {
    local title="packages on a bare Debian"
    if ! chroot / true 2>/dev/null; then
        not_run "$title (this machine grants no chroot)"
    elif [ ! -d build/bare-root ] && ! retry make_root build/bare-root >build/bare-root.log 2>&1; then
        not_run "$title (no root could be made: $(tail -1 build/bare-root.log))"
    else
        step "$title: installed, run, purged" packages_work_on_bare_debian
    fi
}

step "packages made" quietly scripts/package.sh
step "installed files" install_all
step "find_package: shared and static, C++17 and C++20" find_package_works
step "find_package: refusals" find_package_refuses
step "pkg-config: shared and static, C++17 and C++20" pkg_config_works
step "add_subdirectory: shared and static" subdirectory_works
step "manual page of the tool" tool_is_documented
step "Debian packages: lintian; archive for Linux" packages_are_sound
windows_archive
bare_debian
printf '%s\n' "${closing_lines[@]}"
