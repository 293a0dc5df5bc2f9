// Raster images: the class descriptors, row sizes and the transforming wrappers.
#include "zrplatform/raster.h"

#include <climits>
#include <cstring>

ZR_RX_DEFINE_MEMBERS(ZrGiRasterImage, ZrRxObject, L"ZrGiRasterImage")
ZR_RX_DEFINE_MEMBERS(ZrGiRasterTransformer, ZrGiRasterImage, L"ZrGiRasterTransformer")
ZR_RX_DEFINE_MEMBERS(ZrGiInversionRasterTransformer, ZrGiRasterTransformer,
                     L"ZrGiInversionRasterTransformer")
ZR_RX_DEFINE_MEMBERS(ZrGiUpsideDownRasterTransformer, ZrGiRasterTransformer,
                     L"ZrGiUpsideDownRasterTransformer")

bool ZrGiRasterImage::tagPixelFormatInfo::operator==(const tagPixelFormatInfo& o) const {
  return redOffset == o.redOffset && numRedBits == o.numRedBits &&
         greenOffset == o.greenOffset && numGreenBits == o.numGreenBits &&
         blueOffset == o.blueOffset && numBlueBits == o.numBlueBits &&
         alphaOffset == o.alphaOffset && numAlphaBits == o.numAlphaBits &&
         colorModel == o.colorModel;
}

int ZrGiRasterImage::scanLineSize() const { return zrGiScanLineSize(pixelWidth(), colorDepth()); }

int zrGiScanLineSize(int width, int depth) {
  if (width <= 0 || depth <= 0) return -1;
  long long bytes = (static_cast<long long>(width) * depth + 31) / 32 * 4;
  return bytes > INT_MAX ? -1 : static_cast<int>(bytes);
}

ZrGiRasterTransformer::ZrGiRasterTransformer(ZrSmartPtr<ZrGiRasterImage> source)
    : m_source(std::move(source)) {
  zrAssert(m_source, "source != nullptr");
}

ZrGiInversionRasterTransformer::ZrGiInversionRasterTransformer(ZrSmartPtr<ZrGiRasterImage> source)
    : ZrGiRasterTransformer(std::move(source)) {}

uint32_t ZrGiInversionRasterTransformer::transformPixel(uint32_t pixel) const {
  return pixel ^ 0x00FFFFFFu;
}

ZrSmartPtr<ZrGiInversionRasterTransformer> ZrGiInversionRasterTransformer::clone() const {
  return ZrRxObjectImpl<ZrGiInversionRasterTransformer>::createObject(original());
}

uint32_t ZrGiInversionRasterTransformer::color(int index) const {
  if (index < 0 || index >= numColors()) return 0;
  return transformPixel(original()->color(index));
}

void ZrGiInversionRasterTransformer::scanLines(uint8_t* buffer, int firstScanline,
                                               int numLines) const {
  original()->scanLines(buffer, firstScanline, numLines);
  const int height = pixelHeight(), width = pixelWidth(), rowSize = scanLineSize();
  // Palette images change their entries instead; a source whose rows cannot hold its width
  // is left as it is rather than written past its rows.
  if (colorDepth() != 32 || numColors() > 0 || width <= 0 || rowSize / 4 < width) return;
  const size_t pixels = static_cast<size_t>(width);
  for (int r = 0; r < numLines; ++r) {
    const long long row = static_cast<long long>(firstScanline) + r;
    if (row >= 0 && row < height)
      transformRow(buffer + static_cast<size_t>(r) * static_cast<size_t>(rowSize), pixels);
  }
}

void ZrGiInversionRasterTransformer::transformRow(uint8_t* row, size_t count) const {
  for (size_t i = 0; i < count; ++i, row += 4) {
    uint32_t v;
    std::memcpy(&v, row, 4);
    v = transformPixel(v);
    std::memcpy(row, &v, 4);
  }
}

ZrGiUpsideDownRasterTransformer::ZrGiUpsideDownRasterTransformer(
    ZrSmartPtr<ZrGiRasterImage> source)
    : ZrGiRasterTransformer(std::move(source)) {}

void ZrGiUpsideDownRasterTransformer::scanLines(uint8_t* buffer, int firstScanline,
                                                int numLines) const {
  const int height = pixelHeight();
  const size_t rowSize = static_cast<size_t>(scanLineSize());
  for (int r = 0; r < numLines; ++r) {
    const long long row = static_cast<long long>(firstScanline) + r;
    if (row < 0 || row >= height) continue;
    original()->scanLines(buffer + static_cast<size_t>(r) * rowSize,
                          height - 1 - static_cast<int>(row), 1);
  }
}
