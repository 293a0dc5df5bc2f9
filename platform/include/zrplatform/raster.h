// Raster images: ZrGiRasterImage, its scanline interface and the transforming wrappers.
//
// An image answers questions about its size, colour depth, palette and pixel format and copies
// rows of pixels out on request. Transformers present a source image through a change made while
// rows are read; they never hold a converted copy. The classes here leave the reference count
// open; instantiate them with ZrRxObjectImpl:
//   ZrRxObjectImpl<ZrGiUpsideDownRasterTransformer>::createObject(source)
//
// Pixel layout in a row: rows start at the top of the picture. Depths below 8 pack pixels from
// the most significant bit of each byte; 16-, 24- and 32-bit pixels are little-endian words, so
// with the usual format a 32-bit pixel 0xAARRGGBB lies in memory as B, G, R, A.
#pragma once

#include <cstddef>
#include <cstdint>

#include "export.h"
#include "rxobject.h"

class ZRPLATFORM_EXPORT ZrGiRasterImage : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrGiRasterImage);

  // Where each colour channel lies inside a pixel word, and the colour-model word.
  struct tagPixelFormatInfo {
    uint8_t redOffset = 0;
    uint8_t numRedBits = 0;
    uint8_t greenOffset = 0;
    uint8_t numGreenBits = 0;
    uint8_t blueOffset = 0;
    uint8_t numBlueBits = 0;
    uint8_t alphaOffset = 0;
    uint8_t numAlphaBits = 0;
    uint32_t colorModel = 0;

    bool operator==(const tagPixelFormatInfo& o) const;
    bool operator!=(const tagPixelFormatInfo& o) const { return !(*this == o); }
  };

  virtual int pixelWidth() const = 0;
  virtual int pixelHeight() const = 0;
  // Bits per pixel.
  virtual int colorDepth() const = 0;
  // Palette entries; 0 when the image has no palette.
  virtual int numColors() const = 0;
  // Palette entry `index` as 0xAARRGGBB; 0 when `index` is out of range.
  virtual uint32_t color(int index) const = 0;
  virtual tagPixelFormatInfo pixelFormat() const = 0;
  // Bytes of one row as scanLines() hands it out. The default is zrGiScanLineSize().
  virtual int scanLineSize() const;
  // Copies rows firstScanline .. firstScanline + numLines - 1, each scanLineSize() bytes, one
  // after the other into `buffer`. Rows outside 0 .. pixelHeight() - 1 are not written.
  virtual void scanLines(uint8_t* buffer, int firstScanline, int numLines) const = 0;

 protected:
  ZrGiRasterImage() = default;
};

// Bytes of a row of `width` pixels at `depth` bits, rounded up to whole 32-bit words;
// -1 when width or depth is not positive or the size does not fit an int.
//   (3, 24) => 12     (3, 32) => 12     (9, 1) => 4     (0, 8) => -1
ZRPLATFORM_EXPORT int zrGiScanLineSize(int width, int depth);

// A source image presented through a change of its rows; everything the change leaves alone is
// asked of the source.
class ZRPLATFORM_EXPORT ZrGiRasterTransformer : public ZrGiRasterImage {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrGiRasterTransformer);

  // `source` must not be null.
  explicit ZrGiRasterTransformer(ZrSmartPtr<ZrGiRasterImage> source);
  const ZrSmartPtr<ZrGiRasterImage>& original() const { return m_source; }

  int pixelWidth() const override { return m_source->pixelWidth(); }
  int pixelHeight() const override { return m_source->pixelHeight(); }
  int colorDepth() const override { return m_source->colorDepth(); }
  int numColors() const override { return m_source->numColors(); }
  uint32_t color(int index) const override { return m_source->color(index); }
  tagPixelFormatInfo pixelFormat() const override { return m_source->pixelFormat(); }
  int scanLineSize() const override { return m_source->scanLineSize(); }
  void scanLines(uint8_t* buffer, int firstScanline, int numLines) const override {
    m_source->scanLines(buffer, firstScanline, numLines);
  }

 private:
  ZrSmartPtr<ZrGiRasterImage> m_source;
};

// Passes every pixel through transformPixel(): each pixel of a 32-bit image as it is read, and
// each palette entry of an image with a palette. Pixels of other depths pass unchanged.
// The base transform inverts the colour channels: 0xAARRGGBB => 0xAA(~RR)(~GG)(~BB).
class ZRPLATFORM_EXPORT ZrGiInversionRasterTransformer : public ZrGiRasterTransformer {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrGiInversionRasterTransformer);

  explicit ZrGiInversionRasterTransformer(ZrSmartPtr<ZrGiRasterImage> source);

  virtual uint32_t transformPixel(uint32_t pixel) const;
  // A new transformer of the same kind and settings over the same source (count 1).
  virtual ZrSmartPtr<ZrGiInversionRasterTransformer> clone() const;

  uint32_t color(int index) const override;
  void scanLines(uint8_t* buffer, int firstScanline, int numLines) const override;

 protected:
  // Transforms `count` 32-bit pixels of one row in place; the base calls transformPixel() on
  // each. A subclass may override it with a faster loop that gives the same pixels.
  virtual void transformRow(uint8_t* row, size_t count) const;
};

// Presents the source with its rows in reverse order: row r is the source's row height-1-r.
class ZRPLATFORM_EXPORT ZrGiUpsideDownRasterTransformer : public ZrGiRasterTransformer {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrGiUpsideDownRasterTransformer);

  explicit ZrGiUpsideDownRasterTransformer(ZrSmartPtr<ZrGiRasterImage> source);

  void scanLines(uint8_t* buffer, int firstScanline, int numLines) const override;
};

// The 256-entry drawing palette for dark backgrounds, entries 0xFFRRGGBB: 0 black (the
// background), 1-7 red, yellow, green, cyan, blue, magenta, white, 8 and 9 greys, 10-249 twenty
// four hues in ten shades each, 250-255 a grey ramp.
ZRPLATFORM_EXPORT const uint32_t* zrGiDarkBackgroundPalette();
