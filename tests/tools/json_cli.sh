#!/bin/sh
# Smoke test of the zrad json commands: show, convert both ways, get, set, check, and failures.
# Usage: json_cli.sh PATH/TO/zrad
. "$(dirname "$0")/cli.sh"
printf '{"b":[1,2.5,"x"],"a":{"c":true}}' > "$dir/t.json"

check "cat writes names in order" test "$("$zrad" json cat "$dir/t.json")" = \
  '{"a":{"c":true},"b":[1,2.500000,"x"]}'
check "convert to binary" "$zrad" json convert "$dir/t.json" "$dir/t.bin" --to binary
check "binary starts with 0xE0" test "$(head -c 1 "$dir/t.bin" | od -An -tx1 | tr -d ' ')" = e0
check "cat of the binary file" test "$("$zrad" json cat "$dir/t.bin")" = "$("$zrad" json cat "$dir/t.json")"
check "get an array item" test "$("$zrad" json get "$dir/t.json" b/1)" = 2.500000
check "set a new path" "$zrad" json set "$dir/t.json" a/d 7
check "get what was set" test "$("$zrad" json get "$dir/t.json" a/d)" = 7
check "check a good file" "$zrad" json check "$dir/t.json"
printf '{"a":' > "$dir/bad.json"
"$zrad" json check "$dir/bad.json" 2> /dev/null
check "check a broken file fails with 1" test $? -eq 1
"$zrad" json get "$dir/missing.json" a 2> /dev/null
check "a missing file fails with 1" test $? -eq 1
"$zrad" json get "$dir/t.json" 2> /dev/null
check "a missing path is a usage error" test $? -eq 2
finish
