#!/usr/bin/env bash
# Makes what rlxdump writes now about the golden jobs the dumps that are kept in tests/dumps/. Read
# the difference before you commit it.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target tool_tests >&2
rm -f tests/dumps/*.txt
RLX_UPDATE_DUMPS=1 exec build-release/tests/tools/tool_tests --gtest_filter='*DumpedAsKept' --gtest_brief=1
