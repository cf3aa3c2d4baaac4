# shellcheck shell=bash
# Sourced by the other scripts: compiles the public headers for a target, and describes what they promise there.
# Windows targets take stand-ins for the system's headers from tests/headers.

# shellcheck disable=SC2034 # used by who sources this
INTERFACE_TARGETS=(linux-x86-64 linux-i386 windows-x86 windows-x86-64 msvc-x86 msvc-x86-64)

# Everything that includes the umbrella header gets, and the texts that a host may show.
UMBRELLA_HEADERS=(MemoryManager/MemoryManager.h MemoryManager/ReportTextList.h)

clang_for() { # target, then clang's arguments
    local target=$1 headers=(-nostdinc -isystem tests/headers) triple
    shift
    case $target in
        linux-x86-64) triple=x86_64-linux-gnu headers=() ;;
        linux-i386) triple=i386-linux-gnu headers=() ;;
        windows-x86) triple=i686-w64-windows-gnu ;;
        windows-x86-64) triple=x86_64-w64-windows-gnu ;;
        msvc-x86) triple=i686-pc-windows-msvc ;;
        msvc-x86-64) triple=x86_64-pc-windows-msvc ;;
    esac
    clang++ --target="$triple" "${headers[@]}" -std=c++17 "$@"
}

make_version_header() { # folder: as the build makes it
    local version major minor patch
    version=$(sed -nE 's/^project\(.*VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
    IFS=. read -r major minor patch <<<"$version"
    mkdir -p "$1/MemoryManager"
    sed -e "s/@PROJECT_VERSION@/$version/; s/@PROJECT_VERSION_MAJOR@/$major/" \
        -e "s/@PROJECT_VERSION_MINOR@/$minor/; s/@PROJECT_VERSION_PATCH@/$patch/" \
        MemoryManager/Version.h.in >"$1/MemoryManager/Version.h"
}

# The facts of interface.jq.
list_facts() { # target, folder of probe.cpp, folders of headers as clang's arguments
    local target=$1 folder=$2 tables=false
    shift 2
    [[ $target == linux-* ]] && tables=true
    clang_for "$target" "$@" -fsyntax-only -Xclang -ast-dump=json "$folder/probe.cpp" |
        jq -r --argjson tables "$tables" -f scripts/interface.jq |
        if [[ $target == *-x86 ]]; then sed 's/^export _/export /'; else cat; fi # the linker's own prefix
}

# Continues the probe: what makes clang lay out every record and every virtual table, and compute every constant.
list_probes() { # facts
    sed -nE 's/^record (.*)/static_assert(sizeof(\1) > 0);/p' "$1"
    echo 'extern "C" {'
    sed -nE 's/^constant (.*)/extern const long long value_\1; const long long value_\1 = \1;/p' "$1"
    echo '}'
    sed -nE 's/^table (.*)/struct Probe_\1 : \1 {}; Probe_\1 probe_\1;/p' "$1"
}

# Sizes and offsets out of clang's record layouts, those of the records listed in the facts.
list_layouts() { # facts
    awk -v facts="$1" '
        BEGIN {
            while ((getline line < facts) > 0)
                if (split(line, part, " ") == 2 && part[1] == "record")
                    ours[part[2]] = 1
        }
        /Dumping AST Record Layout/ { title = ""; members = ""; next }
        title == "" { title = $NF; next }
        !(title in ours) { next }
        /sizeof=/ {
            split($0, bytes, /sizeof=/); split($0, align, / align=/)
            printf "%s: %d bytes, aligned to %d\n%s\n", title, bytes[2], align[2], members
            delete ours[title]
            next
        }
        /^ *[0-9]+ \|   [^ ]/ { split($0, part, / \|   /); members = members sprintf("%6d  %s\n", part[1], part[2]) }' |
        sed 's/(.* vf\?table pointer)/virtual table/'
}

# Operations by their place in the virtual table.
list_slots() {
    awk '
        /^ *V(FT|t)able for / { inside = match($0, /.Probe_[A-Za-z]+. \(/); slot = 0
            if (inside) print substr($0, RSTART + 7, RLENGTH - 10) }
        inside && /^ *[0-9]+ \| .*\(.*\)/ && !/offset_to_top/ {
            sub(/^ *[0-9]+ \| /, ""); gsub(/Probe_/, ""); printf "%6d  %s\n", slot++, $0 }
        /^$/ { if (inside) print ""; inside = 0 }'
}

write_description() { # target, folder with facts, values, dump and macros
    local exports=Exported
    [[ $1 == msvc-* ]] && exports="What a program of this compiler looks for"
    echo "The interface on $1, as scripts/check-interface.sh --write found it."
    printf '\n%s\n' "$exports"
    sed -n 's/^export //p' "$2/facts" | LC_ALL=C sort
    printf '\nRecords and classes: bytes, and offsets of members\n\n'
    list_layouts "$2/facts" <"$2/dump"
    printf 'Virtual tables: operations by slot\n\n'
    list_slots <"$2/dump"
    printf 'Constants\n'
    sed -nE 's/^enum (\w+) (.*)/\1 is of type \2/p' "$2/facts"
    sed -nE 's/^@value_(\w+) = .*constant i64 (-?[0-9]+).*/\1 = \2/p' "$2/values"
    printf '\nMacros\n'
    sed -nE 's/^#define (MM_\w+(\([^)]*\))?).*/\1/p' "$2/macros" | LC_ALL=C sort
}

# Nothing that was declared is missing from the description.
is_complete() { # facts, description
    local kind pattern
    while read -r kind pattern; do
        if [ "$(grep -c "^$kind " "$1")" -ne "$(grep -cE "$pattern" "$2")" ]; then
            echo "Some $kind is not described" >&2
            return 1
        fi
    done <<'EOF'
record ^\w+: [0-9]+ bytes
table ^ +0 .*::.*\(
constant ^\w+ = -?[0-9]+$
EOF
}

describe() ( # target, folder of the headers
    set -euo pipefail
    folder=$(mktemp -d)
    trap 'rm -r "$folder"' EXIT
    make_version_header "$folder"
    printf '#include <%s>\n' "${UMBRELLA_HEADERS[@]}" >"$folder/probe.cpp"
    include=(-I "$folder" -I "$2")

    clang_for "$1" "${include[@]}" -dM -E "$folder/probe.cpp" >"$folder/macros"
    list_facts "$1" "$folder" "${include[@]}" >"$folder/facts"
    list_probes "$folder/facts" >>"$folder/probe.cpp"
    clang_for "$1" "${include[@]}" -S -emit-llvm -o "$folder/values" -Xclang -fdump-record-layouts \
        -Xclang -fdump-vtable-layouts "$folder/probe.cpp" >"$folder/dump"
    write_description "$1" "$folder" >"$folder/description"
    is_complete "$folder/facts" "$folder/description"
    cat "$folder/description"
)
