// PNG files through libpng, one row at a time.
//
// libpng reports errors by longjmp, so the function that calls setjmp owns no C++ object whose
// destructor a jump would skip: the buffers live in the caller.
#include <png.h>

#include <csetjmp>
#include <vector>

#include "pixels.h"
#include "writers.h"

namespace zrraster {

namespace {

// libpng must not print; the jump back to encode() reports the error.
void onPngError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void onPngWarning(png_structp, png_const_charp) {}

struct PngLayout {
  int colorType;
  int bitDepth;
  size_t rowBytes;
};

// Fills `out` with row r as the PNG stores it.
void convertRow(RowReader& reader, const PngLayout& layout, int r, std::vector<png_byte>& out) {
  const uint8_t* row = reader.row(r);
  if (layout.colorType == PNG_COLOR_TYPE_PALETTE) {
    out.assign(row, row + layout.rowBytes);
    return;
  }
  const bool alpha = layout.colorType == PNG_COLOR_TYPE_RGB_ALPHA;
  png_byte* p = out.data();
  for (int x = 0; x < reader.width(); ++x) {
    const uint32_t c = reader.argb(row, x);
    *p++ = static_cast<png_byte>(c >> 16);
    *p++ = static_cast<png_byte>(c >> 8);
    *p++ = static_cast<png_byte>(c);
    if (alpha) *p++ = static_cast<png_byte>(c >> 24);
  }
}

bool encode(RowReader& reader, const PngLayout& layout, const std::vector<png_color>& palette,
            std::vector<png_byte>& rowBuffer, FILE* out) {
  png_structp png =
      png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onPngError, onPngWarning);
  if (!png) return false;
  png_infop info = png_create_info_struct(png);
  if (!info || setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, out);
  png_set_IHDR(png, info, static_cast<png_uint_32>(reader.width()),
               static_cast<png_uint_32>(reader.height()), layout.bitDepth, layout.colorType,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (!palette.empty()) png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
  png_write_info(png, info);
  for (int r = 0; r < reader.height(); ++r) {
    convertRow(reader, layout, r, rowBuffer);
    png_write_row(png, rowBuffer.data());
  }
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

bool writePng(const ZrGiRasterImage& image, FILE* out) {
  RowReader reader(image);
  if (!reader.valid()) return false;
  const int depth = reader.depth();
  PngLayout layout{};
  std::vector<png_color> palette;
  if (depth == 1 || depth == 2 || depth == 4 || depth == 8) {
    layout = {PNG_COLOR_TYPE_PALETTE, depth, reader.packedRowBytes()};
    for (uint32_t c : fullPalette(image, depth))
      palette.push_back({static_cast<png_byte>(c >> 16), static_cast<png_byte>(c >> 8),
                         static_cast<png_byte>(c)});
  } else if (depth == 16 || depth == 24 || (depth == 32 && image.pixelFormat().numAlphaBits == 0)) {
    layout = {PNG_COLOR_TYPE_RGB, 8, static_cast<size_t>(reader.width()) * 3};
  } else if (depth == 32) {
    layout = {PNG_COLOR_TYPE_RGB_ALPHA, 8, static_cast<size_t>(reader.width()) * 4};
  } else {
    return false;
  }
  std::vector<png_byte> rowBuffer(layout.rowBytes);
  return encode(reader, layout, palette, rowBuffer, out);
}

}  // namespace zrraster
