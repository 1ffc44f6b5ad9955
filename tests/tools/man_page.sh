#!/usr/bin/env bash
# Runs the examples of a manual page as they stand in it (tests/packages/man_pages.sh looks whether
# pages are well-formed):
#   tests/tools/man_page.sh PAGE PROGRAM
# In a display of the page "$ " begins a command, and what stands below it is what it prints; of a
# command with nothing below it only the exit status is looked at. The files that the commands name
# are made here. Run it in the project's directory.
set -euo pipefail

page=$(realpath "$1")
program=$(realpath "$2")
project=$PWD
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

mkdir -p "$scratch/bin" "$scratch/run/forms/fcbe"
ln -s "$program" "$scratch/bin/"
cd "$scratch/run"
cp "$project/examples/forms/fcbe/INVOICE" forms/fcbe/
printf '# label\nprint 300\n' >forms/fcbe/LABEL
printf '*COMMON\nFCBPRINT:2\n' >wrmtkenv

failures=0
examples=0
fail() {
  printf '%s\n' "$@" >&2
  failures=$((failures + 1))
}

# check COMMAND EXPECTED: runs one example. Blanks at the ends of lines do not count.
check() {
  local command=$1 expected=$2 printed status=0
  examples=$((examples + 1))
  printed=$(PATH=$scratch/bin:$PATH LC_ALL=C bash -c "$command" 2>&1) || status=$?
  # shellcheck disable=SC2001  # each line's end, not the text's
  printed=$(sed 's/ *$//' <<<"$printed")
  if [[ -n $expected && $printed != "$expected" ]]; then
    fail "example: $command" "printed:" "$printed" "the page says:" "$expected"
  elif [[ -z $expected && $status != 0 ]]; then
    fail "example: $command" "status $status" "$printed"
  fi
}

run_examples() {
  local line command='' expected=''
  while IFS= read -r line; do
    if [[ $line == '$ '* || $line == .Ed ]]; then
      [[ -z $command ]] || check "$command" "$expected"
      command=${line#'$ '}
      expected=''
      [[ $line != .Ed ]] || command=''
    else
      expected+=${expected:+$'\n'}$line
    fi
  done < <(sed -n '/^\.Bd/,/^\.Ed/{/^\.Bd/d;p}' "$page")
}

run_examples
((examples > 0)) || fail "no examples found"

((failures == 0)) && echo "$examples examples run: $page"
