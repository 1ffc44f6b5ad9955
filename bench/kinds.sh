#!/usr/bin/env bash
# Measures the filter on every kind of job (bench/sample_jobs.h) against a bare getc/putc loop and,
# if given, against an earlier build: side by side, pipe in, pipe out, medians. Prints Markdown.
#   bench/kinds.sh                  this tree, a fresh Release build
#   bench/kinds.sh --before FILE    and another build of the filter
#   bench/kinds.sh --program FILE   that program instead of a fresh build
#   bench/kinds.sh --quick          small jobs and few runs: whether it works, not what is true
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/setup.sh
source "$root/tools/setup.sh"
# shellcheck source=bench/build_tools.sh
source "$root/bench/build_tools.sh"

runs=9
bytes=$((32 << 20))
program=
before=

usage() {
  say "usage: bench/kinds.sh [--quick] [--before FILE] [--program FILE]"
  exit 2
}

while (($# > 0)); do
  case $1 in
    --quick)
      runs=3 bytes=$((2 << 20))
      shift
      ;;
    --before | --program)
      (($# > 1)) || usage
      declare "${1#--}=$2"
      shift 2
      ;;
    *) usage ;;
  esac
done

# The jobs: the kind, then the filter's options.
jobs=(
  plain mixed double kana accents cyrillic cut shifted invalid tabs
  sequences bare_sequences positions states
  short_lines endless_lines one_line_pages
  "plain -L 60" "plain -L 66 -l 6" "mixed -L 60" "short_lines -L 66 -l 6" "endless_lines -L 60"
  "plain -p FORMS -n BENCH" "mixed -p FORMS -n BENCH" "short_lines -p FORMS -n BENCH"
  "one_line_pages -p FORMS -n BENCH"
  "framed -d" "framed_mixed -d"
)

# One line of the table.
measure_job() {
  local job options out others=()
  read -ra job <<<"$1"
  options=("${job[@]:1}")
  options=("${options[@]/FORMS/$work/forms}")
  [[ -z $before ]] || others=(-- before "$before" "${options[@]}")
  out=$("$tools/generate_job" "${job[0]}" "$bytes" | "$program" "${options[@]}" | wc -c)
  "$tools/measure" "$runs" 1 -- "$tools/generate_job" "${job[0]}" "$bytes" \
    -- filter "$program" "${options[@]}" -- G "$tools/copy_loop" "${others[@]}" |
    awk -F'\t' -v job="$1" -v in_bytes="$bytes" -v out_bytes="$out" '
      { seconds[$1] = $2 }
      END {
        copied = seconds["G"] * (1 + out_bytes / in_bytes) / 2
        printf "| %s | %.2f | %.2f | %.1f |", job, out_bytes / in_bytes,
          seconds["filter"] / in_bytes * 1e9, copied / seconds["filter"]
        if ("before" in seconds) printf " %.2f |", seconds["before"] / seconds["filter"]
        print ""
      }'
}

prepare_bench
program=${program:-$build/zqeuctorlx}
echo "$(describe_machine); jobs of $((bytes >> 20)) MiB, medians of $runs runs."
echo
echo "| job | bytes out for one in | ns a byte | times as fast as G on what goes in and out |$(
  [[ -z $before ]] || echo ' times as fast as before |')"
echo "| --- | --- | --- | --- |$([[ -z $before ]] || echo ' --- |')"
for job in "${jobs[@]}"; do
  measure_job "$job"
done
