#!/usr/bin/env bash
# Builds all there is, the parts for spoolers too, into build/, after installing what that needs:
#   tools/build-all.sh
# The programs stand in build/ under the names under which they are installed.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/setup.sh
source "$root/tools/setup.sh"

install_missing "${build_needs[@]}" "${spooler_needs[@]}"
# A tree that another generator has made keeps it.
generator=()
[[ -e $root/build/CMakeCache.txt ]] || generator=(-G Ninja)
cmake -S "$root" -B "$root/build" "${generator[@]}" -D RLX_SPOOLER=ON >/dev/null
cmake --build "$root/build" --parallel "$(nproc)"
