#!/bin/sh
# Smoke test of the zrad xml commands: the tree, lookups by name, and one-line failures.
# Usage: xml_cli.sh PATH/TO/zrad
. "$(dirname "$0")/cli.sh"
printf '<d n="1">\n <layer id="0" c="a&quot;b">walls<line x="1"/></layer>\n <Layer id="1"/>\n</d>\n' > "$dir/t.xml"
printf '<a>\n<b>\n</a>\n' > "$dir/bad.xml"

check "tree shows names, attributes, texts, depth" test "$("$zrad" xml tree "$dir/t.xml")" = \
  "$(printf 'd n="1"\n  layer id="0" c="a\\"b" : walls\n    line x="1"\n  Layer id="1"')"
check "get finds the first name ignoring case" test "$("$zrad" xml get "$dir/t.xml" LAYER)" = walls
check "get an attribute two levels down" test "$("$zrad" xml get "$dir/t.xml" layer/line --attr x)" = 1
check "an empty path names the root" test "$("$zrad" xml get "$dir/t.xml" "" --attr n)" = 1
check "a parse error names the file and line" test "$("$zrad" xml tree "$dir/bad.xml" 2>&1)" = \
  "zrad xml tree: cannot read $dir/bad.xml: XML_ERROR_MISMATCHED_ELEMENT at line 2"
check "a missing file names the file" test "$("$zrad" xml tree "$dir/none.xml" 2>&1)" = \
  "zrad xml tree: cannot read $dir/none.xml: no such file"
"$zrad" xml get "$dir/t.xml" layer/nothing 2> /dev/null
check "a missing element fails with 1" test $? -eq 1
"$zrad" xml get "$dir/t.xml" layer --attr nothing 2> /dev/null
check "a missing attribute fails with 1" test $? -eq 1
"$zrad" xml tree "$dir" 2> /dev/null
check "a directory fails with 1" test $? -eq 1
"$zrad" xml get "$dir/t.xml" 2> /dev/null
check "a missing path is a usage error" test $? -eq 2
finish
