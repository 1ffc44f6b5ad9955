#!/usr/bin/env bash
# Looks whether the manual pages are well-formed, whether the pages that they refer to exist, and
# whether zqeuctorlx(8) tells all options, exit statuses, messages and files:
#   tests/packages/man_pages.sh
# Run it in the project's directory. A tool that is not installed is left out, and that is said.
set -euo pipefail

mapfile -t pages < <(find packaging tools spooler -name '*.[1-8]' 2>/dev/null | sort)
filter_page=packaging/man/zqeuctorlx.8

# Pages of others that ours may refer to.
neighbours='^(cancel|cupsenable|cupstestppd|ipptool|lp|lpoptions|lpq|lpr|lprm|lpstat|ppdc)\(1\)$|
^(classes\.conf|cups-files\.conf|cupsd\.conf|lpd\.conf|lpd\.perms|mime\.convs|mime\.types|printcap|
printers\.conf)\(5\)$|^(checkpc|cupsaccept|cupsd|cupsfilter|lpadmin|lpc|lpd|lpinfo)\(8\)$|
^(backend|filter|iconv)\((1|7)\)$'
neighbours=${neighbours//$'\n'/}

failures=0
fail() {
  printf '%s\n' "$@" >&2
  failures=$((failures + 1))
}

# lint TOOL PAGE COMMAND...: what a tool has to say about a page; nothing, if all is well.
lint() {
  local tool=$1 page=$2 report
  shift 2
  command -v "$tool" >/dev/null || return 0
  report=$(LC_ALL=C.UTF-8 "$@" 2>&1 >/dev/null) || true
  [[ -z $report ]] || fail "$tool, $page:" "$report"
}

# mandoc tells of references to pages that are not installed here, or not in its index; which ones
# there are is looked at below.
mandoc_report() {
  mandoc -T lint "$1" 2>&1 | grep -v -e ': referenced manual not found: Xr ' \
    -e ': outdated mandoc.db lacks ' >&2
}

# The pages that a page refers to, as NAME(SECTION), one a line: those of mdoc, and of man.
references() {
  sed -nE 's/^\.Xr ([^ ]+) ([1-8]).*$/\1(\2)/p; s/^\.BR? "?([a-z0-9_.-]+)"? ?\(([1-8])\).*$/\1(\2)/p' \
    "$1"
}

check_references() {
  local page=$1 reference name section
  while read -r reference; do
    name=${reference%(*}
    section=${reference##*(}
    section=${section%)}
    if [[ " ${pages[*]} " != *"/$name.$section "* ]] && [[ ! $reference =~ $neighbours ]]; then
      fail "$page refers to $reference: no page of ours, and none in this test's list of others"
    fi
  done < <(references "$page")
}

# told WHAT TEXT: the filter's page must have this text.
told() {
  grep -qF -e "$2" "$filter_page" || fail "$filter_page does not tell the $1: $2"
}

# ---- All pages -----------------------------------------------------------------------------------
for tool in mandoc man groff; do
  command -v "$tool" >/dev/null || echo "left out: there is no $tool"
done
for page in "${pages[@]}"; do
  lint mandoc "$page" mandoc_report "$page"
  lint man "$page" env MANROFFSEQ= man --warnings -E UTF-8 -l -Tutf8 -Z "$page"
  lint groff "$page" groff -t -mandoc -Tutf8 -ww -z "$page"
  check_references "$page"
done
((${#pages[@]} >= 7)) || fail "only ${#pages[@]} pages found"

# ---- zqeuctorlx(8) -------------------------------------------------------------------------------
letters=$(sed -nE 's/^.*kOptionLetters = "(.*)";$/\1/p' src/driver/options/options.cpp | tr -d ':')
((${#letters} > 20)) || fail "options not found in the source"
for ((i = 0; i < ${#letters}; i++)); do
  letter=${letters:i:1}
  grep -qE "^\.It (.* )?Fl $letter( |\$)" "$filter_page" ||
    fail "$filter_page does not tell option -$letter"
done

mapfile -t statuses < <(sed -nE 's/^static_assert\(exit_status_of.*== ([0-9]+)\);$/\1/p' \
  src/job/exit_status.h)
((${#statuses[@]} >= 5)) || fail "exit statuses not found in the source"
for status in "${statuses[@]}"; do
  told "exit status" ".It $status"
done

mapfile -t files < <(sed -nE 's/^const char\* const k.* = "(.*)";$/\1/p' src/job/fixed_paths.cpp)
((${#files[@]} >= 5)) || fail "files not found in the source"
for file in "${files[@]}"; do
  told file "$file"
done

# Messages: what is handed to the functions that write them, up to the first place for a value.
mapfile -t messages < <(grep -rhoE \
  -e '(report|error)\([a-z_.]*messages, "[^"]+"' \
  -e 'kFcbDataError = "[^"]+"' \
  -e 'fputs\("[^"]+"' \
  -e '\{"[^"]+", Detail::k' \
  -e 'fprintf\(stderr, "%s: [^"]+"' src |
  sed -E 's/^[^"]*"(%s: )?//; s/".*$//; s/\\n$//; s/ ?\(?%.*$//' | sort -u)
((${#messages[@]} >= 14)) || fail "messages not found in the source"
for message in "${messages[@]}"; do
  [[ -z $message ]] || told message ".It \"$message"
done

((failures == 0)) &&
  echo "${#pages[@]} pages, ${#letters} options, ${#statuses[@]} statuses, ${#messages[@]} messages"
