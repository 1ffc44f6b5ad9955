#!/usr/bin/env bash
# Brings LPRng here without installing it: the packages of LPRng's and CUPS's clients conflict.
#   tests/spooler/lprng/unpack.sh DIRECTORY
# unpacks the archive's lprng into DIRECTORY, if that was not done before. Its programs look for
# nothing but /etc/lprng; the tests give them an /etc of their own.
set -euo pipefail

directory=$1
daemon=$directory/usr/sbin/lpd

unpack() {
  local scratch
  scratch=$(mktemp -d)
  # shellcheck disable=SC2064  # the folder of now
  trap "rm -rf '$scratch'" RETURN
  chmod 755 "$scratch"
  (cd "$scratch" && apt-get -q -o APT::Sandbox::User=root download lprng >&2) || return
  mkdir -p "$directory"
  dpkg-deb -x "$scratch"/lprng_*.deb "$directory"
}

[[ -x $daemon ]] || unpack || {
  echo "lprng cannot be had from the archive; is apt's list of packages there (apt-get update)?" >&2
  exit 1
}
missing=$(ldd "$daemon" | sed -n 's/^[[:space:]]*\(.*\) => not found$/\1/p')
[[ -z $missing ]] || {
  echo "lpd lacks libraries (libkrb5-3 has them):" "$missing" >&2
  exit 1
}
