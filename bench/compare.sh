#!/usr/bin/env bash
# Measures the filter against a bare getc/putc copy loop (G), cat (C), fold and sed: side by side on
# the same jobs, pipe in, pipe out, medians. Prints the goals and what was measured as Markdown.
#   bench/compare.sh                  all of it: jobs of 64 MiB and 1 GiB; some minutes
#   bench/compare.sh --quick          small jobs and few runs: whether it works, not what is true
#   bench/compare.sh --save FILE      keeps the ratios in FILE too
#   bench/compare.sh --against FILE   shows them beside the ratios that an earlier run has kept
#   bench/compare.sh --program FILE   measures that program instead of a fresh Release build
# Jobs are made on the fly (bench/tools/generate_job.cpp) and never stored.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/setup.sh
source "$root/tools/setup.sh"
# shellcheck source=bench/build_tools.sh
source "$root/bench/build_tools.sh"

runs=7
growth_runs=5
starts=300
small=$((64 << 20))
large=$((1 << 30))
program=
save=
against=

usage() {
  say "usage: bench/compare.sh [--quick] [--save FILE] [--against FILE] [--program FILE]"
  exit 2
}

while (($# > 0)); do
  case $1 in
    --quick)
      runs=3 growth_runs=1 starts=50 small=$((4 << 20)) large=$((32 << 20))
      shift
      ;;
    --save | --against | --program)
      (($# > 1)) || usage
      declare "${1#--}=$2"
      shift 2
      ;;
    *) usage ;;
  esac
done
if [[ -n $against && ! -r $against ]]; then
  say "Cannot read $against"
  exit 1
fi

# The jobs: the name, what generate_job makes for it, the filter's options.
job_names=(plain form mixed sequences framed invalid)
job_kind() {
  if [[ $1 == form ]]; then echo plain; else echo "$1"; fi
}
job_options() {
  case $1 in
    form) echo "-p $work/forms -n BENCH" ;;
    framed) echo -d ;;
  esac
}

# Appends to $work/raw, a line each: job, bytes, program, wall-clock seconds, processor seconds,
# largest resident set in KiB.
note() {
  awk -v OFS='\t' -v job="$1" -v bytes="$2" '{print job, bytes, $0}' >>"$work/raw"
}

# Everybody on one job.
measure_job() {
  local options
  read -ra options <<<"$(job_options "$1")" || true
  say "$1 ..."
  "$tools/measure" "$runs" 1 -- "$tools/generate_job" "$(job_kind "$1")" "$small" \
    -- filter "$program" "${options[@]}" -- G "$tools/copy_loop" -- C cat \
    -- fold fold -b -w 132 -- sed sed '' | note "$1" "$small"
}

# The filter alone on the small and the large job, in turn.
measure_growth() {
  local options run bytes
  read -ra options <<<"$(job_options "$1")" || true
  say "$1, small and large ..."
  for ((run = 0; run < growth_runs; ++run)); do
    for bytes in "$small" "$large"; do
      "$tools/measure" 1 1 -- "$tools/generate_job" "$(job_kind "$1")" "$bytes" \
        -- grown "$program" "${options[@]}" | note "$1" "$bytes"
    done
  done
}

measure_empty() {
  say "empty ..."
  "$tools/measure" "$runs" "$starts" -- -- filter "$program" -- true /bin/true | note empty 0
}

# Ratios from the raw numbers, a line each: key, value.
ratios() {
  awk -F'\t' -v OFS='\t' -v small="$small" -v large="$large" '
    function median(list, parts, count, i, j, held) {
      count = split(list, parts, " ")
      for (i = 2; i <= count; ++i) {
        held = parts[i] + 0
        for (j = i; j > 1 && parts[j - 1] + 0 > held; --j) parts[j] = parts[j - 1]
        parts[j] = held
      }
      return parts[int(count / 2) + 1]
    }
    {
      key = $1 SUBSEP $2 SUBSEP $3
      wall[key] = wall[key] " " $4
      processor[key] = processor[key] " " $5
      if ($6 > resident[key]) resident[key] = $6
      if (!($1 in seen)) { seen[$1] = 1; jobs[++count] = $1 }
    }
    END {
      print "empty.true", median(wall["empty", 0, "filter"]) / median(wall["empty", 0, "true"])
      for (i = 1; i <= count; ++i) {
        job = jobs[i]
        if (job == "empty") continue
        own = median(wall[job, small, "filter"])
        own_processor = median(processor[job, small, "filter"])
        print job ".seconds", own
        print job ".processor", own_processor
        print job ".G", median(wall[job, small, "G"]) / own
        print job ".G.processor", median(processor[job, small, "G"]) / own_processor
        print job ".C", own / median(wall[job, small, "C"])
        print job ".fold", median(wall[job, small, "fold"]) / own
        print job ".sed", median(wall[job, small, "sed"]) / own
        print job ".growth", median(wall[job, large, "grown"]) / median(wall[job, small, "grown"])
        print job ".growth.processor", \
          median(processor[job, large, "grown"]) / median(processor[job, small, "grown"])
        at_small = resident[job, small, "grown"]
        at_large = resident[job, large, "grown"]
        print job ".memory.small", at_small
        print job ".memory.large", at_large
        if (at_small > most) most = at_small
        if (at_large > most) most = at_large
        difference = at_large > at_small ? at_large - at_small : at_small - at_large
        if (difference > widest) widest = difference
      }
      print "memory.peak", most / 1024
      print "memory.growth", widest
    }' "$work/raw"
}

# The goals: key, least value, greatest value, words.
goals() {
  local factor=$((large / small)) growth
  growth=$(awk "BEGIN {print $factor * 0.9, $factor * 1.1}")
  cat <<END
plain.G 5 - plain text: G's time over the filter's
plain.C - 2.5 plain text: the filter's time over C's
form.G 3 - text with a form: G's time over the filter's
mixed.G 3 - double-byte and single-byte text: G's time over the filter's
sequences.G 1 - a sequence every 8 bytes: G's time over the filter's
framed.G 3 - framed: G's time over the filter's
invalid.G 1 - invalid and control bytes: G's time over the filter's
empty.true - 1.3 empty job: its time over that of /bin/true
memory.peak - 4 peak memory of any job, MiB
memory.growth - 256 difference of a job's peak memory, small to large, KiB
plain.growth $growth plain text: time for the large job over time for the small one
plain.growth.processor $growth the same in processor time
END
}

# The table of goals, with the earlier ratios when there are some.
print_goals() {
  goals | awk -v current="$work/ratios" -v before="$against" '
    function number(value) { return value == "" ? "-" : sprintf("%.2f", value) }
    BEGIN {
      FS = "\t"
      while ((getline <current) > 0) now[$1] = $2
      while (before != "" && (getline <before) > 0) then[$1] = $2
      FS = " "
      print "| what | goal | measured | |" (before != "" ? " before | change |" : "")
      print "| --- | --- | --- | --- |" (before != "" ? " --- | --- |" : "")
    }
    {
      words = $0
      sub(/^[^ ]+ [^ ]+ [^ ]+ /, "", words)
      split($0, part, " ")
      key = part[1]; least = part[2]; most = part[3]
      goal = least == "-" ? "at most " most : most == "-" ? "at least " least : least " to " most
      met = (least == "-" || now[key] >= least + 0) && (most == "-" || now[key] <= most + 0)
      line = "| " words " | " goal " | " number(now[key]) " | " (met ? "met" : "MISSED") " |"
      if (before != "") {
        change = then[key] > 0 ? sprintf("%+.0f %%", (now[key] / then[key] - 1) * 100) : "-"
        line = line " " number(then[key]) " | " change " |"
      }
      print line
    }'
}

print_jobs() {
  awk -v size=$((small >> 20)) '
    BEGIN {
      FS = "\t"
      print "| job | s | MiB/s | CPU s | G, times | G in CPU time, times | C, times " \
            "| fold, times | sed, times | memory, KiB | large: memory, KiB | large: time, times " \
            "| large: CPU time, times |"
      print "| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |"
    }
    {
      value[$1] = $2
      if ($1 ~ /[.]seconds$/) { jobs[++count] = substr($1, 1, length($1) - 8) }
    }
    END {
      for (i = 1; i <= count; ++i) {
        j = jobs[i]
        printf "| %s | %.3f | %.0f | %.3f | %.1f | %.1f | %.2f | %.1f | %.1f | %d | %d | %.1f ", j,
          value[j ".seconds"], size / value[j ".seconds"], value[j ".processor"], value[j ".G"],
          value[j ".G.processor"], 1 / value[j ".C"], value[j ".fold"], value[j ".sed"],
          value[j ".memory.small"], value[j ".memory.large"], value[j ".growth"]
        printf "| %.1f |\n", value[j ".growth.processor"]
      }
    }' "$work/ratios"
}

print_report() {
  echo "$(describe_machine); jobs of $((small >> 20)) MiB (large: $((large >> 20)) MiB)," \
    "medians of $runs runs."
  echo
  print_goals
  echo
  echo "Each job; how many times as fast as the other program the filter is:"
  echo
  print_jobs
}

prepare_bench
program=${program:-$build/zqeuctorlx}

measure_empty
for job in "${job_names[@]}"; do
  measure_job "$job"
done
for job in "${job_names[@]}"; do
  measure_growth "$job"
done
ratios >"$work/ratios"
print_report
if [[ -n $save ]]; then
  cp "$work/ratios" "$save"
fi
