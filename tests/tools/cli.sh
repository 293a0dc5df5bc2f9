# Shared part of the zrad command tests: a scratch directory and a failure counter.
# Source it with the tool's path as $1; end the test with `finish`.
set -u
zrad=$1
dir=$(mktemp -d) || exit 1
trap 'rm -rf "$dir"' EXIT
failures=0
check() {  # check DESCRIPTION COMMAND...: counts a failure when the command fails
  what=$1; shift
  if ! "$@"; then echo "FAILED: $what"; failures=$((failures + 1)); fi
}
finish() { exit $((failures != 0)); }
