// Lazy conversions: ZrGiImageColorBitsTransformer, zrutImageConvert and zrutHeightSwapImage.
#include <zrad/image.h>

ZR_RX_DEFINE_MEMBERS(ZrGiImageColorBitsTransformer, ZrGiInversionRasterTransformer,
                     L"ZrGiImageColorBitsTransformer")

ZrGiImageColorBitsTransformer::ZrGiImageColorBitsTransformer(ZrSmartPtr<ZrGiRasterImage> source,
                                                             unsigned int flags)
    : ZrGiInversionRasterTransformer(std::move(source)), m_flags(flags) {}

uint32_t ZrGiImageColorBitsTransformer::transformPixel(uint32_t pixel) const {
  if (!(m_flags & kZrImageChannelMap)) {
    if (m_flags & kZrImageOpaque) return pixel | 0xFF000000u;
    if (m_flags & kZrImageAlphaOnly) return pixel & 0xFF000000u;
    return pixel;
  }
  uint32_t result = 0;
  for (unsigned channel = 0; channel < 4; ++channel) {
    const unsigned source = (m_flags >> (8 + 2 * channel)) & 3u;
    const unsigned destination = (m_flags >> (16 + 2 * channel)) & 3u;
    uint32_t byte = (pixel >> (8 * source)) & 0xFFu;
    if (channel == 3 && (m_flags & kZrImageOpaque))
      byte = 0xFF;
    else if (channel == 3 && (m_flags & kZrImageAlphaOnly))
      byte = 0;
    result |= byte << (8 * destination);
  }
  return result;
}

ZrSmartPtr<ZrGiInversionRasterTransformer> ZrGiImageColorBitsTransformer::clone() const {
  return ZrRxObjectImpl<ZrGiImageColorBitsTransformer>::createObject(original(), m_flags);
}

ZrSmartPtr<ZrGiRasterImage> zrutHeightSwapImage(ZrSmartPtr<ZrGiRasterImage> image) {
  if (!image) return nullptr;
  return ZrRxObjectImpl<ZrGiUpsideDownRasterTransformer>::createObject(std::move(image));
}

ZrSmartPtr<ZrGiRasterImage> zrutImageConvert(ZrSmartPtr<ZrGiRasterImage> image,
                                             unsigned int flags) {
  if (!image) return nullptr;
  ZrSmartPtr<ZrGiRasterImage> result = image;
  if (flags & (kZrImageChannelMap | kZrImageOpaque | kZrImageAlphaOnly))
    result = ZrSmartPtr<ZrGiRasterImage>(
        ZrRxObjectImpl<ZrGiImageColorBitsTransformer>::createObject(std::move(image), flags));
  if (flags & kZrImageFlipRows) result = zrutHeightSwapImage(std::move(result));
  return result;
}
