#!/bin/sh
# zrad xml: one case a line (see cli.sh): status, stdout, stderr pattern, arguments.
# Usage: xml_cli.sh PATH/TO/zrad
. "$(dirname "$0")/cli.sh"
printf '<d n="1">\n <layer id="0" c="a&quot;b">walls<line x="1"/></layer>\n <Layer id="1"/>\n</d>\n' > t.xml
printf '<a>\n<b>\n</a>\n' > bad.xml
mkdir sub

# The tree shows names, attributes (escaped), texts and depth.
expect 0 'd n="1"\n  layer id="0" c="a\\"b" : walls\n    line x="1"\n  Layer id="1"\n' '' xml tree t.xml
# get walks names as the filer does: the first match, ASCII case ignored; "" is the root.
expect 0 'walls\n' '' xml get t.xml LAYER
expect 0 '1\n' '' xml get t.xml layer/line --attr x
expect 0 '1\n' '' xml get t.xml layer/line --attr=x
expect 0 '1\n' '' xml get t.xml '' --attr n
# Failures say why, naming the file and, for a parse error, the line.
expect 1 '' 'zrad xml tree: cannot read bad.xml: XML_ERROR_MISMATCHED_ELEMENT at line 2' xml tree bad.xml
expect 1 '' 'zrad xml tree: cannot read none.xml: no such file' xml tree none.xml
expect 1 '' 'zrad xml tree: cannot read sub: *' xml tree sub
expect 1 '' 'zrad xml get: t.xml: no element at layer/nothing' xml get t.xml layer/nothing
expect 1 '' 'zrad xml get: t.xml: no attribute nothing at layer' xml get t.xml layer --attr nothing
expect 2 '' 'zrad xml get: PATH is required*' xml get t.xml
expect 2 '' '*' xml
finish
