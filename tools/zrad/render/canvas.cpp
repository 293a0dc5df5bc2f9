// Placing shapes on a canvas and writing the canvas as SVG text or PNG pixels.
#include "canvas.h"

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>

#include <zrad/image.h>

#include "cairo_context.h"
#include "svg_context.h"

namespace zradtool {

namespace {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Cairo = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

// Cairo keeps colours multiplied by alpha; image files want them straight.
void unpremultiply(unsigned char* pixels, int width, int height, int stride) {
  for (int y = 0; y < height; ++y) {
    unsigned char* row = pixels + size_t(y) * size_t(stride);
    for (int x = 0; x < width; ++x) {
      uint32_t p;
      std::memcpy(&p, row + 4 * x, 4);
      const uint32_t a = p >> 24;
      if (a == 0 || a == 255) continue;
      auto channel = [&](int shift) { return ((p >> shift & 0xFF) * 255 + a / 2) / a << shift; };
      p = a << 24 | channel(16) | channel(8) | channel(0);
      std::memcpy(row + 4 * x, &p, 4);
    }
  }
}

}  // namespace

Placement placeOnCanvas(const ZrShape& shape, int size) {
  const float side = std::fmax(shape.width(), shape.height());
  const double k = side > 0 ? size / double(side) : 1.0;
  Placement at;
  at.width = shape.width() * k;
  at.height = shape.height() * k;
  at.x = float((size - at.width) / 2 + shape.baseX() * k);
  at.y = float((size - at.height) / 2 + shape.baseY() * k);
  if (!shape.recording()) return at;

  Surface ink(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr),
              cairo_surface_destroy);
  {
    Cairo cr(cairo_create(ink.get()), cairo_destroy);
    CairoContext context(cr.get());
    shape.draw(&context, at.x, at.y, at.width, at.height);
  }
  double x, y, w, h;
  cairo_recording_surface_ink_extents(ink.get(), &x, &y, &w, &h);
  if (w > 0 && h > 0) {
    at.x += float(std::round(size / 2.0 - (x + w / 2)));
    at.y += float(std::round(size / 2.0 - (y + h / 2)));
  }
  return at;
}

bool writeSvg(const ZrShape& shape, const std::string& path, int size, unsigned background) {
  SvgContext svg(size, background);
  const Placement at = placeOnCanvas(shape, size);
  if (shape.recording()) shape.draw(&svg, at.x, at.y, at.width, at.height);
  std::ofstream out(path, std::ios::binary);
  out << svg.document();
  out.close();
  return bool(out);
}

bool writePng(const ZrShape& shape, const std::string& path, int size, unsigned background) {
  const int stride = cairo_format_stride_for_width(CAIRO_FORMAT_ARGB32, size);
  if (stride <= 0) return false;
  std::unique_ptr<unsigned char[]> pixels(new (std::nothrow)
                                              unsigned char[size_t(stride) * size_t(size)]());
  if (!pixels) return false;
  {
    Surface surface(cairo_image_surface_create_for_data(pixels.get(), CAIRO_FORMAT_ARGB32, size,
                                                        size, stride),
                    cairo_surface_destroy);
    Cairo cr(cairo_create(surface.get()), cairo_destroy);
    if (cairo_status(cr.get()) != CAIRO_STATUS_SUCCESS) return false;
    CairoContext context(cr.get());
    if (background >> 24) context.paint(background);
    const Placement at = placeOnCanvas(shape, size);
    if (shape.recording()) shape.draw(&context, at.x, at.y, at.width, at.height);
    cairo_surface_flush(surface.get());
  }
  unpremultiply(pixels.get(), size, size, stride);

  // Cairo's ARGB32 pixel is a native 32-bit word with alpha at bit 24, red 16, green 8, blue 0.
  ZrSmartPtr<ZrGiRasterImageWrap> image = ZrRxObjectImpl<ZrGiRasterImageWrap>::createObject();
  if (!image->setPixels(pixels.get(), size, size, 32, stride)) return false;
  ZrGiRasterImage::tagPixelFormatInfo format;
  format.redOffset = 16, format.greenOffset = 8, format.blueOffset = 0, format.alphaOffset = 24;
  format.numRedBits = format.numGreenBits = format.numBlueBits = format.numAlphaBits = 8;
  format.colorModel = 32;
  image->setPixelFormat(format);
  return zrutSaveImage(image, ZrString(ZrUtf8String(path.c_str())), kZrImageFilePng) == 1;
}

}  // namespace zradtool
