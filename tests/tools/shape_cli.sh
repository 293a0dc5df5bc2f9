#!/bin/sh
# zrad shape: every built-in slot to SVG and PNG, pixels of simple shapes read back from the
# PNG, and failures (cases as in cli.sh: status, stdout, stderr pattern, arguments).
# Usage: shape_cli.sh PATH/TO/zrad PATH/TO/libzradutils.so (the raster module lies beside it)
. "$(dirname "$0")/cli.sh"
library=$2

# png FILE X,Y...: "WIDTH HEIGHT DEPTH COLOURTYPE", the count of pixels that are not fully
# transparent and of distinct pixel values, then "R G B A" of each point. The PNG is read with
# Python's zlib and struct alone; a bad signature or chunk CRC prints an error instead.
png() {
  python3 - "$@" << 'EOF'
import struct, sys, zlib
data = open(sys.argv[1], 'rb').read()
if data[:8] != b'\x89PNG\r\n\x1a\n': sys.exit('not a PNG')
pos, idat = 8, b''
while pos < len(data):
    n, kind = struct.unpack('>I4s', data[pos:pos + 8])
    body, crc = data[pos + 8:pos + 8 + n], data[pos + 8 + n:pos + 12 + n]
    if struct.pack('>I', zlib.crc32(kind + body)) != crc: sys.exit('bad CRC in ' + kind.decode())
    if kind == b'IHDR': w, h, depth, ctype = struct.unpack('>IIBB', body[:10])
    if kind == b'IDAT': idat += body
    pos += 12 + n
print(w, h, depth, ctype)
if (depth, ctype) != (8, 6): sys.exit(0)
raw, stride, rows, prev = zlib.decompress(idat), 4 * w, [], bytearray(4 * w)
for y in range(h):
    kind, line = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
    for i in range(stride):
        a, b, c = line[i - 4] if i >= 4 else 0, prev[i], prev[i - 4] if i >= 4 else 0
        p = a + b - c
        pred = [0, a, b, (a + b) // 2,
                a if abs(p - a) <= abs(p - b) and abs(p - a) <= abs(p - c) else
                b if abs(p - b) <= abs(p - c) else c][kind]
        line[i] = (line[i] + pred) & 0xFF
    rows.append(line)
    prev = line
pixels = [bytes(r[i:i + 4]) for r in rows for i in range(0, stride, 4)]
print(sum(p[3] != 0 for p in pixels), len(set(pixels)))
for point in sys.argv[2:]:
    x, y = map(int, point.split(','))
    print(*rows[y][4 * x:4 * x + 4])
EOF
}

expect 0 '' '' shape render --all . --size=64
for slot in 0 1 2 3 4 5 6 7; do
  check "slot $slot SVG has paths" grep -q '<path d="M' "slot$slot.svg"
  info=$(png "slot$slot.png" 2>&1)
  check "slot $slot PNG is 64 x 64 RGBA: $info" test "$(echo "$info" | head -n 1)" = "64 64 8 6"
  set -- $(echo "$info" | sed -n 2p)
  check "slot $slot PNG is not blank: $info" test "${1:-0}" -gt 400 -a "${2:-0}" -gt 8
done
check "slot 0's disc in SVG: four quarter arcs of radius 32 sweeping one way" grep -q \
  'd="M0 32A32 32 0 0 0 32 64A32 32 0 0 0 64 32A32 32 0 0 0 32 0A32 32 0 0 0 0 32Z"' slot0.svg
# Slot 0 is a tick on a green disc (0x25, 0xAE, 0x88): the arcs of the disc come out round.
check "disc colour left, below and right of the tick" test "$(png slot0.png 4,32 32,58 59,32 | tail -n 3)" = \
  "$(printf '37 174 136 255\n37 174 136 255\n37 174 136 255')"
check "corners of the disc's canvas stay clear" test "$(png slot0.png 1,1 62,62 | tail -n 2)" = \
  "$(printf '0 0 0 0\n0 0 0 0')"

# A red square over a blue background, then a half-transparent one in the corner of its frame
# (moved to the middle of the canvas) with no background: colours come out straight.
printf 'shape1.0 0 0 10 10 1 1 0 0 B 1 4278190335 b 0 d (M2 2h6v6h-6z) f e' > square.txt
expect 0 '' '' shape render square.txt square.png --size 100 --background '#0000ff'
check "inside red, outside blue" test "$(png square.png 50,50 21,78 19,50 50,81 | tail -n 4)" = \
  "$(printf '255 0 0 255\n255 0 0 255\n0 0 255 255\n0 0 255 255')"
printf 'shape1.0 0 0 10 10 1 1 0 0 B 1 2147483903 b 0 d (M0 0h4v4h-4z) f e' > corner.txt
in=corner.txt
expect 0 '' '' shape render - corner.png --size 100
in=/dev/null
check "half-transparent red centred by what it draws" test "$(png corner.png 50,50 31,31 28,50 | tail -n 3)" = \
  "$(printf '255 0 0 128\n255 0 0 128\n0 0 0 0')"
expect 0 'B 1 4278190335\nb 0\nm 2 2\nl 8 2\nl 8 8\nl 2 8\nC\nf\ne\n' '' shape dump square.txt

# Failures say why.
expect 1 '' 'zrad shape render: cannot write x.jpg: the name must end in .svg or .png' shape render 0 x.jpg
# A copy of the library with no module beside it, taken first through LD_LIBRARY_PATH.
mkdir "$dir/bare" && cp -L "$library" "$dir/bare/$(basename "$(readlink -f "$library")" | sed 's/\.so\..*/.so.1/')"
LD_LIBRARY_PATH=$dir/bare${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
export LD_LIBRARY_PATH
expect 1 '' 'zrad shape render: cannot write y.png: the ZrRaster module that saves PNG cannot be loaded' shape render 0 y.png
unset LD_LIBRARY_PATH
expect 1 '' 'zrad shape render: no built-in shape 8: slots 0 to 7 hold shapes' shape render 8 z.svg
expect 1 '' 'zrad shape dump: cannot read none.txt: *' shape dump none.txt
expect 1 '' 'zrad shape dump: cannot read square.png: not a shape1.0 text' shape dump square.png
expect 2 '' '*--size*' shape render 0 z.png --size 0
expect 2 '' 'zrad shape render: --all takes no SOURCE or OUT*' shape render 0 z.png --all .
expect 2 '' 'zrad shape render: --background wants #rrggbb, #rrggbbaa or none*' shape render 0 z.png --background red
finish
