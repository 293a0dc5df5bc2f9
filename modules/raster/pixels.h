// Reading the rows and pixels of any ZrGiRasterImage for the file writers.
#pragma once

#include <cstdint>
#include <vector>

#include <zrplatform/raster.h>

namespace zrraster {

// True for the depths whose pixels are palette indices (1 to 8 bits).
inline bool isIndexed(int depth) { return depth >= 1 && depth <= 8; }

// Reads one row at a time into a buffer of its own.
class RowReader {
 public:
  // valid() is false when the image's size, depth or row size cannot be read safely.
  explicit RowReader(const ZrGiRasterImage& image);
  bool valid() const { return m_valid; }
  int width() const { return m_width; }
  int height() const { return m_height; }
  int depth() const { return m_depth; }
  // Bytes that hold the pixels of one row (without the padding to whole words).
  size_t packedRowBytes() const;
  // Row r (0 is the top), valid until the next call.
  const uint8_t* row(int r);
  // Pixel x of a row of a 16-, 24- or 32-bit image as 0xAARRGGBB, each channel scaled to 8
  // bits; alpha is 0xFF when the format has no alpha.
  uint32_t argb(const uint8_t* row, int x) const;

 private:
  const ZrGiRasterImage& m_image;
  ZrGiRasterImage::tagPixelFormatInfo m_format;
  std::vector<uint8_t> m_row;
  int m_width = 0, m_height = 0, m_depth = 0;
  bool m_valid = false;
};

// The 2^depth palette entries of an indexed image as 0xAARRGGBB; entries the image lacks are
// black.
std::vector<uint32_t> fullPalette(const ZrGiRasterImage& image, int depth);

}  // namespace zrraster
