#!/usr/bin/env bash
# Installs the Debian packages of scripts/packages.txt that this machine lacks, for the
# groups named: scripts/deps.sh GROUP... (build, test, page). Says what it installs, and
# stops with the command to run when it cannot install (not root and no sudo).
set -euo pipefail
cd "$(dirname "$0")/.."

[ $# -gt 0 ] || { echo "usage: scripts/deps.sh GROUP... (build, test, page)" >&2; exit 2; }
packages=()
for group in "$@"; do
    found=$(awk -v g="$group" '!/^#/ && $2 == g { print $1 }' scripts/packages.txt)
    [ -n "$found" ] || { echo "scripts/deps.sh: no package group \"$group\"" >&2; exit 2; }
    packages+=($found)
done

if ! command -v dpkg-query > /dev/null; then
    echo "scripts/deps.sh: this is not a Debian system; install the equivalents of:" >&2
    echo "  ${packages[*]}" >&2
    exit 1
fi
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -eq 0 ]; then
    as_root=()
elif command -v sudo > /dev/null && sudo -n true 2>/dev/null; then
    as_root=(sudo)
elif command -v sudo > /dev/null && [ -t 0 ]; then
    echo "scripts/deps.sh: sudo will ask for your password to install packages"
    as_root=(sudo)
else
    echo "scripts/deps.sh: these Debian packages are missing: ${missing[*]}" >&2
    echo "scripts/deps.sh: installing them needs root, and sudo is not available. As root, run:" >&2
    echo "  apt-get update && apt-get install -y ${missing[*]}" >&2
    exit 1
fi
echo "scripts/deps.sh: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -q
"${as_root[@]}" apt-get install -y -q "${missing[@]}"
