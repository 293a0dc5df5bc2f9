#!/bin/sh
# zrad glob, path and sysinfo: one case a line (see cli.sh) on a scratch tree.
# Usage: files_cli.sh PATH/TO/zrad
. "$(dirname "$0")/cli.sh"
mkdir -p s/t locked
touch b.dwg a.dwg s/b.dwg s/t/c.txt locked/x.dwg

expect 0 'a.dwg\nb.dwg\n' '' glob . '*.dwg' --sort
expect 0 'a.dwg\nb.dwg\nlocked/x.dwg\ns/b.dwg\n' '' glob --sort --recursive . '*.dwg'
expect 1 '' 'zrad glob: not a directory: a.dwg' glob a.dwg '*'
# A directory that cannot be read is named on stderr and makes the status 1. Root reads
# everything, so the case runs as nobody when the test runs as root.
chmod 755 "$dir"
chmod 000 locked
as_user=
[ "$(id -u)" -ne 0 ] || as_user="setpriv --reuid=65534 --regid=65534 --clear-groups"
# Skipped where nobody cannot run the tool (a build tree inside a private directory).
if [ -z "$as_user" ] || $as_user "$zrad" --version > /dev/null 2>&1; then
  out=$($as_user "$zrad" glob --recursive --sort . '*.dwg' 2> .err)
  status=$?
  check "glob lists what it can read" test "$out" = "$(printf 'a.dwg\nb.dwg\ns/b.dwg')"
  check "glob exits 1 after skipping" test $status -eq 1
  check "glob names the directory" test "$(cat .err)" = "zrad glob: cannot read directory ./locked: Permission denied"
fi
chmod 755 locked

expect 0 'ab/\n' '' path combine a/ b/
expect 0 'ab/c/\n' '' path format 'a\b//c/'
expect 0 '.txt\n' '' path ext a/b.txt
expect 2 '' 'zrad path: *
usage: zrad path *' path nosuchop x
check "sysinfo names the family" sh -c "'$zrad' sysinfo | grep -qx 'OS_FAMILY=Linux'"
finish
