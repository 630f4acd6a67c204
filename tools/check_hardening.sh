#!/usr/bin/env bash
# Checks that programs were built with the usual hardening, which makes bugs in them harder to exploit.
# usage: check_hardening.sh PROGRAM...
# Each program must be position-independent, have no memory that is both writable and executable, have relocations that
# are read-only once it runs, have stack protectors, and name no library search path of its own. Prints a line for each
# missing protection; exit status 1 if there is any. (_FORTIFY_SOURCE is not checked: a program without a call that the
# compiler could check looks the same as one built without it.)
set -euo pipefail
missing=0

report() {
  echo "$1"
  missing=$((missing + 1))
}

# Prints a line unless the given output of readelf for the program matches a pattern.
expect() {
  local program=$1 what=$2 text=$3 pattern=$4
  grep --quiet --extended-regexp "$pattern" <<<"$text" || report "$program: $what"
}

for program in "$@"; do
  segments=$(readelf --wide --program-headers "$program")
  dynamic=$(readelf --wide --dynamic "$program")
  symbols=$(readelf --wide --dyn-syms "$program")
  expect "$program" "is not position-independent" "$dynamic" 'FLAGS_1.*PIE'
  expect "$program" "has an executable stack" "$segments" 'GNU_STACK .* RW +0x'
  expect "$program" "has no read-only relocations" "$segments" 'GNU_RELRO'
  expect "$program" "binds functions lazily" "$dynamic" 'FLAGS_1.*NOW'
  expect "$program" "has no stack protector" "$symbols" '__stack_chk_fail'
  [[ ! $dynamic =~ (RPATH|RUNPATH) ]] || report "$program: has its own library search path"
done
((missing == 0)) || exit 1
echo "Hardened: $*"
