#!/usr/bin/env bash
# Installs what some lists of setup.sh name, where it is missing: tools/install-needs.sh LIST...
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/setup.sh
source tools/setup.sh

for list in "$@"; do
  declare -n needs=$list
  install_missing "${needs[@]}"
done
