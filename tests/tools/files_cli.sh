#!/bin/sh
# Smoke test of the zrad glob, path and sysinfo commands on a scratch tree.
# Usage: files_cli.sh PATH/TO/zrad
. "$(dirname "$0")/cli.sh"
mkdir -p "$dir/s/t"
touch "$dir/a.dwg" "$dir/s/b.dwg" "$dir/s/t/c.txt"

check "glob lists the top level only" test "$("$zrad" glob "$dir" '*.dwg')" = a.dwg
check "glob --recursive descends" test "$("$zrad" glob "$dir" '*.dwg' --recursive | sort | tr '\n' ' ')" = "a.dwg s/b.dwg "
"$zrad" glob "$dir/a.dwg" '*' 2> /dev/null
check "glob of a file fails with 1" test $? -eq 1
check "combine looks at the name's last character" test "$("$zrad" path combine a/ b/)" = ab/
check "format joins a relative list its own way" test "$("$zrad" path format 'a\b//c/')" = ab/c/
check "ext keeps the dot" test "$("$zrad" path ext a/b.txt)" = .txt
"$zrad" path nosuchop x 2> /dev/null
check "an unknown operation is a usage error" test $? -eq 2
check "sysinfo names the family" sh -c "'$zrad' sysinfo | grep -qx 'OS_FAMILY=Linux'"
finish
