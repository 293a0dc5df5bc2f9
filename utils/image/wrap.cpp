// ZrGiRasterImageWrap, an image over a pixel buffer in memory, and zrutImageWrap.
#include <cstring>
#include <vector>

#include <zrad/image.h>
#include <zrplatform/memory.h>

ZR_RX_DEFINE_MEMBERS(ZrGiRasterImageWrap, ZrGiRasterImage, L"ZrGiRasterImageWrap")

namespace {

const uint32_t kStandardColors[16] = {
    0xFF000000, 0xFF0000FF, 0xFF00FFFF, 0xFF00FF00, 0xFFFFFF00, 0xFFFF0000,
    0xFFFF00FF, 0xFFFFFFFF, 0xFF808080, 0xFF0080FF, 0xFF80FF00, 0xFFFF0080,
    0xFF8000FF, 0xFF00FF80, 0xFFFF8000, 0xFF404040};
const uint32_t kBlackWhite[2] = {0xFF000000, 0xFFFFFFFF};

ZrGiRasterImage::tagPixelFormatInfo defaultFormat(int depth) {
  ZrGiRasterImage::tagPixelFormatInfo f;
  if (depth == 16) {
    f.redOffset = 10, f.greenOffset = 5, f.blueOffset = 0;
    f.numRedBits = f.numGreenBits = f.numBlueBits = 5;
    return f;
  }
  f.redOffset = 16, f.greenOffset = 8, f.blueOffset = 0;
  f.numRedBits = f.numGreenBits = f.numBlueBits = 8;
  if (depth != 24) {
    f.alphaOffset = 24, f.numAlphaBits = 8;
    f.colorModel = 32;
  }
  return f;
}

// Sets the palette a depth gets when the caller gives none.
bool setDefaultPalette(ZrGiRasterImageWrap& image, int depth) {
  if (depth >= 16) return true;
  switch (depth) {
    case 1: return image.setPalette(kBlackWhite, 2);
    case 4: return image.setPalette(kStandardColors, 16);
    case 8: return image.setPalette(zrGiDarkBackgroundPalette(), 256);
    default: {
      const std::vector<uint32_t> unset(size_t{1} << depth);
      return image.setPalette(unset.data(), 1 << depth);
    }
  }
}

}  // namespace

ZrGiRasterImageWrap::~ZrGiRasterImageWrap() {
  freePixels();
  delete[] m_palette;
}

void ZrGiRasterImageWrap::freePixels() {
  if (m_owned) zrrxFree(m_pixels);
  m_pixels = nullptr;
  m_owned = false;
}

bool ZrGiRasterImageWrap::setPixels(unsigned char* pixels, int width, int height, int depth,
                                    int pitch, bool owned, int offset, int firstRow) {
  if (!pixels || width <= 0 || height <= 0 || depth <= 0 || depth > 32 || pitch < 0 ||
      offset < 0 || firstRow < 0)
    return false;
  if (pitch == 0) pitch = zrGiScanLineSize(width, depth);
  if (pitch <= 0 || static_cast<long long>(width) * depth > 8LL * pitch) return false;
  if (pixels != m_pixels) freePixels();
  m_pixels = pixels;
  m_width = width, m_height = height, m_depth = depth, m_pitch = pitch;
  m_owned = owned, m_offset = offset, m_firstRow = firstRow;
  return true;
}

bool ZrGiRasterImageWrap::setPalette(const uint32_t* palette, int count) {
  if (count < 0 || count > kZrImageMaxPaletteEntries || (count > 0 && !palette)) return false;
  uint32_t* copy = count > 0 ? new uint32_t[static_cast<size_t>(count)] : nullptr;
  if (copy) std::memcpy(copy, palette, sizeof(uint32_t) * static_cast<size_t>(count));
  delete[] m_palette;
  m_palette = copy;
  m_paletteCount = count;
  return true;
}

uint32_t ZrGiRasterImageWrap::color(int index) const {
  return index >= 0 && index < m_paletteCount ? m_palette[index] : 0;
}

const uint8_t* ZrGiRasterImageWrap::firstScanLine() const {
  if (!m_pixels) return nullptr;
  return m_pixels + m_offset + static_cast<size_t>(m_firstRow) * static_cast<size_t>(m_pitch);
}

void ZrGiRasterImageWrap::scanLines(uint8_t* buffer, int firstScanline, int numLines) const {
  const uint8_t* first = firstScanLine();
  if (!first || !buffer) return;
  const size_t pitch = static_cast<size_t>(m_pitch);
  for (int r = 0; r < numLines; ++r) {
    const long long row = static_cast<long long>(firstScanline) + r;
    if (row < 0 || row >= m_height) continue;
    std::memcpy(buffer + static_cast<size_t>(r) * pitch, first + static_cast<size_t>(row) * pitch,
                pitch);
  }
}

ZrSmartPtr<ZrGiRasterImage> zrutImageWrap(unsigned char* pixels, int width, int height, int depth,
                                          unsigned int* palette, int paletteCount,
                                          ZrGiRasterImage::tagPixelFormatInfo* format) {
  if (depth == 0) depth = 1;
  ZrSmartPtr<ZrGiRasterImageWrap> image = ZrRxObjectImpl<ZrGiRasterImageWrap>::createObject();
  if (!image->setPixels(pixels, width, height, depth)) return nullptr;
  const bool paletteSet = paletteCount > 0 ? image->setPalette(palette, paletteCount)
                                           : setDefaultPalette(*image, depth);
  if (!paletteSet) return nullptr;
  image->setPixelFormat(format ? *format : defaultFormat(depth));
  return image;
}
