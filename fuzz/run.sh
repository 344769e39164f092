#!/bin/sh
# fuzz/run.sh SECONDS: every target that is built, two at a time, each for so long; the newest inputs are kept
# in build-fuzz/corpus, findings in fuzz/findings. Fails when a target finds something.
set -eu
cd "$(dirname "$0")/.."
seconds="$1"
mkdir -p fuzz/findings

if [ "$#" -gt 1 ]; then # one target
  target="$2"
  mkdir -p "build-fuzz/corpus/$target"
  log="build-fuzz/$target.log"
  set --
  [ ! -f "fuzz/$target.dict" ] || set -- "-dict=fuzz/$target.dict"
  longest=$(find "fuzz/corpus/$target" -type f -printf '%s\n' | sort -n | tail -1)
  # whole paths: a target may leave this folder
  if ASAN_OPTIONS=detect_leaks=1 "build-fuzz/fuzz/fuzz_$target" "$@" -max_total_time="$seconds" \
    -max_len="$((longest * 5 / 4 + 64))" -timeout=10 -print_final_stats=1 \
    -artifact_prefix="$PWD/fuzz/findings/$target-" \
    "$PWD/build-fuzz/corpus/$target" "$PWD/fuzz/corpus/$target" >"$log" 2>&1; then
    echo "$target: $(sed -n 's/.*number_of_executed_units: *//p' "$log") inputs in $seconds s, no finding"
  else
    grep -aE 'broken promise|ERROR|runtime error|SUMMARY|written to' "$log" || tail -40 "$log"
    echo "$target: a finding; the whole log is $log"
    exit 1
  fi
else
  for corpus in fuzz/corpus/*/; do basename "$corpus"; done | xargs -P 2 -n 1 fuzz/run.sh "$seconds"
fi
