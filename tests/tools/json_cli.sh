#!/bin/sh
# zrad json: one case a line (see cli.sh): status, stdout, stderr pattern, arguments.
# Usage: json_cli.sh PATH/TO/zrad
. "$(dirname "$0")/cli.sh"
printf '{"b":[1,2.5,"x"],"a":{"c":true}}' > t.json
printf '{"a":"x\\u0000y","b":2}' > zero.json
printf '{"a":\n  [1 2]}' > bad.json
mkdir sub

# Reading, converting, querying and editing in both forms.
expect 0 '{"a":{"c":true},"b":[1,2.500000,"x"]}\n' '' json cat t.json
expect 0 '' '' json convert t.json t.bin --to binary
expect 0 '{"a":{"c":true},"b":[1,2.500000,"x"]}\n' '' json cat t.bin
expect 0 '2.500000\n' '' json get t.json b/1
expect 0 '' '' json set t.bin a/d 7
expect 0 '7\n' '' json get t.bin a/d
expect 0 '' '' json check t.json
# A zero byte inside a string comes out escaped and nothing after it is lost.
expect 0 '{"a":"x\\u0000y","b":2}\n' '' json cat zero.json
# A plain word as VALUE is a string, and nothing is logged to a file.
expect 0 '' '' json set t.json name hello
expect 0 '"hello"\n' '' json get t.json name
check "no zrad.log without --log" test ! -e zrad.log
# Failures say why.
expect 1 '' 'zrad json cat: cannot read missing.json as a tree: No such file or directory' json cat missing.json
expect 1 '' 'zrad json cat: cannot read sub as a tree: Is a directory' json cat sub
expect 1 '' 'zrad json check: cannot read bad.json as a tree: line 2, column 6: Missing a comma*' json check bad.json
expect 1 '' 'zrad json get: cannot read standard input as a tree: line 1, column 1: The document is empty.' json get - a
# "-" is standard input or output; a missing FILE reads standard input.
in=t.json
expect 0 '{"a":{"c":true},"b":[1,2.500000,"x"],"name":"hello"}\n' '' json cat -
expect 0 '{"a":{"c":true},"b":[1,2.500000,"x"],"name":"hello"}\n' '' json cat
expect 0 '' '' json convert - copy.json
expect 0 '{"a":{"c":true},"b":[1,2.500000,"x"],"name":"hello"}\n' '' json cat copy.json
expect 0 '{"a":{"c":true},"b":[1,2.500000,"x"],"name":"hi"}\n' '' json set - name hi
in=/dev/null
check "no file named -" test ! -e ./-
# Pretty printing keeps the order; convert ends its text with a newline.
expect 0 '{\n  "a": {\n    "c": true\n  },\n  "b": [\n    1,\n    2.500000,\n    "x"\n  ],\n  "name": "hello"\n}\n' '' json cat --pretty t.json
expect 0 '{"a":{"c":true},"b":[1,2.500000,"x"],"name":"hello"}\n' '' json convert t.json - --to json
# Options: --opt=value, options before operands, "--" ending options, usage errors.
expect 0 '{"a":{"c":true},"b":[1,2.500000,"x"],"name":"hello"}\n' '' json convert --to=json t.json -
cp t.json ./-x.json
expect 0 '"hello"\n' '' json get -- -x.json name
expect 2 '' 'zrad json convert: --to: * not in *
usage: zrad json convert *' json convert t.json - --to yaml
expect 2 '' 'zrad json get: PATH is required
usage: zrad json get *' json get t.json
check "help states the writer's rules" sh -c "'$zrad' help json | grep -q 'six decimals'"
finish
