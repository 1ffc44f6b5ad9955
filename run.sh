#!/usr/bin/env bash
# Builds the filter, after installing what the build needs, and
#   ./run.sh                          prints the sample jobs of examples/ into out/, and draws the
#                                     sheets of one of them
#   ./run.sh OPTIONS < job > output   runs the filter itself; without options: ./run.sh -- < job
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$root/build
program=$build/zqeuctorlx
# shellcheck source=tools/setup.sh
source "$root/tools/setup.sh"
# shellcheck source=tools/describe-output.sh
source "$root/tools/describe-output.sh"

# Makes the program new where a source is newer. Silent when that works and nothing is new.
build_filter() {
  local log
  [[ -x $program ]] || say "Building the filter ..."
  log=$(mktemp)
  if ! build_quietly >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    say "The build failed."
    return 1
  fi
  rm -f "$log"
}

build_quietly() {
  # A tree that another generator has made is kept as it is.
  if [[ ! -e $build/CMakeCache.txt ]]; then
    cmake -S "$root" -B "$build" -G Ninja || return 1
  fi
  cmake --build "$build" --parallel
}

# Prints one job of examples/ into out/: print_sample JOB OUTPUT [OPTIONS...]
print_sample() {
  local job=$1 output=$2
  shift 2
  mkdir -p "$root/out"
  "$program" "$@" <"$root/examples/$job" >"$root/out/$output"
  echo
  echo "examples/$job, printed with: ${*:-no options}"
  describe_output "$root/out/$output"
}

print_samples() {
  cd "$root"
  print_sample report.txt report.rlx
  print_sample invoice.txt invoice.rlx -p examples/forms -n INVOICE
  "$build/rlxproof" -o out/invoice.pdf --filter-options '-p examples/forms -n INVOICE' \
    examples/invoice.txt
  echo
  echo "The sheets of the invoice: $root/out/invoice.pdf"
}

# A built tree needs no set-up, whatever is installed now.
if [[ ! -x $program ]] || [[ -n $(missing_needs "${build_needs[@]}") ]]; then
  install_missing "${build_needs[@]}"
  install_japanese_font
fi
build_filter
if (($# > 0)); then
  exec "$program" "$@"
fi
print_samples
