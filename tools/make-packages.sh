#!/usr/bin/env bash
# Makes the Debian packages, after installing what that needs:
#   tools/make-packages.sh DIRECTORY [VERSION]
# The packages are put into DIRECTORY, and their names are told. VERSION in place of the project's
# own is for tests of upgrades. The build stands in a tree of its own, build-packages/, which is kept
# and may be removed at any time.
#
# RLX_MAINTAINER="NAME <ADDRESS>" in the environment says who answers for the packages.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build-packages
# shellcheck source=tools/setup.sh
source "$root/tools/setup.sh"

if (($# < 1 || $# > 2)); then
  say "usage: tools/make-packages.sh DIRECTORY [VERSION]"
  exit 2
fi
mkdir -p "$1"
directory=$(cd "$1" && pwd)

install_missing "${build_needs[@]}" "${spooler_needs[@]}" "${package_needs[@]}"

# The same source makes the same packages: the time in them is that of the source.
if [[ -z ${SOURCE_DATE_EPOCH-} ]]; then
  SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct 2>/dev/null ||
    stat --format=%Y "$root/CHANGELOG.md")
  export SOURCE_DATE_EPOCH
fi

settings=(
  -D CMAKE_BUILD_TYPE=Release -D CMAKE_INSTALL_PREFIX=/usr
  -D RLX_SPOOLER=ON -D RLX_PACKAGES=ON
)
[[ -z ${RLX_MAINTAINER-} ]] || settings+=(-D "RLX_MAINTAINER=$RLX_MAINTAINER")
# Without one the project's, also in a tree that was told another one before.
if (($# == 2)); then
  settings+=(-D "RLX_PACKAGE_VERSION=$2")
else
  settings+=(-U RLX_PACKAGE_VERSION)
fi

# Modes of what the build makes and installs are the packages'.
umask 022
cmake -S "$root" -B "$build" -G Ninja "${settings[@]}" >&2
cmake --build "$build" --parallel "$(nproc)" >&2
rm -rf "$build/packages"
(cd "$build" && cpack -G DEB >&2)
cp "$build"/packages/*.deb "$directory/"
printf '%s\n' "$build"/packages/*.deb | sed "s|^.*/|$directory/|"
