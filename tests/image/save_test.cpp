// Saving through the "ZrRaster" module: finding and hiding the module, PNG files read back by
// libpng and by an independent reader, BMP files recognised by file(1), refusals.
#include <gtest/gtest.h>
#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <zrad/image.h>
#include <zrplatform/module.h>

#include "common/testdir.h"

namespace {

// Output of a shell command; "" when it cannot be run.
std::string run(const std::string& command) {
  std::string out;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
    pclose(pipe);
  }
  return out;
}

// Makes the module findable from `directory` for the test's lifetime.
struct ModuleDirectory {
  explicit ModuleDirectory(const std::string& directory) { zrPushModuleSearchPath(directory); }
  ~ModuleDirectory() { zrPopModuleSearchPath(); }
};

// A test image: pixel (x, y) holds a value that differs between neighbours, at any depth.
struct Picture {
  int width, height, depth;
  std::vector<unsigned char> bytes;
  ZrSmartPtr<ZrGiRasterImage> image;

  Picture(int w, int h, int d, ZrGiRasterImage::tagPixelFormatInfo* format = nullptr)
      : width(w), height(h), depth(d), bytes(size_t(zrGiScanLineSize(w, d)) * size_t(h)) {
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = uint8_t(i * 37 + 11);
    image = zrutImageWrap(bytes.data(), w, h, d, nullptr, 0, format);
  }
  uint32_t word(int x, int y) const {
    const unsigned char* p = bytes.data() + size_t(y) * size_t(zrGiScanLineSize(width, depth)) +
                             size_t(x) * size_t(depth / 8);
    uint32_t v = 0;
    for (int b = 0; b < depth / 8; ++b) v |= uint32_t(p[b]) << (8 * b);
    return v;
  }
  unsigned index(int x, int y) const {
    const unsigned char* row = bytes.data() + size_t(y) * size_t(zrGiScanLineSize(width, depth));
    const int bit = x * depth;
    return (row[bit / 8] >> (8 - depth - bit % 8)) & ((1u << depth) - 1);
  }
  // Pixel (x, y) as libpng hands it back in RGBA.
  uint32_t expectedRgba(int x, int y) const {
    uint32_t argb;
    if (depth <= 8) {
      argb = image->color(int(index(x, y))) | 0xFF000000u;
    } else if (depth == 16) {
      const uint32_t v = word(x, y);
      auto scale = [](uint32_t c) { return (c * 255 + 15) / 31; };
      argb = 0xFF000000u | scale(v >> 10 & 31) << 16 | scale(v >> 5 & 31) << 8 | scale(v & 31);
    } else {
      argb = word(x, y);
      if (depth == 24 || image->pixelFormat().numAlphaBits == 0) argb |= 0xFF000000u;
    }
    return (argb >> 16 & 0xFF) | (argb & 0xFF00) | (argb & 0xFF) << 16 | (argb & 0xFF000000u);
  }
};

// The file read back by libpng's own reader as RGBA words (R in the low byte); empty on failure.
std::vector<uint32_t> readPng(const std::string& path) {
  png_image png = {};
  png.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&png, path.c_str())) return {};
  png.format = PNG_FORMAT_RGBA;
  std::vector<uint32_t> out(PNG_IMAGE_SIZE(png) / 4);
  if (!png_image_finish_read(&png, nullptr, out.data(), 0, nullptr)) return {};
  return out;
}

TEST(ImageSave, ModuleSearchOrderAndHiddenModule) {
  TestDir dir;
  Picture picture(4, 2, 24);
  const std::string pushedCopy = dir / "pushed/libZrRaster.so", envCopy = dir / "env/libZrRaster.so";
  for (const std::string& copy : {pushedCopy, envCopy})
    ASSERT_EQ(system(("mkdir -p \"$(dirname '" + copy + "')\" && cp '" ZRAD_RASTER_MODULE "' '" +
                      copy + "'").c_str()), 0);
  const char* saved = getenv("LD_LIBRARY_PATH");
  const std::string savedPath = saved ? saved : "";
  setenv("LD_LIBRARY_PATH", (dir.path() + "::" + dir / "env").c_str(), 1);
  EXPECT_EQ(zrLoadModule("ZrRaster", nullptr).path().str(), envCopy);
  {
    ModuleDirectory pushed(dir / "pushed");  // pushed directories come before LD_LIBRARY_PATH
    EXPECT_EQ(zrLoadModule("ZrRaster", nullptr).path().str(), pushedCopy);
    EXPECT_EQ(zrutSaveImage(picture.image, ZrString((dir / "a.png").c_str()), 0), 1);
    EXPECT_EQ(zrutSaveImage(nullptr, ZrString((dir / "b.png").c_str()), 0), 0);
    // Hidden: the module is in no directory searched any more.
    setenv("LD_LIBRARY_PATH", dir.path().c_str(), 1);
    std::remove(pushedCopy.c_str());
    EXPECT_EQ(zrutSaveImage(picture.image, ZrString((dir / "c.png").c_str()), 0), 0);
  }
  EXPECT_TRUE(exists(dir / "a.png"));
  EXPECT_FALSE(exists(dir / "b.png") || exists(dir / "c.png"));
  EXPECT_FALSE(zrLoadModule("../ZrRaster", nullptr).isLoaded());
  EXPECT_FALSE(zrLoadModule("", nullptr).isLoaded());
  saved ? setenv("LD_LIBRARY_PATH", savedPath.c_str(), 1) : unsetenv("LD_LIBRARY_PATH");
}

class ImageSaveFiles : public ::testing::Test {
 protected:
  std::string moduleDir() {
    std::string file = ZRAD_RASTER_MODULE;
    return file.substr(0, file.rfind('/'));
  }
  ModuleDirectory module{moduleDir()};
  TestDir dir;
};

TEST_F(ImageSaveFiles, PngAtEveryDepthReadsBack) {
  ZrGiRasterImage::tagPixelFormatInfo noAlpha{16, 8, 8, 8, 0, 8, 0, 0, 0};
  // The oracle's header: width height bit-depth colour-type palette-entries.
  struct Row { int depth; ZrGiRasterImage::tagPixelFormatInfo* format; std::string header; };
  const Row table[] = {
      {1, nullptr, "5 3 1 3 2"},   {2, nullptr, "5 3 2 3 4"},   {4, nullptr, "5 3 4 3 16"},
      {8, nullptr, "5 3 8 3 256"}, {16, nullptr, "5 3 8 2 0"},  {24, nullptr, "5 3 8 2 0"},
      {32, nullptr, "5 3 8 6 0"},  {32, &noAlpha, "5 3 8 2 0"},
  };
  const bool python = system("/usr/bin/python3 -c pass 2>/dev/null") == 0;
  for (size_t i = 0; i < std::size(table); ++i) {
    const Row& row = table[i];
    Picture picture(5, 3, row.depth, row.format);
    const std::string path = dir / ("d" + std::to_string(i) + ".png");
    ASSERT_EQ(zrutSaveImage(picture.image, ZrString(path.c_str()), kZrImageFilePng), 1) << i;
    std::vector<uint32_t> rgba = readPng(path);
    ASSERT_EQ(rgba.size(), 15u) << "row " << i;
    for (int y = 0; y < 3; ++y)
      for (int x = 0; x < 5; ++x)
        EXPECT_EQ(rgba[size_t(y * 5 + x)], picture.expectedRgba(x, y))
            << "row " << i << " pixel " << x << "," << y;

    if (!python) continue;
    EXPECT_EQ(run("/usr/bin/python3 " ZRAD_PNG_ORACLE " '" + path + "'"), row.header + "\n")
        << "row " << i;
  }
  if (!python) GTEST_SKIP() << "no /usr/bin/python3 for the independent reader";
}

TEST_F(ImageSaveFiles, BmpDepthsAndLayout) {
  for (int depth : {1, 4, 8, 16, 24, 32}) {
    Picture picture(7, 3, depth);
    const std::string path = dir / ("d" + std::to_string(depth) + ".BMP");
    ASSERT_EQ(zrutSaveImage(picture.image, ZrString(path.c_str()), 0), 1) << "depth " << depth;
    const std::string kind = run("file -b '" + path + "'");
    EXPECT_NE(kind.find("PC bitmap"), std::string::npos) << kind;
    EXPECT_NE(kind.find("7 x 3 x " + std::to_string(depth)), std::string::npos) << kind;
  }
  // 24 bits: 14 + 40 header bytes, rows of 21 bytes padded to 24, the bottom row first.
  Picture picture(7, 3, 24);
  const std::string bytes = readFile(dir / "d24.BMP");
  ASSERT_EQ(bytes.size(), 54u + 3 * 24);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 7; ++x) {
      const unsigned char* at = reinterpret_cast<const unsigned char*>(bytes.data()) + 54 +
                                (2 - y) * 24 + x * 3;
      EXPECT_EQ(at[0] | at[1] << 8 | at[2] << 16, int(picture.word(x, y))) << x << "," << y;
    }
}

TEST_F(ImageSaveFiles, RefusalsLeaveFilesAlone) {
  Picture rgb(3, 3, 24), threeBits(3, 3, 3), twoBits(3, 3, 2);
  const std::string existing = dir / "keep.png";
  writeFile(existing, "precious");
  struct Row { ZrSmartPtr<ZrGiRasterImage> image; std::string path; int format; } table[] = {
      {threeBits.image, existing, kZrImageFilePng},  // no PNG form for 3 bits
      {twoBits.image, existing, kZrImageFileBmp},    // nor a BMP one for 2
      {rgb.image, existing, 7},                      // unknown format number
      {rgb.image, dir / "x.gif", 0},                 // unknown extension
      {rgb.image, dir / "a.png/x", 0},               // the dot is not in the name
      {rgb.image, dir / "missing/x.png", 0},         // no such directory
      {rgb.image, "", kZrImageFilePng},
  };
  for (size_t i = 0; i < std::size(table); ++i)
    EXPECT_EQ(zrutSaveImage(table[i].image, ZrString(table[i].path.c_str()), table[i].format), 0)
        << "row " << i;
  EXPECT_EQ(readFile(existing), "precious");
  EXPECT_EQ(run("ls '" + dir.path() + "'"), "keep.png\n") << "no temporary file is left";
}

}  // namespace
