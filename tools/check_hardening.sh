#!/usr/bin/env bash
# Checks that programs were built so that mistakes in them are hard to make use of.
# usage: check_hardening.sh PROGRAM...
# Each must be loaded at an address that differs from run to run, have no memory that can be both written and run, have
# its tables of functions read-only by the time it starts, guard the stacks of its functions, and have its libraries
# looked for nowhere but where the system looks. Exit status 1 if one does not, with a line for each lack. (Whether the
# compiler found a call whose size it could check shows in no program.)
set -euo pipefail
lacks=0

lack() {
  echo "$1"
  lacks=$((lacks + 1))
}

# Prints a line unless the text, which readelf made of the program, has a match.
expect() {
  local program=$1 what=$2 text=$3 pattern=$4
  grep --quiet --extended-regexp "$pattern" <<<"$text" || lack "$program: $what"
}

for program in "$@"; do
  segments=$(readelf --wide --program-headers "$program")
  dynamic=$(readelf --wide --dynamic "$program")
  symbols=$(readelf --wide --dyn-syms "$program")
  expect "$program" "is not position-independent" "$dynamic" 'FLAGS_1.*PIE'
  expect "$program" "has an executable stack" "$segments" 'GNU_STACK .* RW +0x'
  expect "$program" "has no read-only relocations" "$segments" 'GNU_RELRO'
  expect "$program" "does not bind its functions at the start" "$dynamic" 'FLAGS_1.*NOW'
  expect "$program" "does not guard its stacks" "$symbols" '__stack_chk_fail'
  [[ ! $dynamic =~ (RPATH|RUNPATH) ]] || lack "$program: looks for libraries in a folder of its own"
done
((lacks == 0)) || exit 1
echo "Hardened: $*"
