#!/usr/bin/env bash
# Runs clang-tidy over the sources below src/, tools/, spooler/ and tests/ of the project in the
# current directory:
#   tools/lint.sh TOOL BUILD [CACHE]
# With RLX_LINT_TOOLS=0 in the environment it leaves out tools/, spooler/ and the tests of what
# stands there.
# TOOL is the clang-tidy to use, BUILD a folder with the compile commands of a CMake build with
# clang, and CACHE the folder that remembers what was clean. Without CACHE all is looked at.
#
# What is looked at is a translation unit: a source, or a piece that CMake made of several tests.
#
# The cache holds one small file for each unit that was clean. Its name is a hash of all that the
# tool's verdict depends on: the tool, all .clang-tidy files, the compile command, and path and
# content of every file that the compiler reads for the unit, the system's headers too. Nothing is
# looked up by time or by name, so whatever changes only leads to a name that is not there. Findings
# are not kept: a unit that is not clean is looked at in every run.
set -euo pipefail

(($# == 2 || $# == 3)) || {
  echo "usage: tools/lint.sh TOOL BUILD [CACHE]" >&2
  exit 2
}
export tool=$1 build=$PWD/${2#"$PWD/"} cache=${3-}
export commands=$build/compile_commands.json
with_tools=${RLX_LINT_TOOLS-1}

hash_of() {
  local sum
  sum=$(sha256sum)
  printf '%s' "${sum%% *}"
}

# All .clang-tidy files that may have a say: the project's and those of the folders above it.
config_files() {
  local folder=$PWD
  find . -name .clang-tidy -not -path './build*' | sort
  while [[ -n $folder ]]; do
    folder=${folder%/*}
    [[ ! -f $folder/.clang-tidy ]] || printf '%s\n' "$folder/.clang-tidy"
  done
}

# What the verdict on any unit depends on. Empty, and that means no cache, when it cannot be told.
common_key() {
  local program
  program=$(readlink -e "$(command -v "$tool")") || return 0
  {
    "$tool" --version
    sha256sum "$program" "$0"
    config_files | tr '\n' '\0' | xargs -0 -r sha256sum
  } | hash_of
}

# The units, the pieces first: they take longest. CMake writes one file to a line.
units() {
  sed -n 's/^ *"file": "\(.*\)".*/\1/p' "$commands" | sort -u |
    awk -v root="$PWD/" -v build="$build/" -v with_tools="$with_tools" '
      function is_of_tools(folder) {
        return index($0, folder "tests/tools/") == 1 || index($0, folder "tests/proofs/") == 1 ||
          index($0, folder "tests/spooler/") == 1 || index($0, folder "spooler/") == 1 ||
          index($0, folder "tools/") == 1
      }
      with_tools == 0 && (is_of_tools(root) || is_of_tools(build)) { next }
      index($0, build "tests/") == 1 { print; next }
      index($0, root "src/") == 1 || index($0, root "tools/") == 1 ||
        index($0, root "spooler/") == 1 || index($0, root "tests/") == 1 { other[++count] = $0 }
      END { for (i = 1; i <= count; ++i) print other[i] }'
}

is_piece() {
  [[ $1 == "$build"/* ]]
}

# A piece stands in the build's folder, so it is told which settings hold; and it is made of
# sources that it includes.
options_for() {
  if is_piece "$1"; then
    printf '%s\n' --config-file=tests/.clang-tidy --checks=-bugprone-suspicious-include
  fi
}

# The compile commands of a unit as the shell takes them.
compile_commands_of() {
  awk -v line="\"file\": \"$1\"" '
    /^ *"command": / { command = $0 }
    index($0, line) { print command }' "$commands" |
    sed -e 's/^ *"command": "//' -e 's/",$//' -e 's/\\\(["\\]\)/\1/g'
}

# The files that the compiler reads for one compile command, one a line.
files_read() {
  (cd "$build" && bash -c "$1 -M -MF /dev/stdout -o /dev/null" 2>/dev/null) |
    sed -e '1s/^[^:]*://' -e 's/\\$//' | tr -s ' ' '\n' | grep .
}

# The files of all of a unit's compile commands, to standard output. Fails when they cannot be told.
files_of() {
  local command
  while IFS= read -r command; do
    files_read "$command" || return 1
  done < <(compile_commands_of "$1")
}

# The name of a unit in the cache; fails when it has none: the compiler cannot tell what it reads, or
# a file cannot be read.
key_of() {
  local unit=$1 files=$2 sums
  sums=$(cd "$build" && xargs -d '\n' sha256sum <<<"$files" 2>/dev/null) || return 1
  { printf '%s\n' "$common" "$unit" && compile_commands_of "$unit" && printf '%s\n' "$sums"; } |
    hash_of
}

# An entry counts only when it says again what its name says: half of one, or another's, does not.
was_clean() {
  [[ -f $cache/$1 && $(tr -d '\0' <"$cache/$1") == "clean $1" ]] 2>/dev/null
}

# Keeps that a unit is clean. The entry is there as a whole or not at all; without it the next run
# only takes longer.
keep_clean() {
  local entry
  entry=$(mktemp "$cache/new.XXXXXX") || return 0
  if ! { printf 'clean %s\n' "$1" >"$entry" && mv -fT "$entry" "$cache/$1"; }; then
    rm -f "$entry"
  fi
} 2>/dev/null

# Looks at a unit and tells what was found. The tool has nothing to say about a clean unit but a
# count of what it did not show; a setting that it cannot read is told beside a status of 0.
look_at() {
  local unit=$1 report status=0 options
  mapfile -t options < <(options_for "$unit")
  report=$("$tool" -p "$build" --quiet "${options[@]}" "$unit" 2>&1) || status=$?
  report=$(grep -v '^[0-9]* warnings\? generated\.$' <<<"$report") || true
  [[ -z $report ]] || printf '%s\n' "$report"
  [[ $status == 0 && -z $report ]]
}

# Looks at a unit unless it was clean before. Prints the findings, and to $seen one line if it looked.
lint_one() {
  local unit=$1 files='' key=''
  if [[ -n $cache ]] && files=$(files_of "$unit"); then
    key=$(key_of "$unit" "$files") || key=''
  fi
  if [[ -n $key ]] && was_clean "$key"; then
    touch -c "$cache/$key" || true
    return 0
  fi
  printf '%s\n' "$unit" >>"$seen"
  look_at "$unit" || return 1
  # What was changed meanwhile may not have been looked at.
  if [[ -n $key && $(key_of "$unit" "$files") == "$key" ]]; then
    keep_clean "$key"
  fi
}

all_sources() {
  if [[ $with_tools == 1 ]]; then
    find src tools spooler tests -name '*.cpp'
  else
    find src tests -name '*.cpp' -not -path 'tests/tools/*' -not -path 'tests/proofs/*' \
      -not -path 'tests/spooler/*'
  fi
}

# Fails when a source is in no unit: it would never be looked at.
require_all_sources() {
  local all=$1 source missing=0 covered
  covered=$(while IFS= read -r unit; do
    printf '%s\n' "$unit"
    ! is_piece "$unit" || sed -n 's/^#include "\(.*\)"$/\1/p' "$unit"
  done <<<"$all")
  while IFS= read -r source; do
    if ! grep -qxF "$PWD/$source" <<<"$covered"; then
      printf '%s: in no compile command, so not looked at\n' "$source"
      missing=1
    fi
  done < <(all_sources | sort)
  return "$missing"
}

# A cache that cannot be had is none. Entries that no run asked for in a month are of no use.
prepare_cache() {
  [[ -n $cache ]] || return 0
  if ! { mkdir -p "$cache" 2>/dev/null && common=$(common_key) && [[ -n $common ]]; }; then
    cache=
    return 0
  fi
  find "$cache" -type f -mtime +30 -delete || true
}

main() {
  local all status=0
  all=$(units)
  require_all_sources "$all" || status=1
  export common=''
  prepare_cache
  seen=$(mktemp)
  export seen
  export -f lint_one look_at keep_clean was_clean key_of files_of files_read compile_commands_of \
    options_for is_piece hash_of
  # shellcheck disable=SC2016  # the inner shell expands it
  xargs -r -d '\n' -P "$(nproc)" -I{} bash -c 'set -uo pipefail; lint_one "$1"' lint {} <<<"$all" ||
    status=1
  printf '%d of %d units looked at, the others were clean before\n' \
    "$(wc -l <"$seen")" "$(wc -l <<<"$all")"
  rm -f "$seen"
  return "$status"
}

main
