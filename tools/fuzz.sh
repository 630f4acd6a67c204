#!/usr/bin/env bash
# Runs each fuzz harness for the given time and prints a table of the results.
# usage: fuzz.sh BUILD_FOLDER SECONDS
# New inputs stay in BUILD_FOLDER/corpus for the next run; an input that crashes a harness is saved in
# BUILD_FOLDER/crashes. Exit status 1 if a harness crashed.
set -euo pipefail
build=$1
seconds=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/../fuzz" && pwd)

# Limits for one input: size in bytes, time in seconds, memory in MiB.
readonly largest_input=4096 longest=25 most_memory=2048

statistic() { sed -n "s/^stat::$1: *//p" "$2"; }

# Runs the harness of one format and prints its row of the table; fails if it crashed.
run_harness() {
  local format=$1 log="$build/$1.log" status=0 dictionary=()
  mkdir -p "$build/corpus/$format" "$build/crashes"
  [[ ! -e $here/$format.dict ]] || dictionary=(-dict="$here/$format.dict")
  "$build/fuzz/fuzz_$format" -max_total_time="$seconds" -print_final_stats=1 -max_len="$largest_input" \
    -timeout="$longest" -rss_limit_mb="$most_memory" -artifact_prefix="$build/crashes/$format-" "${dictionary[@]}" \
    "$build/corpus/$format" "$here/corpus/$format" >"$log" 2>&1 || status=$?
  printf '%-12s%14s%14s   %s\n' "$format" "$(statistic number_of_executed_units "$log")" \
    "$(statistic new_units_added "$log")" "$( ((status == 0)) && echo none || echo "CRASHED (status $status)")"
  ((status == 0)) || { tail -n 40 "$log" >&2; return 1; }
}

printf '%-12s%14s%14s   %s\n' format executions "new inputs" crashes
failures=0
for format in binary xml old_style; do
  run_harness "$format" || failures=$((failures + 1))
done
if ((failures > 0)); then
  echo "The inputs are in $build/crashes. Add each of them to fuzz/corpus once it is fixed." >&2
  exit 1
fi
