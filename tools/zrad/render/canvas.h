// Shapes on a square canvas: where a shape lands, and the canvas written as SVG or PNG.
//
// Both writers place the shape the same way, so an SVG and a PNG of one shape at one size
// match pixel for pixel (up to the rasteriser's anti-aliasing).
#pragma once

#include <string>

#include <zrad/shape.h>

namespace zradtool {

// The arguments of ZrShape::draw.
struct Placement {
  float x = 0, y = 0;
  double width = 0, height = 0;
};

// `shape` scaled so that the larger side of its frame fills a size x size canvas, then moved
// by whole pixels so that the middle of what it draws (strokes included) is the canvas's
// middle. Frames are not always centred on their pictures (the ring of the built-in badges
// sits left of and above its frame's middle); whole pixels keep edges that fall on pixel
// boundaries crisp. A shape that draws nothing stays centred by its frame.
Placement placeOnCanvas(const ZrShape& shape, int size);

// `background` is 0xAABBGGRR and fills the canvas unless its alpha is 0. Both return false
// when the file cannot be written.
bool writeSvg(const ZrShape& shape, const std::string& path, int size, unsigned background);
// A 32-bit RGBA PNG, saved through zrutSaveImage and the "ZrRaster" module; false also when
// the module cannot be loaded or the canvas cannot be allocated.
bool writePng(const ZrShape& shape, const std::string& path, int size, unsigned background);

}  // namespace zradtool
