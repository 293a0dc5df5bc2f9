#!/bin/sh
# A fuzz build's test of one target: fuzzes it for a while, starting from its seed corpus and
# kept inputs. What it finds new goes to a scratch corpus in WORKDIR, never into the repository.
# A finding fails the test and prints the input in hexadecimal (the first 4 KiB) beside
# libFuzzer's own report.
#
#   run_fuzzer.sh FUZZER SECONDS WORKDIR CORPUS_DIR...
set -u
fuzzer=$1 seconds=$2 work=$3
shift 3
rm -rf "$work"
mkdir -p "$work/corpus" "$work/artifacts"
cd "$work" || exit 1
"$fuzzer" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
  -artifact_prefix="$work/artifacts/" corpus "$@" && exit 0
for input in artifacts/*; do
  [ -f "$input" ] || continue
  echo "== $work/$input ($(wc -c <"$input") bytes)"
  head -c 4096 "$input" | od -A x -t x1z -v
done
exit 1
