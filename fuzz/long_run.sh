#!/bin/sh
# Long fuzzing runs, outside CI: each target named fuzzes once for SECONDS, two at a time, at
# the lowest priority, on a copy of its seed corpus and kept inputs under /tmp/zrad-fuzz/. Its
# log (with libFuzzer's final statistics) is /tmp/zrad-fuzz/TARGET.log, a finding stays in
# /tmp/zrad-fuzz/TARGET/artifacts/. A run without finding then merges what it grew against the
# seeds, and the inputs that add the most edges join the seed corpus (fuzz/pick_inputs.py).
#
#   fuzz/long_run.sh SECONDS TARGET...    e.g. fuzz/long_run.sh 1800 recvdata netcommand
# The fuzz build must exist: build/fuzz, configured as the README says.
set -eu
cd "$(dirname "$0")/.."

# run_one SECONDS TARGET
run_one() {
  seconds=$1 target=$2
  fuzzer=$(find build/fuzz/fuzz -type f -name "fuzz_$target" | head -n 1)
  [ -n "$fuzzer" ] || { echo "long_run: no fuzz_$target in build/fuzz" >&2; return 1; }
  family=$(basename "$(dirname "$fuzzer")")
  seeds=fuzz/$family/corpus/$target
  kept=tests/data/$family/$target
  work=/tmp/zrad-fuzz/$target
  rm -rf "$work"
  mkdir -p "$work/corpus" "$work/artifacts" "$work/merged"
  cp "$seeds"/* "$work/corpus/"
  cp "$fuzzer" "$work/"  # the run keeps its program while build/fuzz changes
  log=/tmp/zrad-fuzz/$target.log
  echo "start $(date +%T), $seconds s" >"$log"
  if ! (cd "$work" && nice -n 19 "./fuzz_$target" -max_total_time="$seconds" -rss_limit_mb=2048 \
      -timeout=10 -print_final_stats=1 -artifact_prefix="$work/artifacts/" corpus) >>"$log" 2>&1; then
    echo "end $(date +%T): finding, see $log" | tee -a "$log"
    return 1
  fi
  echo "end $(date +%T)" >>"$log"
  # The seeds and kept inputs go first, so that only what adds to them counts as new.
  cp "$seeds"/* "$work/merged/"
  [ -d "$kept" ] && cp "$kept"/* "$work/merged/"
  (cd "$work" && nice -n 19 "./fuzz_$target" -merge=1 -merge_control_file="$work/merge.control" \
      -rss_limit_mb=2048 -timeout=10 "$work/merged" "$work/corpus") >>"$log" 2>&1
  echo "$target: $(python3 fuzz/pick_inputs.py "$work/merge.control" "$seeds")" | tee -a "$log"
}

if [ "${1:-}" = --one ]; then
  run_one "$2" "$3"
  exit
fi
[ $# -ge 2 ] || { echo "usage: fuzz/long_run.sh SECONDS TARGET..." >&2; exit 2; }
seconds=$1
shift
printf '%s\n' "$@" | xargs -P 2 -n 1 "$0" --one "$seconds"
