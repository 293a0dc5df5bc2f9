// Raster image helpers: wrapping raw pixels, lazy conversion and flipping, deep copies, saving.
//
// Conversions and flips return wrappers that change each row as it is read; nothing is copied
// until zrutCloneImage. Saving goes through the loadable "ZrRaster" module.
#pragma once

#include <cstdint>

#include <zrplatform/raster.h>
#include <zrplatform/strings.h>

#include "export.h"

// The most palette entries an image may have: the 2^15 that depth 15, the deepest with a
// palette, can index.
constexpr int kZrImageMaxPaletteEntries = 1 << 15;

// An image over a pixel buffer in memory. Rows lie `pitch` bytes apart; row r of the picture
// starts at offset + (firstRow + r) * pitch. The palette is always the wrap's own copy; the
// pixel buffer is freed with zrrxFree when the wrap dies only when it was handed over as owned.
class ZRAD_EXPORT ZrGiRasterImageWrap : public ZrGiRasterImage {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrGiRasterImageWrap);

  ZrGiRasterImageWrap() = default;
  ~ZrGiRasterImageWrap() override;
  ZrGiRasterImageWrap(const ZrGiRasterImageWrap&) = delete;
  ZrGiRasterImageWrap& operator=(const ZrGiRasterImageWrap&) = delete;

  // Points the image at `pixels`. A pitch of 0 is zrGiScanLineSize(width, depth). With `owned`
  // the buffer (from zrrxAlloc) becomes the wrap's. Returns false, changing nothing, when the
  // buffer is null, width, height or depth is not positive, depth is above 32, the offset, first
  // row or pitch is negative, or the pitch is shorter than a row of pixels.
  bool setPixels(unsigned char* pixels, int width, int height, int depth, int pitch = 0,
                 bool owned = false, int offset = 0, int firstRow = 0);
  // Copies `count` entries (0xAARRGGBB); null or a count of 0 leaves no palette. Returns false,
  // changing nothing, for a negative count, a count above kZrImageMaxPaletteEntries or a null
  // `palette` with entries.
  bool setPalette(const uint32_t* palette, int count);
  void setPixelFormat(const tagPixelFormatInfo& format) { m_format = format; }

  int pixelWidth() const override { return m_width; }
  int pixelHeight() const override { return m_height; }
  int colorDepth() const override { return m_depth; }
  int numColors() const override { return m_paletteCount; }
  uint32_t color(int index) const override;
  tagPixelFormatInfo pixelFormat() const override { return m_format; }
  int scanLineSize() const override { return m_pitch; }
  void scanLines(uint8_t* buffer, int firstScanline, int numLines) const override;
  // The first row in memory; null when no pixels are set.
  const uint8_t* firstScanLine() const;

 private:
  void freePixels();

  tagPixelFormatInfo m_format;
  int m_depth = 0;
  int m_paletteCount = 0;
  uint32_t* m_palette = nullptr;
  unsigned char* m_pixels = nullptr;
  int m_offset = 0;
  int m_firstRow = 0;
  int m_width = 0;
  int m_height = 0;
  int m_pitch = 0;
  bool m_owned = false;
};

// Conversion flags of zrutImageConvert and ZrGiImageColorBitsTransformer.
enum ZrImageConvertFlags : unsigned int {
  kZrImageFlipRows = 0x1,    // upside down, applied after any pixel change
  kZrImageOpaque = 0x2,      // alpha byte (or mapped channel 3) set to 0xFF
  kZrImageAlphaOnly = 0x4,   // no map: keep only the alpha byte; with a map: channel 3 is 0
  kZrImageChannelMap = 0xFFFF00,  // bits 8-15 channel sources, 16-23 destinations (2 bits each)
  // Sources 2, 1, 0, 3 to destinations 0, 1, 2, 3: red and blue change places.
  kZrImageSwapRedBlue = (2u << 8) | (1u << 10) | (0u << 12) | (3u << 14) |
                        (0u << 16) | (1u << 18) | (2u << 20) | (3u << 22),
};

// Converts each 32-bit pixel (and each palette entry) with the conversion flags:
//   flags 0x2,  0x11223344 => 0xFF223344
//   flags 0x4,  0x11223344 => 0x11000000
//   kZrImageSwapRedBlue, 0x11223344 => 0x11443322
// With a channel map, channels 0-2 carry the source byte each names to the destination byte
// each names (bytes landing on one destination are or-ed); channel 3 is 0xFF with 0x2, else 0
// with 0x4, else carried like the others. Bit 0 is not applied here.
class ZRAD_EXPORT ZrGiImageColorBitsTransformer : public ZrGiInversionRasterTransformer {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrGiImageColorBitsTransformer);

  ZrGiImageColorBitsTransformer(ZrSmartPtr<ZrGiRasterImage> source, unsigned int flags);
  unsigned int flags() const { return m_flags; }

  uint32_t transformPixel(uint32_t pixel) const override;
  ZrSmartPtr<ZrGiInversionRasterTransformer> clone() const override;

 protected:
  void transformRow(uint8_t* row, size_t count) const override;

 private:
  // The flags compiled into at most four byte moves, one per distinct rotation: a pixel becomes
  // the or of rotl(pixel, rotate) and mask over the moves, or-ed with setBits.
  struct Moves {
    int count = 0;
    struct {
      unsigned rotate;
      uint32_t mask;
    } move[4] = {};
    uint32_t setBits = 0;
    void add(unsigned rotate, uint32_t mask);
    uint32_t apply(uint32_t pixel) const;
  };
  unsigned int m_flags;
  Moves m_moves;
};

// A ZrGiRasterImageWrap over the caller's pixels (not copied, not owned; they must outlive the
// image). Depth 0 is taken as 1. Palette: `paletteCount` entries copied from `palette` when the
// count is above 0; otherwise (0 or negative) depth 1 gets black and white, depth 4 the 16 standard colours,
// depth 8 zrGiDarkBackgroundPalette(), other depths below 16 a zero-filled palette of 2^depth
// entries, depths from 16 up none. Format: `format` when given; otherwise depth 24 has red at
// 16, green at 8, blue at 0 (8 bits each), depth 16 has 5 bits each at 10, 5 and 0, and every
// other depth the 24-bit layout plus alpha at 24 (8 bits) and colour model 32.
// Null when `pixels` is null, width or height is not positive, depth is negative or above 32,
// paletteCount is above kZrImageMaxPaletteEntries, or paletteCount is above 0 with a null
// `palette`.
ZRAD_EXPORT ZrSmartPtr<ZrGiRasterImage> zrutImageWrap(unsigned char* pixels, int width,
                                                      int height, int depth,
                                                      unsigned int* palette, int paletteCount,
                                                      ZrGiRasterImage::tagPixelFormatInfo* format);

// A lazily converted view of `image`: a ZrGiImageColorBitsTransformer holding `flags` when a
// channel map, 0x2 or 0x4 is given, otherwise the image itself; with 0x1 that result is then
// turned upside down. Null for a null image.
//   flags 0 => the very same object     flags 1 => flipped view     flags 3 => opaque, flipped
ZRAD_EXPORT ZrSmartPtr<ZrGiRasterImage> zrutImageConvert(ZrSmartPtr<ZrGiRasterImage> image,
                                                         unsigned int flags);

// `image` upside down (a ZrGiUpsideDownRasterTransformer); null for a null image.
ZRAD_EXPORT ZrSmartPtr<ZrGiRasterImage> zrutHeightSwapImage(ZrSmartPtr<ZrGiRasterImage> image);

// A deep copy: a new ZrGiRasterImageWrap that owns a copy of every row of `source` (read
// through its scanline interface) and of its palette, with the same size, depth and format.
// `result` becomes null when the source is null, reports a size, depth (1-32) or row size that
// is not usable, or more than kZrImageMaxPaletteEntries palette entries.
ZRAD_EXPORT void zrutCloneImage(ZrSmartPtr<ZrGiRasterImage>& result,
                                ZrSmartPtr<ZrGiRasterImage> source);

// File formats of zrutSaveImage, as the "ZrRaster" module numbers them.
enum ZrImageFileFormat : int {
  kZrImageFileByExtension = 0,  // ".png" or ".bmp" (letter case ignored) picks the format
  kZrImageFileBmp = 1,          // depths 1, 4, 8 (palette), 16, 24, 32; bottom-up, no compression
  kZrImageFilePng = 2,          // depths 1, 2, 4, 8 (palette), 16, 24 (RGB), 32 (RGBA)
};

// Saves `image` to `path` through the "ZrRaster" module and returns the module's result: 1 when
// the file is written, 0 when it is not (unknown format or extension, a depth the format cannot
// hold, a write failure; an existing file then stays as it was). 0 when the module cannot be
// found or loaded, or `image` is null.
ZRAD_EXPORT int zrutSaveImage(ZrSmartPtr<ZrGiRasterImage> image, const ZrString& path,
                              int format);
