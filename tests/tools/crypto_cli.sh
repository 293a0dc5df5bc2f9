#!/bin/sh
# Smoke test of the zrad md5, base64 and des commands against coreutils on a random file.
# Usage: crypto_cli.sh PATH/TO/zrad
. "$(dirname "$0")/cli.sh"
head -c 100003 /dev/urandom > "$dir/in"

check "md5 matches md5sum" test "$("$zrad" md5 "$dir/in")" = "$(md5sum < "$dir/in" | cut -c1-32)"
check "md5 of stdin, short and upper" test "$("$zrad" md5 --short --upper - < "$dir/in")" = \
  "$(md5sum < "$dir/in" | cut -c9-24 | tr a-f A-F)"
check "base64 matches coreutils" test "$("$zrad" base64 "$dir/in")" = "$(base64 -w0 "$dir/in")"
base64 "$dir/in" | "$zrad" base64 -d > "$dir/b64"
check "base64 -d reverses wrapped text" cmp -s "$dir/in" "$dir/b64"
check "des encrypt" "$zrad" des encrypt --pass secret "$dir/in" "$dir/sealed"
check "des decrypt" "$zrad" des decrypt --pass secret "$dir/sealed" "$dir/out"
check "des round trip" cmp -s "$dir/in" "$dir/out"
head -c 100 "$dir/sealed" > "$dir/short"
"$zrad" des decrypt --pass secret "$dir/short" "$dir/never" 2> /dev/null
check "truncated message fails with 1" test $? -eq 1
check "no output left after a failure" test ! -e "$dir/never"
"$zrad" md5 "$dir/missing" 2> /dev/null
check "missing file fails with 1" test $? -eq 1
"$zrad" des encrypt "$dir/in" "$dir/out" 2> /dev/null
check "missing --pass is a usage error" test $? -eq 2
finish
