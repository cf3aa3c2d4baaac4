# shellcheck shell=bash
# Sourced by the other scripts: installs Debian packages that are missing. Needs root, or sudo, only then.

retry() { # command: up to three times, with pauses
    local try
    for try in 1 2 3; do
        "$@" && return 0
        sleep $((try * 5))
    done
    return 1
}

install_packages() {
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    # A list that could not be renewed is no reason to fail: what is listed may still be served.
    "${as_root[@]}" apt-get update -qq || true
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -o DPkg::Lock::Timeout=300 -y -qq --no-install-recommends "$@" >/dev/null
}

need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing (a minute or several): ${missing[*]}"
    retry install_packages "${missing[@]}" || { echo "Could not install: ${missing[*]}" >&2; return 1; }
}

# What every build of library and tool needs.
# shellcheck disable=SC2034 # used by who sources this
BUILD_PACKAGES=(g++ cmake ninja-build libcli11-dev nlohmann-json3-dev libfmt-dev)

# Ends the servers that scripts/install-wine.sh left running.
end_wine() {
    local bits
    for bits in 32 64; do
        [ ! -d "build/wine/prefix$bits" ] || scripts/wine.sh "$bits" wineserver -k || true
    done
}
