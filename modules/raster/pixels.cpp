// Reading rows and pixels for the file writers.
#include "pixels.h"

#include <cstring>

namespace zrraster {

namespace {

// The channel at `offset` with `bits` bits of `pixel`, scaled to 0..255; `absent` when bits is 0.
uint32_t channel(uint32_t pixel, unsigned offset, unsigned bits, uint32_t absent) {
  if (bits == 0 || offset >= 32) return absent;
  if (bits > 8) bits = 8;
  const uint32_t max = (1u << bits) - 1;
  const uint32_t value = (pixel >> offset) & max;
  return (value * 255 + max / 2) / max;
}

}  // namespace

RowReader::RowReader(const ZrGiRasterImage& image)
    : m_image(image),
      m_format(image.pixelFormat()),
      m_width(image.pixelWidth()),
      m_height(image.pixelHeight()),
      m_depth(image.colorDepth()) {
  const int rowSize = image.scanLineSize();
  if (m_width <= 0 || m_height <= 0 || m_depth <= 0 || m_depth > 32 || rowSize <= 0 ||
      static_cast<long long>(m_width) * m_depth > 8LL * rowSize)
    return;
  m_row.resize(static_cast<size_t>(rowSize));
  m_valid = true;
}

size_t RowReader::packedRowBytes() const {
  return (static_cast<size_t>(m_width) * static_cast<size_t>(m_depth) + 7) / 8;
}

const uint8_t* RowReader::row(int r) {
  std::memset(m_row.data(), 0, m_row.size());
  m_image.scanLines(m_row.data(), r, 1);
  return m_row.data();
}

uint32_t RowReader::argb(const uint8_t* row, int x) const {
  const size_t bytes = static_cast<size_t>(m_depth) / 8;
  uint32_t pixel = 0;
  std::memcpy(&pixel, row + static_cast<size_t>(x) * bytes, bytes);
  const ZrGiRasterImage::tagPixelFormatInfo& f = m_format;
  return channel(pixel, f.alphaOffset, f.numAlphaBits, 0xFF) << 24 |
         channel(pixel, f.redOffset, f.numRedBits, 0) << 16 |
         channel(pixel, f.greenOffset, f.numGreenBits, 0) << 8 |
         channel(pixel, f.blueOffset, f.numBlueBits, 0);
}

std::vector<uint32_t> fullPalette(const ZrGiRasterImage& image, int depth) {
  std::vector<uint32_t> palette(size_t{1} << depth, 0xFF000000u);
  const int count = image.numColors();
  for (int i = 0; i < count && static_cast<size_t>(i) < palette.size(); ++i)
    palette[static_cast<size_t>(i)] = image.color(i);
  return palette;
}

}  // namespace zrraster
