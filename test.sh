#!/usr/bin/env bash
# Checks everything, after installing what that needs:
#   ./test.sh         format, all builds with their tests, lint, cppcheck, benchmarks' build
#   ./test.sh quick   the release build with its tests, less the fault tests and those with spoolers
#   ./test.sh spooler the release build, and all tests with real spoolers
#   ./test.sh app     the release build, and all tests of the printer application
#   ./test.sh farm    the release build, and all tests with several print servers behind one queue
#   ./test.sh long    all, the lint of each file by itself and without what it remembers, both roads
#                     of the filter compared on 100,000 generated jobs, and what it makes of as
#                     many read back; jobs of 4 GiB; all programs under memcheck; all errors
#                     that are planted to see whether the conformance suite finds them; the
#                     filter on other machines
#   ./test.sh packages   the Debian packages: made, looked at, installed, upgraded, removed and
#                     purged in a Debian of its own; needs root's rights
# Ends with a summary; the exit status is 0 when every step passed. Build trees (build-NAME/) and the
# lint's memory (.cache/lint/) are kept between runs; both may be removed at any time.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
source tools/setup.sh

jobs=$(nproc)
# A test that computes takes two of these; one that waits for a spooler and its printer takes one.
test_slots=$((2 * jobs))
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
  find src tools spooler tests bench fuzz -name '*.cpp' -o -name '*.h' | sort
}

check_format() {
  project_sources | xargs "$format_tool" --dry-run --Werror
}

build_preset() {
  cmake --preset "$1" >/dev/null && cmake --build --preset "$1" --parallel "$jobs"
}

# Builds a preset and runs all its tests.
check_preset() {
  build_preset "$1" && ctest --preset "$1" --parallel "$test_slots"
}

# clang-tidy reads the compile commands of the clang build: the tests in pieces, in which it goes
# through GoogleTest's header and the library's once for several files. What was clean is not looked
# at again before it, a header of it, the settings, the tool or the compile command changes.
#
# Three checks see only what stands in a piece itself and so nothing of the tests in it:
# bugprone-suspicious-include (off there: it would see the piece), misc-unused-using-decls and
# misc-unused-alias-decls. All three are only about tidiness, hold for src/ in every run, and for the
# tests in `long`. Clang's warnings about unused names are like that too; g++'s are not. What stands in
# tools/, and its tests, is linted in `long` alone: it takes minutes.
lint() {
  cmake --preset clang >/dev/null &&
    RLX_LINT_TOOLS=0 tools/lint.sh "$tidy_tool" build-clang .cache/lint
}

# Each source by itself, with all checks, whatever was clean before. Besides what is said above this
# finds a test file that lacks an include which another one of its piece has. None of it can hide a
# fault of the filter, so it need not be in every run.
lint_apart() {
  cmake --preset apart >/dev/null && tools/lint.sh "$tidy_tool" build-apart
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

run_cppcheck() {
  cppcheck --quiet --error-exitcode=1 -j "$jobs" --std=c++20 --language=c++ \
    --enable=warning,performance,portability,style,information \
    --suppressions-list=tools/cppcheck-exceptions.txt -I src -I tools -I spooler \
    --template='{file}:{line}: {severity}: {message} [{id}]' src tools spooler
}

# All that it has to say is mended or stands in the file of exceptions. Another version has other
# things to say, so it is asked only where the archive has this one.
check_with_cppcheck() {
  have cppcheck || ! package_exists cppcheck || install_missing "${cppcheck_needs[@]}"
  if have cppcheck && [[ $(cppcheck --version) == "Cppcheck $cppcheck_version" ]]; then
    step "cppcheck" run_cppcheck
  else
    skip "cppcheck" "no cppcheck $cppcheck_version for this system"
  fi
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
    step "lint's memory hides nothing" tests/lint_test.sh "$tidy_tool"
    step "lint (clang-tidy)" "$1"
  else
    skip "lint" "no $tidy_tool for this system"
  fi
}

# The lint is told, because `long` has another one, which covers all of the first.
check_all() {
  install_missing "${build_needs[@]}" "${spooler_needs[@]}" "${test_needs[@]}" \
    "${spooler_test_needs[@]}"
  check_style
  # The programs around the filter are in the first build only: all four would take too long. `long`
  # has them with the sanitizers.
  step "release build and tests" check_preset release
  step "sanitizer build and tests" check_preset asan
  step "unsigned-char build and tests" check_preset unsigned-char
  step "clang build and tests" check_preset clang
  check_lint "$1"
  check_with_cppcheck
  if has_sources bench; then
    step "benchmarks build" build_preset bench
  fi
}


# The fault tests take as long as all the others of the release build: a full run has them. The tests
# with spoolers need the spoolers.
check_release_quickly() {
  build_preset release &&
    ctest --preset release --parallel "$test_slots" \
      --exclude-regex '^(fault|spooler|lprng|app|farm)_tests'
}

check_quickly() {
  install_missing "${build_needs[@]}" "${spooler_needs[@]}" "${quick_test_needs[@]}"
  step "release build and tests, less the fault tests and those with spoolers" check_release_quickly
}

check_spoolers() {
  install_missing "${build_needs[@]}" "${spooler_needs[@]}" "${quick_test_needs[@]}" \
    "${spooler_test_needs[@]}"
  step "release build" build_preset release
  step "tests with CUPS" build-release/tests/spooler/spooler_tests
  step "LPRng" tests/spooler/lprng/unpack.sh "$PWD/.cache/lprng"
  step "tests with LPRng" build-release/tests/spooler/lprng/lprng_tests
}

check_printer_application() {
  install_missing "${build_needs[@]}" "${spooler_needs[@]}" "${quick_test_needs[@]}" \
    "${spooler_test_needs[@]}" "${web_test_needs[@]}"
  step "release build" build_preset release
  step "the printer application's parts" build-release/tests/spooler/app/app_unit_tests
  step "tests with the printer application" build-release/tests/spooler/app/app_tests
  step "requests that no client should send" \
    build-release/tests/spooler/fuzz/app_fuzz --seconds 20 --seed 1
  step "web pages" build-release/tests/spooler/web/web_unit_tests
  step "web pages in a browser" build-release/tests/spooler/web/web_browser_tests
}

check_farm() {
  install_missing "${build_needs[@]}" "${spooler_needs[@]}" "${quick_test_needs[@]}" \
    "${spooler_test_needs[@]}"
  step "release build" build_preset release
  step "tests with several print servers" build-release/tests/spooler/farm/farm_tests
}

compare_roads() {
  RLX_GENERATED_JOBS=100000 build-release/tests/unit_tests --gtest_filter='Roads.*' --gtest_brief=1
}

read_jobs_back() {
  RLX_CHECKED_JOBS=100000 build-release/tests/tools/tool_tests \
    --gtest_filter='*GeneratedJobs.AreGood*' --gtest_brief=1
}

# A little more than 4 GiB, so that every counter of 32 bits would have begun anew.
print_large_jobs() {
  RLX_LARGE_JOB=$((4112 << 20)) build-release/tests/sizes/size_tests --gtest_brief=1
}

run_memcheck() {
  install_missing "${valgrind_needs[@]}" && tests/memcheck --jobs "$jobs" build-release
}

try_conformance() {
  tests/conformance/run build-release/zqeuctorlx --quiet --seconds 60 \
    --standin build-release/tests/standin/libfal.so.1 \
    --fault-tests build-release/tests/faults/fault_tests
}

find_planted_errors() {
  tests/conformance/planted/run --standin build-release/tests/standin/libfal.so.1 \
    --fault-tests build-release/tests/faults/fault_tests
}

case "${1-}" in
  '') check_all lint ;;
  quick) check_quickly ;;
  spooler) check_spoolers ;;
  app) check_printer_application ;;
  farm) check_farm ;;
  long)
    check_all lint_apart
    step "sanitizer build and tests, with all programs" check_preset asan-all
    step "both roads on 100,000 jobs" compare_roads
    step "100,000 jobs read back" read_jobs_back
    step "jobs of 4 GiB" print_large_jobs
    step "memcheck" run_memcheck
    step "conformance, the faults too" try_conformance
    step "planted errors" find_planted_errors
    step "the filter on other machines" tests/machines/run
    ;;
  packages) step "packages" tests/packages/run ;;
  *)
    say "usage: ./test.sh [quick|spooler|app|farm|packages|long]"
    exit 2
    ;;
esac

printf '\n==== summary\n'
printf '%s\n' "${summary[@]}"
echo
echo "$passed passed, $failed failed, $skipped skipped"
((failed == 0))
