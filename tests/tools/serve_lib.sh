# Shared part of the tests that run `zrad serve`: starting it, stopping it, a console against it.
# Source it after cli.sh; it makes $zrad absolute and kills the services it started on exit.
zrad=$(cd "$(dirname "$zrad")" && pwd)/$(basename "$zrad")
mkdir "$dir/srv" "$dir/cli" "$dir/loc"
pids=
trap 'for p in $pids; do kill "$p" 2> /dev/null; done; rm -rf "$dir"' EXIT

# serve_at DIR LOG [OPTION...]: starts `zrad serve --port 0` in DIR, its files no larger than
# $fsize 512-byte blocks when that is set; sets $pid and $port (empty: failed).
serve_at() {
  at=$1 log=$2; shift 2
  (cd "$at" && if [ -n "${fsize:-}" ]; then ulimit -f "$fsize"; fi &&
    exec "$zrad" serve --port 0 "$@" 2> "$log") &
  pid=$!; pids="$pids $pid"; port=
  for _ in $(seq 100); do
    port=$(sed -n 's/.*listening on 127\.0\.0\.1:\([0-9]*\).*/\1/p' "$log" 2> /dev/null)
    [ -n "$port" ] && return 0
    sleep 0.1
  done
}
# stops PID: true when it ends by itself within 10 s.
stops() {
  for _ in $(seq 100); do kill -0 "$1" 2> /dev/null || return 0; sleep 0.1; done
  return 1
}
console() { (cd "$dir/cli" && timeout 30 "$zrad" console --timeout 10 "$@"); }
