#!/usr/bin/env bash
# Looks whether a program is hardened as tools/hardening.cmake says: hardening.sh PROGRAM
# Needs readelf, nm and objdump, which come with the compiler; $READELF, $NM and $OBJDUMP name others,
# for a program of another machine.
set -euo pipefail

program=$1
failures=0

# expect WHAT TEXT PATTERN: a line of the text must match.
expect() {
  if ! grep -qE -- "$3" <<<"$2"; then
    echo "not found: $1" >&2
    failures=$((failures + 1))
  fi
}

headers=$("${READELF:-readelf}" --file-header --program-headers --dynamic --wide "$program")
expect "an address of its own each time (PIE)" "$headers" 'FLAGS_1.*\bPIE\b'
expect "read-only relocations (RELRO)" "$headers" 'GNU_RELRO'
expect "binding at start (BIND_NOW)" "$headers" 'FLAGS.*\bNOW\b'
expect "a stack that is not executable" "$headers" 'GNU_STACK.* RW +0x'

imports=$("${NM:-nm}" --dynamic --undefined-only "$program")
expect "the stack protector" "$imports" '__stack_chk_fail'
expect "checked calls of the C library (_FORTIFY_SOURCE)" "$imports" '__[a-z]*printf_chk'

if grep -q "Machine:.*X86-64" <<<"$headers"; then
  code=$("${OBJDUMP:-objdump}" --disassemble --no-show-raw-insn "$program")
  # In a function of ours: the C library's start-up code has some of its own. Whether the processor
  # enforces them is for that code to allow, too: a system whose start-up code is not marked for CET
  # runs the program without.
  expect "targets of indirect jumps (CET)" "$(grep -A1 '<main>:' <<<"$code")" 'endbr64'
  expect "probes of large stack frames (stack clash)" "$code" 'or[ql] +\$0x0,(0x[0-9a-f]+)?\(%rsp\)'
fi

((failures == 0)) && echo "hardened: $program"
