#!/usr/bin/python3
# Reads SVG path data, one path a line, with svgelements and prints each segment in the
# vocabulary of the shape tests' call log ("move x y", "line x y", "arc mx my x y", ...).
# Arcs print their middle point, as the shape reader hands arcs over.
# Exit status 3 when svgelements is missing.
import sys
try:
    import svgelements as se
except ImportError:
    sys.exit(3)


def pts(*points):
    return " ".join("%.6g %.6g" % (p.x, p.y) for p in points)


for line in open(sys.argv[1]):
    line = line.strip()
    if not line or line.startswith("#"):
        continue
    calls = []
    for seg in se.Path(line):
        if isinstance(seg, se.Move):
            calls.append("move " + pts(seg.end))
        elif isinstance(seg, se.Close):
            calls.append("close")
        elif isinstance(seg, se.Line):
            calls.append("line " + pts(seg.end))
        elif isinstance(seg, se.CubicBezier):
            calls.append("cubic " + pts(seg.control1, seg.control2, seg.end))
        elif isinstance(seg, se.QuadraticBezier):
            calls.append("quad " + pts(seg.control, seg.end))
        elif isinstance(seg, se.Arc):
            calls.append("arc " + pts(seg.point(0.5), seg.end))
    print(" ".join(calls))
