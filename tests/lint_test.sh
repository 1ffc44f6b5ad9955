#!/usr/bin/env bash
# Shows that the cache of tools/lint.sh can cost time only and never hides a finding, on a small
# project of its own: tests/lint_test.sh TOOL
set -euo pipefail

tool=$(command -v "${1:?usage: tests/lint_test.sh TOOL}")
lint=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/tools/lint.sh
project=$(mktemp -d)
trap 'rm -rf "$project"' EXIT
cd "$project"

fail() {
  printf 'lint_test: %s\n' "$*" >&2
  printf '%s\n' "$report" >&2
  exit 1
}

# The header of the project; only `nullptr` in it is clean.
write_header() {
  printf '#pragma once\ninline int* place() {\n  return %s;\n}\n' "$1" >src/place.h
}

# The compile commands as CMake writes them, with the given options.
write_commands() {
  local options=$1 source separator='['
  for source in "$project"/src/{one,two}.cpp "$project"/build/tests/piece.cxx; do
    printf '%s\n{\n  "directory": "%s",\n' "$separator" "$project/build"
    printf '  "command": "clang++ %s -DTEXT=\\"x\\\\\\"y\\" -I%s -o x.o -c %s",\n' \
      "$options" "$project/src" "$source"
    printf '  "file": "%s"\n}' "$source"
    separator=','
  done >build/compile_commands.json
  printf '\n]\n' >>build/compile_commands.json
}

write_project() {
  mkdir -p src tools tests/unit build/tests
  printf 'Checks: "-*,modernize-use-nullptr"\nWarningsAsErrors: "*"\nHeaderFilterRegex: "."\n' >.clang-tidy
  printf 'InheritParentConfig: true\n' >tests/.clang-tidy
  write_header nullptr
  printf '#include "place.h"\n' >src/one.cpp
  printf 'int two() { return 2; }\n' >src/two.cpp
  printf 'int* of_a_test() { return nullptr; }\n' >tests/unit/some_test.cpp
  printf '#include "%s"\n' "$project/tests/unit/some_test.cpp" >build/tests/piece.cxx
  write_commands -std=c++20
}

# Runs the lint and compares what became of it: expect STATUS UNITS_LOOKED_AT WHEN
expect() {
  local wanted=$1 looked_at=$2 when=$3 status=0
  report=$("$lint" "$tool" build cache 2>&1) || status=$?
  [[ $status == "$wanted" ]] || fail "$when: status $status instead of $wanted"
  grep -q "^$looked_at of 3 units looked at" <<<"$report" ||
    fail "$when: not $looked_at units looked at"
  [[ $wanted == 0 ]] || grep -q 'error: ' <<<"$report" || fail "$when: no finding shown"
}

# Overwrites all entries, each with what the given command makes of it.
damage_entries() {
  local entry
  for entry in cache/*; do
    "$@" <"$entry" >damaged
    cp damaged "$entry"
  done
}

swap_entries() {
  local entries=(cache/*)
  mv "${entries[0]}" other
  mv "${entries[1]}" "${entries[0]}"
  mv other "${entries[1]}"
}

report=
write_project
expect 0 3 "the first run"
expect 0 0 "nothing changed"

write_header '  nullptr'
expect 0 1 "a header changed"
write_header 0
expect 1 1 "a finding in a header"
expect 1 1 "the same finding again"
write_header nullptr
expect 0 0 "the header as it was"

printf 'int* two() { return 0; }\n' >src/two.cpp
expect 1 1 "a finding in a source"
expect 1 1 "the same finding in the source again"
printf 'int two() { return 3; }\n' >src/two.cpp
expect 0 1 "a source mended"

printf 'int* of_a_test() { return 0; }\n' >tests/unit/some_test.cpp
expect 1 1 "a finding in a test of a piece"
expect 1 1 "the same finding in the test again"
printf 'int* of_a_test() { return nullptr; }\n' >tests/unit/some_test.cpp
expect 0 0 "the test as it was"

printf 'CheckOptions: []\n' >>.clang-tidy
expect 0 3 "the settings changed"
printf 'Checks: "-misc-*"\n' >>tests/.clang-tidy
expect 0 3 "the settings of the tests changed"
write_commands '-std=c++20 -DNDEBUG'
expect 0 3 "the compile commands changed"

printf '#!/bin/sh\nexec %s "$@"\n' "$tool" >other_tool
chmod +x other_tool
kept_tool=$tool
tool=$project/other_tool
expect 0 3 "another tool"
tool=$kept_tool
expect 0 0 "the tool as it was"

rm -rf cache
expect 0 3 "the cache removed"
damage_entries head -c 10
expect 0 3 "entries cut short"
damage_entries true
expect 0 3 "entries emptied"
damage_entries head -c 71 /dev/zero
expect 0 3 "entries of zeros"
rm -rf cache
expect 0 3 "the cache removed again"
swap_entries
expect 0 2 "entries that stand for others"
expect 0 0 "damaged entries replaced"
damage_entries tr c d
write_header 0
expect 1 3 "damaged entries and a finding"
write_header nullptr
expect 0 1 "the finding mended"
rm -rf cache
printf 'no folder\n' >cache
expect 0 3 "a file in the cache's place"
expect 0 3 "still a file in the cache's place"
rm cache
expect 0 3 "the file removed"

printf 'Checks: [\n' >.clang-tidy
expect 1 3 "settings that cannot be read"
expect 1 3 "settings that cannot be read, again"
write_project
printf 'int lost;\n' >src/lost.cpp
report=$("$lint" "$tool" build cache 2>&1) && fail "a source that no unit has passes"
grep -q '^src/lost.cpp: in no compile command' <<<"$report" || fail "a lost source is not told"

echo "lint_test: all as expected"
