# Common to compare.sh and kinds.sh, which source it behind tools/setup.sh: the filter as it is
# shipped, the programs around it, a folder for the run, and what machine this is.
# shellcheck shell=bash

# shellcheck disable=SC2154  # root: of whoever sources this
build=$root/build-compare
tools=$build/tools

compile_tool() {
  g++ -std=c++20 -O2 "$root/bench/tools/$1.cpp" -o "$tools/$1" "${@:2}"
}

build_all() {
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DRLX_TOOLS=OFF &&
    cmake --build "$build" --parallel --target zqeuctorlx || return 1
  mkdir -p "$tools"
  compile_tool copy_loop &&
    compile_tool generate_job -I"$root/bench" "$root/bench/sample_jobs.cpp" &&
    # Without shared libraries it is smaller than whatever it measures.
    compile_tool measure -static
}

# Sets `work`, a folder that goes with the run, with a form in it.
prepare_bench() {
  # shellcheck disable=SC2154  # build_needs: of tools/setup.sh
  install_missing "${build_needs[@]}"
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  if ! build_all >"$work/log" 2>&1; then
    cat "$work/log" >&2
    say "The build failed."
    exit 1
  fi
  mkdir -p "$work/forms/fcbe"
  printf 'lpi 1200 66\nprint 4 79200\n' >"$work/forms/fcbe/BENCH"
  export LC_ALL=C
}

describe_machine() {
  local model
  model=$(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -n 1)
  echo "$(date +%F); ${model:-$(uname -m)}, $(nproc) cores, load $(cut -d' ' -f1 /proc/loadavg);" \
    "$(g++ --version | head -n 1)"
}
