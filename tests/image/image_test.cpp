// Image wraps, lazy conversions and flips, clones and the dark-background palette.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <vector>

#include <zrad/image.h>

namespace {

using Format = ZrGiRasterImage::tagPixelFormatInfo;

// Every row of `image`, as its scanline interface hands them out.
std::vector<uint8_t> rows(const ZrSmartPtr<ZrGiRasterImage>& image) {
  std::vector<uint8_t> out(size_t(image->scanLineSize()) * size_t(image->pixelHeight()));
  image->scanLines(out.data(), 0, image->pixelHeight());
  return out;
}

std::vector<uint32_t> pixels32(const ZrSmartPtr<ZrGiRasterImage>& image) {
  std::vector<uint8_t> bytes = rows(image);
  std::vector<uint32_t> out(bytes.size() / 4);
  std::memcpy(out.data(), bytes.data(), bytes.size());
  return out;
}

TEST(ImageWrap, DefaultPalettesAndFormatsByDepth) {
  unsigned char pixels[64] = {};
  const Format argb = Format{16, 8, 8, 8, 0, 8, 24, 8, 32};
  struct Row { int depth, reportedDepth, colors; uint32_t first, eighth; Format format; };
  const Row table[] = {
      {0, 1, 2, 0xFF000000, 0, argb},
      {1, 1, 2, 0xFF000000, 0, argb},
      {3, 3, 8, 0, 0, argb},
      {4, 4, 16, 0xFF000000, 0xFFFFFFFF, argb},
      {8, 8, 256, zrGiDarkBackgroundPalette()[0], zrGiDarkBackgroundPalette()[7], argb},
      {12, 12, 4096, 0, 0, argb},
      {16, 16, 0, 0, 0, Format{10, 5, 5, 5, 0, 5, 0, 0, 0}},
      {24, 24, 0, 0, 0, Format{16, 8, 8, 8, 0, 8, 0, 0, 0}},
      {32, 32, 0, 0, 0, argb},
  };
  for (size_t i = 0; i < std::size(table); ++i) {
    const Row& row = table[i];
    ZrSmartPtr<ZrGiRasterImage> image = zrutImageWrap(pixels, 3, 2, row.depth, nullptr, 0, nullptr);
    ASSERT_TRUE(image) << "row " << i;
    EXPECT_EQ(image->colorDepth(), row.reportedDepth) << "row " << i;
    EXPECT_EQ(image->numColors(), row.colors) << "row " << i;
    EXPECT_EQ(image->color(0), row.first) << "row " << i;
    EXPECT_EQ(image->color(7), row.eighth) << "row " << i;
    EXPECT_EQ(image->color(row.colors), 0u) << "row " << i;
    EXPECT_TRUE(image->pixelFormat() == row.format) << "row " << i;
    EXPECT_EQ(image->scanLineSize(), zrGiScanLineSize(3, row.reportedDepth)) << "row " << i;
  }
  EXPECT_EQ(zrutImageWrap(pixels, 1, 1, 1, nullptr, 0, nullptr)->color(1), 0xFFFFFFFFu);
  EXPECT_EQ(zrutImageWrap(pixels, 1, 1, 4, nullptr, -1, nullptr)->numColors(), 16);
}

TEST(ImageWrap, CopiesWhatItIsGivenAndRefusesBadInput) {
  unsigned char pixels[16] = {};
  unsigned int palette[3] = {0xFF102030, 0xFF405060, 0x00708090};
  Format custom = Format{0, 8, 8, 8, 16, 8, 24, 8, 7};
  ZrSmartPtr<ZrGiRasterImage> image = zrutImageWrap(pixels, 2, 2, 8, palette, 3, &custom);
  palette[0] = 0, custom.colorModel = 0;
  ASSERT_TRUE(image);
  EXPECT_EQ(image->numColors(), 3);
  EXPECT_EQ(image->color(0), 0xFF102030u);
  EXPECT_EQ(image->pixelFormat().colorModel, 7u);

  struct Row { unsigned char* pixels; int width, height, depth; unsigned int* palette; int count; };
  const Row refused[] = {
      {nullptr, 2, 2, 8, nullptr, 0}, {pixels, 0, 2, 8, nullptr, 0},
      {pixels, 2, -1, 8, nullptr, 0}, {pixels, 2, 2, -8, nullptr, 0},
      {pixels, 2, 2, 64, nullptr, 0}, {pixels, 2, 2, 33, nullptr, 0},
      {pixels, 2, 2, 8, nullptr, 2},  {pixels, 2, 2, 8, palette, kZrImageMaxPaletteEntries + 1},
      {pixels, 1 << 30, 1 << 30, 32, nullptr, 0},
  };
  for (size_t i = 0; i < std::size(refused); ++i) {
    const Row& r = refused[i];
    EXPECT_FALSE(zrutImageWrap(r.pixels, r.width, r.height, r.depth, r.palette, r.count, nullptr))
        << "row " << i;
  }
}

TEST(ImageWrap, ScanLinesHonourOffsetFirstRowAndPitch) {
  // Rows of 6 bytes (4 used), a 2-byte lead-in and one skipped row.
  unsigned char buffer[2 + 6 * 4];
  for (size_t i = 0; i < sizeof buffer; ++i) buffer[i] = uint8_t(i);
  ZrSmartPtr<ZrGiRasterImageWrap> wrap = ZrRxObjectImpl<ZrGiRasterImageWrap>::createObject();
  ASSERT_TRUE(wrap->setPixels(buffer, 1, 3, 32, 6, false, 2, 1));
  EXPECT_FALSE(wrap->setPixels(buffer, 2, 3, 32, 6));  // 8 bytes of pixels in a 6-byte row
  EXPECT_EQ(wrap->scanLineSize(), 6);

  std::vector<uint8_t> got(6 * 5, 0xEE);
  wrap->scanLines(got.data(), -1, 5);  // rows -1 and 3 do not exist and stay untouched
  for (int r = 0; r < 5; ++r)
    for (int b = 0; b < 6; ++b)
      EXPECT_EQ(got[size_t(r * 6 + b)], (r == 0 || r == 4) ? 0xEE : 2 + 6 * r + b) << r << "," << b;
}

TEST(ImageConvert, PixelTable) {
  const unsigned swap = kZrImageSwapRedBlue;
  // Channel 0 and 1 both into byte 0 (or-ed), channel 2 from byte 3 into byte 2, channel 3 kept.
  const unsigned merge = (0u << 8) | (1u << 10) | (3u << 12) | (3u << 14) | (0u << 16) |
                         (0u << 18) | (2u << 20) | (3u << 22);
  struct Row { unsigned flags; uint32_t in, out; } table[] = {
      {0x2, 0x11223344, 0xFF223344},     {0x4, 0x11223344, 0x11000000},
      {0x6, 0x11223344, 0xFF223344},     {swap, 0x11223344, 0x11443322},
      {swap | 0x2, 0x11223344, 0xFF443322}, {swap | 0x4, 0x11223344, 0x00443322},
      {swap | 0x6, 0x11223344, 0xFF443322}, {merge, 0x11220344, 0x11110047},
      {0x100, 0x11223344, 0x00000077},  // fields left 0 carry byte 0 to byte 0, all or-ed
  };
  for (size_t i = 0; i < std::size(table); ++i) {
    // Wide enough for the vectorised row loop and its tail.
    std::vector<uint32_t> row(37, table[i].in);
    ZrSmartPtr<ZrGiRasterImage> source = zrutImageWrap(reinterpret_cast<unsigned char*>(row.data()),
                                                       37, 1, 32, nullptr, 0, nullptr);
    ZrSmartPtr<ZrGiRasterImage> view = zrutImageConvert(source, table[i].flags);
    EXPECT_EQ(pixels32(view), std::vector<uint32_t>(37, table[i].out)) << "row " << i;
    EXPECT_EQ(row[0], table[i].in) << "row " << i << ": the source stays as it was";
    // Palette images convert their entries instead.
    unsigned int entry = table[i].in;
    unsigned char index = 0;
    ZrSmartPtr<ZrGiRasterImage> indexed = zrutImageWrap(&index, 1, 1, 8, &entry, 1, nullptr);
    EXPECT_EQ(zrutImageConvert(indexed, table[i].flags)->color(0), table[i].out) << "row " << i;
  }
}

TEST(ImageConvert, ViewsFlipsAndClasses) {
  uint32_t pixels[2 * 3] = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06};  // 2 wide, 3 high
  ZrSmartPtr<ZrGiRasterImage> image = zrutImageWrap(reinterpret_cast<unsigned char*>(pixels), 2,
                                                    3, 32, nullptr, 0, nullptr);
  EXPECT_EQ(zrutImageConvert(image, 0), image);
  EXPECT_FALSE(zrutImageConvert(nullptr, 3));
  EXPECT_FALSE(zrutHeightSwapImage(nullptr));

  EXPECT_EQ(pixels32(zrutImageConvert(image, 1)), (std::vector<uint32_t>{5, 6, 3, 4, 1, 2}));
  EXPECT_EQ(pixels32(zrutHeightSwapImage(image)), (std::vector<uint32_t>{5, 6, 3, 4, 1, 2}));
  ZrSmartPtr<ZrGiRasterImage> opaqueFlipped = zrutImageConvert(image, 3);
  const uint32_t o = 0xFF000000;
  const std::vector<uint32_t> opaque = {o | 5, o | 6, o | 3, o | 4, o | 1, o | 2};
  EXPECT_EQ(pixels32(opaqueFlipped), opaque);
  // Partial reads through the flip: rows 1..2 of the view are source rows 1..0.
  std::vector<uint32_t> part(4);
  opaqueFlipped->scanLines(reinterpret_cast<uint8_t*>(part.data()), 1, 2);
  EXPECT_EQ(part, (std::vector<uint32_t>{o | 3, o | 4, o | 1, o | 2}));

  ZrSmartPtr<ZrGiRasterImage> converted = zrutImageConvert(image, 0x2);
  EXPECT_TRUE(converted->isKindOf(ZrGiInversionRasterTransformer::desc()));
  EXPECT_TRUE(opaqueFlipped->isKindOf(ZrGiUpsideDownRasterTransformer::desc()));
  EXPECT_THROW(ZrSmartPtr<ZrGiRasterImageWrap>{converted}, ZrError);

  ZrSmartPtr<ZrGiImageColorBitsTransformer> bits(converted);
  ZrSmartPtr<ZrGiInversionRasterTransformer> copy = bits->clone();
  EXPECT_NE(copy.get(), bits.get());
  EXPECT_EQ(ZrSmartPtr<ZrGiImageColorBitsTransformer>(copy)->flags(), 0x2u);
  EXPECT_EQ(copy->original(), image);

  // The base transformer inverts the colour channels.
  ZrSmartPtr<ZrGiRasterImage> inverted =
      ZrRxObjectImpl<ZrGiInversionRasterTransformer>::createObject(image);
  EXPECT_EQ(pixels32(inverted)[0], 0x00FFFFFEu);
}

// An image whose answers are whatever the test says, to feed the clone bad figures.
class OddImage : public ZrGiRasterImage {
 public:
  int width = 2, height = 2, depth = 8, colors = 0, rowSize = 4;
  int pixelWidth() const override { return width; }
  int pixelHeight() const override { return height; }
  int colorDepth() const override { return depth; }
  int numColors() const override { return colors; }
  uint32_t color(int) const override { return 0; }
  tagPixelFormatInfo pixelFormat() const override { return {}; }
  int scanLineSize() const override { return rowSize; }
  void scanLines(uint8_t*, int, int) const override {}
};

TEST(ImageClone, DeepCopyOfAnyImage) {
  unsigned char pixels[4 * 2] = {1, 2, 3, 0, 4, 5, 6, 0};
  unsigned int palette[7] = {0xFF000001, 2, 3, 4, 5, 6, 0xFF000007};
  Format custom = Format{1, 5, 2, 5, 3, 5, 4, 6, 9};
  ZrSmartPtr<ZrGiRasterImage> source = zrutImageWrap(pixels, 3, 2, 8, palette, 7, &custom);
  ZrSmartPtr<ZrGiRasterImage> view = zrutImageConvert(source, 0x3);  // opaque and flipped

  ZrSmartPtr<ZrGiRasterImage> copy;
  zrutCloneImage(copy, view);
  pixels[0] = 99;  // the copy owns its rows
  ASSERT_TRUE(copy && copy->isKindOf(ZrGiRasterImageWrap::desc()));
  EXPECT_EQ(rows(copy), (std::vector<uint8_t>{4, 5, 6, 0, 1, 2, 3, 0}));
  EXPECT_EQ(copy->numColors(), 7);
  EXPECT_EQ(copy->color(1), 0xFF000002u);  // the view's palette, made opaque
  EXPECT_TRUE(copy->pixelFormat() == custom);
  EXPECT_EQ(copy->pixelWidth(), 3);

  zrutCloneImage(copy, nullptr);
  EXPECT_FALSE(copy);
  ZrSmartPtr<OddImage> odd = ZrRxObjectImpl<OddImage>::createObject();
  struct Row { int width, height, depth, colors, rowSize; } refused[] = {
      {0, 2, 8, 0, 4}, {2, -2, 8, 0, 4}, {2, 2, 0, 0, 4},  {2, 2, 64, 0, 16},
      {2, 2, 3, 0, 4}, {2, 2, 8, kZrImageMaxPaletteEntries + 1, 4}, {2, 2, 32, 0, 4}};
  for (size_t i = 0; i < std::size(refused); ++i) {
    const Row& r = refused[i];
    odd->width = r.width, odd->height = r.height, odd->depth = r.depth;
    odd->colors = r.colors, odd->rowSize = r.rowSize;
    zrutCloneImage(copy, odd);
    // Depth 3 with a 4-byte row is usable: the only row that clones.
    EXPECT_EQ(bool(copy), i == 4) << "row " << i;
  }
  // Rows too short for the width are passed through by conversions, never written past.
  odd->width = 2, odd->height = 1, odd->depth = 32, odd->colors = 0, odd->rowSize = 4;
  uint8_t row[4] = {1, 2, 3, 4};
  zrutImageConvert(odd, 0x2)->scanLines(row, 0, 1);
  EXPECT_EQ(row[3], 4);
}

TEST(DarkPalette, OpaqueDistinctAndAnchored) {
  const uint32_t* palette = zrGiDarkBackgroundPalette();
  std::set<uint32_t> seen(palette, palette + 256);
  EXPECT_EQ(seen.size(), 256u);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(palette[i] >> 24, 0xFFu) << "entry " << i;
  EXPECT_EQ(palette[0], 0xFF000000u);
  EXPECT_EQ(palette[1], 0xFFFF0000u);
  EXPECT_EQ(palette[7], 0xFFFFFFFFu);
}

}  // namespace
