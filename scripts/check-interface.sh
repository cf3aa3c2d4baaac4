#!/usr/bin/env bash
# The interface is what interface/ describes: exported names, layouts, virtual slots, constants and macros on every
# target; the linker's lists of exports are made from it, and built libraries export exactly these names.
# Usage: scripts/check-interface.sh [--write | --self-test] [LIBRARY...]
#   --write      stores the description of the headers as they are, and the linker's lists
#   --self-test  changes copies of the headers and a library in every way that must be found
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/interface.sh

work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

stored_exports() { sed -n '/^Exported$/,/^$/{//!p}' "interface/$1.txt"; } # target: NAME code|data DECLARATION

module_definition() { # target; a comment has a line of its own there
    echo "; What MemoryManager.dll exports, by name. Made by scripts/check-interface.sh --write: see docs/windows.md."
    echo 'EXPORTS'
    stored_exports "$1" | sed -E 's/^(\S+) code (.*)/; \2\n    \1/; s/^(\S+) data (.*)/; \2\n    \1 DATA/'
}

version_script() {
    echo '# What libMemoryManager.so shows, on both word sizes. Made by scripts/check-interface.sh --write.'
    printf '{\n    global:\n'
    stored_exports linux-x86-64 | sed -E 's/^(\S+) \S+ (.*)/        \1; # \2/'
    printf '    local:\n        *;\n};\n'
}

same() { # stored file, generated file
    diff -u --label "$1 (stored)" --label "$1 (now)" "$1" "$2"
}

# Every file under interface/ and every list for a linker, made or compared.
each_file() { # store|same
    local target status=0
    for target in "${INTERFACE_TARGETS[@]}"; do
        describe "$target" . >"$work/$target"
        "$1" "interface/$target.txt" "$work/$target" || status=1
    done
    module_definition windows-x86 >"$work/x86.def"
    module_definition windows-x86-64 >"$work/x64.def"
    version_script >"$work/exports.map"
    "$1" Platform/windows/exports-x86.def "$work/x86.def" || status=1
    "$1" Platform/windows/exports-x64.def "$work/x64.def" || status=1
    "$1" Platform/posix/exports.map "$work/exports.map" || status=1
    return $status
}

store() { cp "$2" "$1"; }

# What a host of another compiler relies on: records, classes and virtual tables are the same for every compiler of
# one word size, but for the system's lock and a virtual destructor.
shared_layout() { # target
    sed -n '/^Records/,/^Constants/p' "interface/$1.txt" | sed '/^CRITICAL_SECTION/,/^$/d; /~CWorkTableList/d'
}

same_layout() { # two targets
    diff -u --label "$1" --label "$2" <(shared_layout "$1") <(shared_layout "$2")
}

target_of() { # library
    case $(objdump -f "$1" | sed -n 's/.*file format //p') in
        elf64-x86-64) echo linux-x86-64 ;;
        elf32-i386) echo linux-i386 ;;
        pei-i386) echo windows-x86 ;;
        pei-x86-64) echo windows-x86-64 ;;
        *) echo "No library of a known target: $1" >&2; return 1 ;;
    esac
}

exported_names() { # library
    if [[ $(target_of "$1") == linux-* ]]; then
        nm -D --defined-only --format=posix --without-symbol-versions "$1" | cut -d' ' -f1
    else
        objdump -p "$1" | sed -n '/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\].* //p'
    fi | LC_ALL=C sort
}

check_library() { # library
    local target
    target=$(target_of "$1")
    stored_exports "$target" | cut -d' ' -f1 >"$work/stored"
    exported_names "$1" >"$work/exported"
    diff -u --label "interface/$target.txt" --label "$1" "$work/stored" "$work/exported" || return 1
    compared[$target]=1
    echo "$1 exports the $(wc -l <"$work/exported") names of $target"
}

# Self-test -------------------------------------------------------------------------------------------------------

expect_difference() { # what, command
    local difference
    if difference=$("${@:2}") || [ -z "$difference" ]; then
        echo "Not found: $1" >&2
        exit 1
    fi
    echo "found: $1"
}

changed_header() { # what, header, sed script
    rm -rf "$work/headers"
    mkdir "$work/headers"
    cp -r MemoryManager Platform "$work/headers"
    sed -i -E "$3" "$work/headers/$2"
    if cmp -s "$2" "$work/headers/$2"; then
        echo "The self-test no longer fits $2: $1" >&2
        exit 1
    fi
    describe windows-x86 "$work/headers" >"$work/changed" # must compile: an error ends the script
    expect_difference "$1" diff "interface/windows-x86.txt" "$work/changed"
}

library_with() { # names
    # shellcheck disable=SC2001 # every line is changed
    sed 's/.*/.globl &\n&:/' <<<"$1" | gcc -shared -nostdlib -Wl,-z,noexecstack -x assembler -o "$work/library.so" -
}

self_test() {
    changed_header 'two members changed places' MemoryManager/ImageRecord.h \
        '0,/int nWidth;/s/int nWidth;/int nSwap;/; 0,/int nHeight;/s/int nHeight;/int nWidth;/; s/nSwap/nHeight/'
    changed_header 'two virtual slots changed places' MemoryManager/CImageObj.h \
        's/virtual int GetAreaSize/virtual int Swap/; s/virtual int GetBandHeight/virtual int GetAreaSize/
            s/Swap/GetBandHeight/'
    changed_header 'another value of an enumerator' MemoryManager/ExternalImage.h 's/ACS_MEMORY = 1/ACS_MEMORY = 4/'
    changed_header 'another value of a constant' MemoryManager/CImageCtrl.h 's/MM_SLOT_COUNT = 10/MM_SLOT_COUNT = 11/'
    changed_header 'a function that is gone' MemoryManager/ErrorLogFolder.h '/^MM_API const char\* GetErrLogPath/d'
    changed_header 'another argument' MemoryManager/CImageObj.h 's/SetFsize\(int nSize\)/SetFsize(LONG nSize)/'

    local names
    names=$(stored_exports linux-x86-64 | cut -d' ' -f1)
    library_with "$names"
    check_library "$work/library.so" >/dev/null
    library_with "$(sed '$d' <<<"$names")"
    expect_difference 'a name that a library lacks' check_library "$work/library.so"
    library_with "$names"$'\n'_Z6Helperv
    expect_difference 'a name too many in a library' check_library "$work/library.so"
}

# -----------------------------------------------------------------------------------------------------------------

declare -A compared=()
case ${1-} in
    --self-test) self_test; exit ;;
    --write) mkdir -p interface; each_file store; shift ;;
    *) each_file same; echo "interface/ describes the headers on ${#INTERFACE_TARGETS[@]} targets" ;;
esac
for target in linux-i386 msvc-x86; do
    same_layout windows-x86 $target
done
for target in linux-x86-64 msvc-x86-64; do
    same_layout windows-x86-64 $target
done
echo "Layouts and virtual tables are the same for all compilers of a word size"
for library in "$@"; do
    check_library "$library"
done
for target in linux-x86-64 linux-i386 windows-x86 windows-x86-64; do
    [ -n "${compared[$target]-}" ] || echo "NOT COMPARED: exports on $target (no library given)"
done
