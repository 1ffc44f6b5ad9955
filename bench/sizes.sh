#!/usr/bin/env bash
# Measures whether time stays in proportion and memory constant, whatever the size of a job: each
# kind at three sizes, the filter beside a bare getc/putc loop (G) and cat (C) at the smallest one,
# pipe in, pipe out. Prints Markdown.
#   bench/sizes.sh                  jobs of 256 MiB, 1 GiB and 4 GiB, parameters of 1, 10, 100 MB,
#                                   nothing but FF to 1 GiB; about ten minutes
#   bench/sizes.sh --quick          small jobs: whether it works, not what is true
#   bench/sizes.sh --instructions   counts the filter's instructions (with valgrind) instead, at 4
#                                   and at 64 MiB: they say the same on any load; some minutes
#   bench/sizes.sh --only NAME      one of the rows (several times: several)
#   bench/sizes.sh --program FILE   that program instead of a fresh Release build
# Jobs are made on the fly (bench/tools/generate_job.cpp) and never stored. That every byte comes
# out in its place is the affair of tests/sizes/.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/setup.sh
source "$root/tools/setup.sh"
# shellcheck source=bench/build_tools.sh
source "$root/bench/build_tools.sh"

mib=$((1 << 20))
sizes=($((256 * mib)) $((1024 * mib)) $((4096 * mib)))
parameter_sizes=(1000000 10000000 100000000)
# Every FF is a page, so 1 GiB of them makes 43 GiB.
form_feed_sizes=($((64 * mib)) $((256 * mib)) $((1024 * mib)))
# Runs of each size, and of jobs of a few megabytes.
runs=(5 3 1)
parameter_runs=(25 15 9)
counted_sizes=($((4 * mib)) $((64 * mib)))
counted_form_feed_sizes=($((mib / 4)) $((4 * mib)))
counted_parameter_sizes=(1000000 100000000)
instructions=
program=
only=()

usage() {
  say "usage: bench/sizes.sh [--quick | --instructions] [--only NAME]... [--program FILE]"
  exit 2
}

while (($# > 0)); do
  case $1 in
    --quick)
      sizes=($((2 * mib)) $((4 * mib)) $((8 * mib)))
      form_feed_sizes=($((mib)) $((2 * mib)) $((4 * mib)))
      parameter_sizes=(10000 100000 1000000)
      runs=(1 1 1) parameter_runs=(1 1 1)
      shift
      ;;
    --instructions)
      instructions=yes
      shift
      ;;
    --only)
      (($# > 1)) || usage
      only+=("$2")
      shift 2
      ;;
    --program)
      (($# > 1)) || usage
      program=$2
      shift 2
      ;;
    *) usage ;;
  esac
done

# The rows: a name, the kind of job, the filter's options.
rows=(
  "text|plain"
  "mixed text|mixed"
  "sequences|sequences"
  "one line|one_line"
  "LF only|line_feeds"
  "LF only, -L 66|line_feeds|-L 66"
  "LF only, form|line_feeds|-p FORMS -n BENCH"
  "text, form|plain|-p FORMS -n BENCH"
  "ESC only|escapes"
  "framed text|framed|-d"
  "counted data|counted_data"
  "parameter|parameter"
  "FF only|form_feeds"
  "FF only, form|form_feeds|-p FORMS -n BENCH"
)

is_wanted() {
  local name
  ((${#only[@]} > 0)) || return 0
  for name in "${only[@]}"; do
    [[ $name != "$1" ]] || return 0
  done
  return 1
}

# A line for each size: bytes, then what `measure` says of the filter; then those of G and C.
measure_row() {
  local kind=$1 options=("${@:2}") at row_sizes=("${sizes[@]}") row_runs=("${runs[@]}")
  if [[ $kind == parameter ]]; then
    row_sizes=("${parameter_sizes[@]}") row_runs=("${parameter_runs[@]}")
  elif [[ $kind == form_feeds ]]; then
    row_sizes=("${form_feed_sizes[@]}") row_runs=(1 1 1)
  fi
  for at in 0 1 2; do
    "$tools/measure" "${row_runs[at]}" 1 -- "$tools/generate_job" "$kind" "${row_sizes[at]}" \
      -- filter "$program" "${options[@]}" | sed "s/^/${row_sizes[at]}\t/"
  done
  "$tools/measure" "${row_runs[0]}" 1 -- "$tools/generate_job" "$kind" "${row_sizes[0]}" \
    -- G "$tools/copy_loop" -- C cat | sed "s/^/${row_sizes[0]}\t/"
}

print_row() {
  awk -F'\t' -v name="$1" '
    $2 == "filter" { ++n; bytes[n] = $1; wall[n] = $3; processor[n] = $4; memory[n] = $5; next }
    { other[$2] = $3 }
    END {
      growth = bytes[3] / bytes[1]
      printf "| %s | %.0f to %.0f | %.3f | %.3f | %.3f | %.0f | %.3f ", name, bytes[1] / 1e6,
        bytes[3] / 1e6, wall[1], wall[2], wall[3], bytes[3] / 1048576 / wall[3], processor[3]
      printf "| %.2f | %.2f | %d | %d | %.1f | %.2f |\n",
        wall[3] / wall[1] / growth, processor[3] / processor[1] / growth, memory[1], memory[3],
        other["G"] / wall[1], other["C"] / wall[1]
    }'
}

# The instructions that the filter takes for a job of that size.
count_instructions() {
  local kind=$1 bytes=$2 options=("${@:3}")
  "$tools/generate_job" "$kind" "$bytes" |
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "$program" "${options[@]}" \
      2>&1 >/dev/null |
    sed -n 's/.*Collected : //p'
}

count_row() {
  local name=$1 kind=$2 options=("${@:3}") row_sizes=("${counted_sizes[@]}")
  case $kind in
    form_feeds) row_sizes=("${counted_form_feed_sizes[@]}") ;;
    parameter) row_sizes=("${counted_parameter_sizes[@]}") ;;
  esac
  awk -v name="$name" -v small="${row_sizes[0]}" -v large="${row_sizes[1]}" \
    -v small_count="$(count_instructions "$kind" "${row_sizes[0]}" "${options[@]}")" \
    -v large_count="$(count_instructions "$kind" "${row_sizes[1]}" "${options[@]}")" \
    'BEGIN {
      printf "| %s | %.1f to %.1f | %.2f | %.2f | %.3f |\n", name, small / 1e6, large / 1e6,
        small_count / small, large_count / large, large_count / small_count / (large / small)
    }'
}

print_heads() {
  if [[ -n $instructions ]]; then
    echo "| job | MB | small: instructions a byte | large: instructions a byte" \
      "| growth over that of the size |"
    echo "| --- | --- | --- | --- | --- |"
  else
    echo "| job | MB | small: s | middle: s | large: s | large: MiB/s | large: CPU s" \
      "| time: growth over that of the size | the same in CPU time | small: memory, KiB" \
      "| large: memory, KiB | small: G, times | small: C, times |"
    echo "| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |"
  fi
}

# shellcheck disable=SC2154  # valgrind_needs: of tools/setup.sh
[[ -z $instructions ]] || install_missing "${valgrind_needs[@]}"
prepare_bench
program=${program:-$build/zqeuctorlx}
describe_machine
echo
print_heads
for row in "${rows[@]}"; do
  IFS='|' read -r name kind words <<<"$row"
  is_wanted "$name" || continue
  say "$name ..."
  read -ra options <<<"${words//FORMS/$work/forms}" || true
  if [[ -n $instructions ]]; then
    count_row "$name" "$kind" "${options[@]}"
  else
    measure_row "$kind" "${options[@]}" | print_row "$name"
  fi
done
