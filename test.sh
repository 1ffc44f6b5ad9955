#!/usr/bin/env bash
# Checks everything, after installing what that needs:
#   ./test.sh         format, all builds with their tests, lint, benchmarks' build
#   ./test.sh quick   the release build with its tests
#   ./test.sh long    all, and both roads of the filter compared on 100,000 generated jobs
# Ends with a summary; the exit status is 0 when every step passed.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
source tools/setup.sh

jobs=$(nproc)
format_tool=clang-format-$clang_tools_version
tidy_tool=clang-tidy-$clang_tools_version

passed=0
failed=0
skipped=0
summary=()

# Runs one named step and goes on whatever comes of it: step NAME COMMAND [ARGUMENTS...]
step() {
  local name=$1 start=$SECONDS verdict
  shift
  printf '\n==== %s\n' "$name"
  if "$@"; then
    verdict=passed
    passed=$((passed + 1))
  else
    verdict=FAILED
    failed=$((failed + 1))
  fi
  summary+=("$(printf '%-8s %4d s  %s' "$verdict" $((SECONDS - start)) "$name")")
}

skip() {
  skipped=$((skipped + 1))
  summary+=("skipped          $1: $2")
}

project_sources() {
  find src tests bench fuzz -name '*.cpp' -o -name '*.h' | sort
}

check_format() {
  project_sources | xargs "$format_tool" --dry-run --Werror
}

build_preset() {
  cmake --preset "$1" >/dev/null && cmake --build --preset "$1" --parallel "$jobs"
}

# Builds a preset and runs all its tests.
check_preset() {
  build_preset "$1" && ctest --preset "$1" --parallel "$jobs"
}

lint_one() {
  local report
  if ! report=$("$1" -p build-clang --quiet "$2" 2>&1); then
    grep -v 'warnings generated\.$' <<<"$report" || true
    return 1
  fi
}
export -f lint_one

# clang-tidy reads the compile commands of the clang build.
lint() {
  find src tests -name '*.cpp' | sort |
    xargs -P "$jobs" -I{} bash -c 'lint_one "$@"' lint_one "$tidy_tool" {}
}

has_sources() {
  compgen -G "$1/*.cpp" >/dev/null
}

# True when a lint tool is there, or could be had and is there now. A machine whose archive has
# another version only goes without.
have_lint_tool() {
  have "$1" || ! package_exists "$1" || install_missing "$1:$1"
  have "$1"
}

check_style() {
  if have_lint_tool "$format_tool"; then
    step "format" check_format
  else
    skip "format" "no $format_tool for this system"
  fi
}

check_lint() {
  if have_lint_tool "$tidy_tool"; then
    step "lint (clang-tidy)" lint
  else
    skip "lint" "no $tidy_tool for this system"
  fi
}

check_all() {
  install_missing "${build_needs[@]}" "${test_needs[@]}"
  check_style
  step "release build and tests" check_preset release
  step "sanitizer build and tests" check_preset asan
  step "unsigned-char build and tests" check_preset unsigned-char
  step "clang build and tests" check_preset clang
  check_lint
  if has_sources bench; then
    step "benchmarks build" build_preset bench
  fi
}

check_quickly() {
  install_missing "${build_needs[@]}" "${quick_test_needs[@]}"
  step "release build and tests" check_preset release
}

compare_roads() {
  RLX_GENERATED_JOBS=100000 build-release/tests/unit_tests --gtest_filter='Roads.*' --gtest_brief=1
}

case "${1-}" in
  '') check_all ;;
  quick) check_quickly ;;
  long)
    check_all
    step "both roads on 100,000 jobs" compare_roads
    ;;
  *)
    say "usage: ./test.sh [quick|long]"
    exit 2
    ;;
esac

printf '\n==== summary\n'
printf '%s\n' "${summary[@]}"
echo
echo "$passed passed, $failed failed, $skipped skipped"
((failed == 0))
