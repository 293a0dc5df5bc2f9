// zrutCloneImage: a deep copy of any image into a ZrGiRasterImageWrap.
#include <vector>

#include <zrad/image.h>
#include <zrplatform/memory.h>

void zrutCloneImage(ZrSmartPtr<ZrGiRasterImage>& result, ZrSmartPtr<ZrGiRasterImage> source) {
  result.reset();
  if (!source) return;
  const int width = source->pixelWidth(), height = source->pixelHeight();
  const int depth = source->colorDepth(), colors = source->numColors();
  const int rowSize = source->scanLineSize();
  if (width <= 0 || height <= 0 || depth <= 0 || depth > 32 || colors < 0 ||
      colors > kZrImageMaxPaletteEntries || rowSize <= 0 ||
      static_cast<long long>(width) * depth > 8LL * rowSize)
    return;
  const size_t bytes = static_cast<size_t>(rowSize) * static_cast<size_t>(height);
  unsigned char* pixels = static_cast<unsigned char*>(zrrxAlloc(bytes));
  if (!pixels) throw ZrError(Zrad::eOutOfMemory);

  ZrSmartPtr<ZrGiRasterImageWrap> copy = ZrRxObjectImpl<ZrGiRasterImageWrap>::createObject();
  copy->setPixels(pixels, width, height, depth, rowSize, /*owned=*/true);
  source->scanLines(pixels, 0, height);
  std::vector<uint32_t> palette(static_cast<size_t>(colors));
  for (int i = 0; i < colors; ++i) palette[static_cast<size_t>(i)] = source->color(i);
  copy->setPalette(palette.data(), colors);
  copy->setPixelFormat(source->pixelFormat());
  result = copy;
}
