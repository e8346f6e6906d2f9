#!/usr/bin/env bash
# install-deps.sh USE...: installs the packages of deps/debian-packages listed for the given uses
# (build, test, bench, fuzz) that are not installed yet. Does nothing when all are present.
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
list=$root/deps/debian-packages
[ $# -gt 0 ] || set -- build
missing=()
while read -r package use _; do
    case $package in ''|'#'*) continue ;; esac
    for wanted in "$@"; do
        [ "$use" = "$wanted" ] || continue
        if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
            missing+=("$package")
        fi
    done
done < "$list"
[ ${#missing[@]} -eq 0 ] && exit 0
echo "install-deps: installing ${missing[*]}"
if [ "$(id -u)" -ne 0 ]; then
    sudo=sudo
    command -v sudo >/dev/null || { echo "install-deps: run as root to install ${missing[*]}" >&2; exit 1; }
else
    sudo=
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
