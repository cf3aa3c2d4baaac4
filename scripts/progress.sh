# shellcheck shell=bash
# Sourced by the other scripts: long commands that say how far they are.

# Reads lines that begin with N/M, as ninja and ctest write them, and shows every tenth of M. Passes on whatever else
# is said, such as a compiler's warnings and tests that did not pass.
show_progress() { # what was done with N: "built"
    local line number total tenths shown=0 last=0
    while IFS= read -r line; do
        if [[ $line =~ ^\ *([0-9]+)/([0-9]+)\  ]]; then
            number=${BASH_REMATCH[1]} total=${BASH_REMATCH[2]}
            [ "$number" -ge "$last" ] || shown=0 # ninja counts anew after it has looked for new sources
            last=$number tenths=$((10 * number / total))
            if [ "$tenths" -gt "$shown" ] && [ "$total" -gt 10 ]; then
                shown=$tenths
                echo "  $1 $number of $total"
            fi
            [[ $line != *'***'* ]] || printf '%s\n' "$line" # a test that failed or was skipped
        elif [[ ! $line =~ ^\ *Start\ +[0-9]+: ]]; then
            printf '%s\n' "$line"
        fi
    done
}

build_folder() { # folder, further arguments of cmake --build
    NINJA_STATUS='%f/%t ' cmake --build "$1" --parallel "$(nproc)" "${@:2}" | show_progress built
}
