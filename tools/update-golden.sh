#!/usr/bin/env bash
# Makes what the filter prints now the expectation of the golden jobs:
#   tools/update-golden.sh            all of tests/cases/
#   tools/update-golden.sh CASE...    those named
# Read the difference before you commit it.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target golden_tests >&2
exec build-release/tests/golden_tests --update "$@"
