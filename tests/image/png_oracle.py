"""Independent PNG reader for the image tests (standard library only).

Usage: png_oracle.py FILE. Checks the signature, every chunk's CRC, the chunk order and that the
IDAT stream inflates to one filter byte and one packed row per row of the header; prints
"WIDTH HEIGHT BITDEPTH COLOURTYPE PLTE-ENTRIES". Exits 1 with a message on the first fault.
"""
import struct
import sys
import zlib

CHANNELS = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}


def fail(message):
    print(message)
    sys.exit(1)


def chunks(data):
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        fail("bad signature")
    at = 8
    while at < len(data):
        if at + 12 > len(data):
            fail("truncated chunk at %d" % at)
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        crc, = struct.unpack(">I", data[at + 8 + length:at + 12 + length])
        if zlib.crc32(kind + body) != crc:
            fail("bad CRC in %s" % kind.decode("latin-1"))
        yield kind, body
        at += 12 + length


def main():
    data = open(sys.argv[1], "rb").read()
    found = list(chunks(data))
    if not found or found[0][0] != b"IHDR" or found[-1][0] != b"IEND":
        fail("IHDR first and IEND last expected")
    width, height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", found[0][1])
    if interlace:
        fail("interlaced")
    palette = sum(len(body) // 3 for kind, body in found if kind == b"PLTE")
    raw = zlib.decompress(b"".join(body for kind, body in found if kind == b"IDAT"))
    bits = depth * CHANNELS[colour]
    stride = (width * bits + 7) // 8
    if len(raw) != height * (1 + stride):
        fail("IDAT holds %d bytes, %d expected" % (len(raw), height * (1 + stride)))
    if any(raw[row * (1 + stride)] > 4 for row in range(height)):
        fail("bad filter type")
    print(width, height, depth, colour, palette)


main()
