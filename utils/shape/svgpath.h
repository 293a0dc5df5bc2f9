// The SVG path data reader behind ZrShape::readSVGPath, on a byte span.
#pragma once

class ZrShapeContext;

namespace zrad::shape {

// Reads the path data in [begin, end) onto `context` with X = x*sx + ox, Y = y*sy + oy.
void readPathData(const char* begin, const char* end, ZrShapeContext& context, float sx,
                  float sy, float ox, float oy);

}  // namespace zrad::shape
