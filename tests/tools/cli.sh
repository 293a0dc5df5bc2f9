# Shared part of the zrad command tests: a scratch directory and one checker per case.
# Source it with the tool's path as $1; end the test with `finish`.
#
#   expect STATUS STDOUT STDERR ARGS...
# runs `zrad ARGS...` in the scratch directory with standard input from $in (default
# /dev/null) and compares the exit status, standard output byte for byte with STDOUT (with
# backslash escapes: '\n', '\0000'), and standard error with the shell pattern STDERR
# ('' for none, '*' for anything). Each failure prints the case and what differed.
set -u
zrad=$1
dir=$(mktemp -d) || exit 1
trap 'rm -rf "$dir"' EXIT
cd "$dir" || exit 1
in=/dev/null
failures=0
expect() {
  want_status=$1 want_out=$2 want_err=$3
  shift 3
  "$zrad" "$@" < "$in" > "$dir/.out" 2> "$dir/.err"
  status=$?
  printf '%b' "$want_out" > "$dir/.want"
  err=$(cat "$dir/.err")
  problem=
  [ "$status" -eq "$want_status" ] || problem="exit status $status, not $want_status"
  cmp -s "$dir/.out" "$dir/.want" || problem="$problem; stdout [$(od -c "$dir/.out" | head -5)]"
  # shellcheck disable=SC2254
  case $err in $want_err) ;; *) problem="$problem; stderr [$err]" ;; esac
  if [ -n "$problem" ]; then
    echo "FAILED: zrad $*: $problem"
    failures=$((failures + 1))
  fi
}
finish() { exit $((failures != 0)); }
check() {  # check DESCRIPTION COMMAND...: counts a failure when the command fails
  what=$1
  shift
  if ! "$@"; then
    echo "FAILED: $what"
    failures=$((failures + 1))
  fi
}
