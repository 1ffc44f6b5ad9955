#!/usr/bin/env bash
# Looks for objects of the program that can change while it runs: mutable_objects.sh FILE...
# FILE is an object file or a library of them. All that changes stands in one place, the filter's
# storage; anything else in writable memory is an error. (A constant table gets there, too, when the
# compiler deduces its type as std::array from a list: std::to_array keeps it where it belongs.)
# Constants that hold addresses are relocated when the program starts and read-only from then on;
# they are listed only. Needs objdump, which comes with the compiler; $OBJDUMP names another one.
set -euo pipefail

storage='(anonymous namespace)::filter_storage'

# symbols FILE...: SECTION, SIZE in hexadecimal and NAME of each, separated by tabs. objdump gives
# "ADDRESS FLAGS SECTION<tab>SIZE NAME"; the flags are seven columns behind one blank, with "d" for
# what only names a section or a file.
symbols() {
  "${OBJDUMP:-objdump}" --syms --demangle "$@" |
    sed -nE 's/^[0-9a-f]+ .....[^d]. ([^ \t]+)\t([0-9a-f]+) +(.*)$/\1\t\2\t\3/p'
}

all=$(symbols "$@")
writable=$(grep -E $'^([.](data|bss|tdata|tbss)[.\t]|[*]COM[*])' <<<"$all" || true)
relocated=$(grep -E '^[.]data[.]rel[.]ro' <<<"$writable" || true)
writable=$(grep -vE '^[.]data[.]rel[.]ro' <<<"$writable" || true)
others=$(grep -vF -- $'\t'"$storage" <<<"$writable" || true)

# list TITLE LINES
list() {
  echo "$1:"
  while IFS=$'\t' read -r section size name; do
    [[ -z $section ]] || printf '  %7d bytes in %-20s %s\n' "$((16#$size))" "$section" "$name"
  done <<<"$2"
}

list "relocated at the start, then read-only" "$relocated"
list "writable" "$writable"
if [[ $(grep -cF -- $'\t'"$storage" <<<"$writable") != 1 ]]; then
  echo "not found, or not once: $storage" >&2
  exit 1
fi
if [[ -n $others ]]; then
  list "outside the filter's storage" "$others" >&2
  exit 1
fi
