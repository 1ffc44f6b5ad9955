# Common to run.sh and test.sh, which source it: what a machine must have, and getting it there.
# Everything it says goes to standard error: standard output belongs to the filter.
# shellcheck shell=bash

say() {
  printf '%s\n' "$*" >&2
}

# What a build needs, as TOOL:PACKAGE, the packages being Debian's and Ubuntu's. A header stands for
# its library.
# shellcheck disable=SC2034  # used by run.sh and test.sh
build_needs=(
  g++:g++ cmake:cmake ninja:ninja-build
  pkg-config:pkg-config
  /usr/include/nlohmann/json.hpp:nlohmann-json3-dev
  /usr/include/cairo/cairo.h:libcairo2-dev
  /usr/include/pango-1.0/pango/pango.h:libpango1.0-dev
)

# What the parts for spoolers need besides.
# shellcheck disable=SC2034  # used by build-all.sh, make-packages.sh and test.sh
spooler_needs=(
  /usr/include/cups/cups.h:libcups2-dev
  ppdc:cups-ppdc
  /usr/include/pappl/pappl.h:libpappl-dev
)

# What Debian packages are made with.
# shellcheck disable=SC2034  # used by make-packages.sh
package_needs=(
  dpkg-shlibdeps:dpkg-dev
  file:file
  strip:binutils
  gzip:gzip
)

# What the tests need besides: first for `./test.sh quick`, then for all of it.
# shellcheck disable=SC2034  # used by test.sh
quick_test_needs=(
  python3:python3
  /usr/include/gtest/gtest.h:libgtest-dev
  pdftotext:poppler-utils
  /usr/share/fonts/opentype/ipafont-gothic/ipag.ttf:fonts-ipafont
)
# shellcheck disable=SC2034
test_needs=(
  "${quick_test_needs[@]}"
  clang++:clang
  mandoc:mandoc
  man:man-db
  groff:groff
  /usr/include/benchmark/benchmark.h:libbenchmark-dev
)

# What the tests of the packages need besides.
# shellcheck disable=SC2034  # used by tests/packages/run
package_test_needs=(
  /usr/sbin/debootstrap:debootstrap
  lintian:lintian
)

# What the tests for other machines need besides (tests/machines/).
# shellcheck disable=SC2034  # used by tests/machines/run
machine_test_needs=(
  clang++:clang
  /usr/src/googletest/CMakeLists.txt:googletest
  qemu-s390x-static:qemu-user-static
  aarch64-linux-gnu-g++:g++-aarch64-linux-gnu
  arm-linux-gnueabihf-g++:g++-arm-linux-gnueabihf
  s390x-linux-gnu-g++:g++-s390x-linux-gnu
  musl-gcc:musl-tools
)

# What the tests with real spoolers need besides. The spoolers of the machine itself are left alone.
# shellcheck disable=SC2034  # used by test.sh
spooler_test_needs=(
  cupsd:cups-daemon
  lpadmin:cups-client
  ipptool:cups-ipp-utils
  /usr/lib/cups/backend/socket:cups
  /usr/share/cups/mime/cupsfilters.convs:cups-filters
)

# What the tests of the printer application's web pages need besides.
# shellcheck disable=SC2034  # used by test.sh
web_test_needs=(
  /usr/bin/chromium:chromium
  chromedriver:chromium-driver
  curl-config:libcurl4-openssl-dev
)

# What looks at the programs while they run.
# shellcheck disable=SC2034  # used by test.sh
valgrind_needs=(valgrind:valgrind python3:python3)

# What changes the program and looks whether the tests see it, and what searches for failing jobs.
# shellcheck disable=SC2034  # used by tests/mutation/run
mutation_needs=(/usr/lib/python3/dist-packages/clang/cindex.py:python3-clang-14 ccache:ccache)
# shellcheck disable=SC2034  # used by fuzz/search and fuzz/whole/run
search_needs=(clang++:clang afl-fuzz:afl++)

# What reads the sources besides.
# shellcheck disable=SC2034  # used by test.sh
cppcheck_needs=(cppcheck:cppcheck)

# Format, lint and cppcheck are tied to one version: another one asks for other changes.
# shellcheck disable=SC2034
clang_tools_version=14
# shellcheck disable=SC2034
cppcheck_version=2.10

# True when a tool (a command, or a file given with its path) is there.
have() {
  if [[ $1 == /* ]]; then
    [[ -e $1 ]]
  else
    command -v "$1" >/dev/null 2>&1
  fi
}

# Prints those of the given needs that are missing, one a line.
missing_needs() {
  local need
  for need in "$@"; do
    have "${need%%:*}" || printf '%s\n' "$need"
  done
}

as_root() {
  if [[ $(id -u) == 0 ]]; then
    "$@"
  elif have sudo; then
    sudo "$@"
  else
    say "This needs root's rights, and there is no sudo: $*"
    return 1
  fi
}

# apt's lists are fetched once a run.
apt_is_updated=
apt_update_once() {
  if [[ -z $apt_is_updated ]]; then
    as_root apt-get update >&2 || say "apt-get update failed; going on with the lists that are there."
    apt_is_updated=yes
  fi
}

# True when the machine's archive has a package.
package_exists() {
  have apt-cache || return 1
  apt_update_once
  apt-cache show "$1" >/dev/null 2>&1
}

# Installs the packages of the given needs where they are missing.
install_missing() {
  local missing packages
  mapfile -t missing < <(missing_needs "$@")
  ((${#missing[@]} > 0)) || return 0
  packages=("${missing[@]#*:}")
  if ! have apt-get; then
    say "Missing here: ${missing[*]%%:*}"
    say "Please install them; Debian's packages of them are called: ${packages[*]}"
    return 1
  fi
  say "Installing ${packages[*]} ..."
  apt_update_once
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${packages[@]}" >&2 || return 1
  mapfile -t missing < <(missing_needs "$@")
  if ((${#missing[@]} > 0)); then
    say "Still missing after the installation: ${missing[*]%%:*}"
    return 1
  fi
}

# Proof sheets show Japanese when a font has it, any font; without one they can still be drawn.
install_japanese_font() {
  if have fc-list && [[ -n $(fc-list :lang=ja family) ]]; then
    return 0
  fi
  if have apt-get; then
    install_missing /usr/share/fonts/opentype/ipafont-gothic/ipag.ttf:fonts-ipafont-gothic &&
      return 0
  fi
  say "No font here has Japanese: boxes stand for it on proof sheets."
}
