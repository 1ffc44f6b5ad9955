#!/usr/bin/env bash
# Installs a build into a folder of its own and looks whether exactly the expected files are there,
# with their modes, and whether the programs work from there:
#   tests/packages/installed_files.sh BUILD VERSION COMPONENT...
# What each component has stands in expected/COMPONENT; VERSION is the project's.
set -euo pipefail

build=$(realpath "$1")
version=$2
shift 2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
stage=$scratch/stage

failures=0
fail() {
  printf '%s\n' "$@" >&2
  failures=$((failures + 1))
}

# The mode of what is installed is not for the umask to say.
(umask 077 && cmake --install "$build" --prefix "$stage" >"$scratch/log") || {
  cat "$scratch/log" >&2
  exit 1
}

(cd "$here/expected" && cat "$@") | sort -k 2 >"$scratch/expected"
(cd "$stage" && find . ! -type d -printf '%m %P\n') | sort -k 2 >"$scratch/installed"
diff "$scratch/expected" "$scratch/installed" >&2 || fail "other files than expected are installed"

# What is newest in the list of changes is this version.
newest=$(grep -m 1 '^## ' "$here/../../CHANGELOG.md")
[[ $newest == "## $version" || $newest == "## $version "* ]] ||
  fail "the version is $version, CHANGELOG.md begins with: $newest"

# All but the filter, whose options are fixed, and examples tell their version and how they are used.
programs=0
while read -r mode file; do
  name=${file##*/}
  if [[ $mode != 755 || $name == zqeuctorlx || $file == share/doc/* ]]; then
    continue
  fi
  programs=$((programs + 1))
  told=$("$stage/$file" --version </dev/null) || fail "$name --version: status $?"
  [[ $told == "$name $version" ]] || fail "$name --version says: $told"
  help=$("$stage/$file" --help </dev/null) || fail "$name --help: status $?"
  grep -qi '^usage:' <<<"$help" || fail "$name --help tells no usage"
done <"$scratch/installed"
((programs > 0)) || fail "no programs found"

# rlxproof finds the filter where it is installed.
if [[ -x $stage/bin/rlxproof ]]; then
  mkdir -p "$stage/empty"
  printf 'HELLO\f' | PATH=$stage/empty "$stage/bin/rlxproof" -o - >"$scratch/proof.pdf" ||
    fail "rlxproof: status $?"
  [[ $(head -c 5 "$scratch/proof.pdf") == %PDF- ]] || fail "rlxproof drew nothing"
fi

((failures == 0)) && echo "$(wc -l <"$scratch/installed") files installed, $programs programs run"
