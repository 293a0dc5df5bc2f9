// BMP files: a file header, a 40-byte information header, the palette and the rows bottom-up.
#include <vector>

#include "pixels.h"
#include "writers.h"

namespace zrraster {

namespace {

void put16(std::vector<uint8_t>& out, uint32_t v) {
  out.push_back(static_cast<uint8_t>(v));
  out.push_back(static_cast<uint8_t>(v >> 8));
}
void put32(std::vector<uint8_t>& out, uint32_t v) {
  put16(out, v & 0xFFFF);
  put16(out, v >> 16);
}

// Appends pixel x of `row` in the file's layout.
void putPixel(std::vector<uint8_t>& out, const RowReader& reader, const uint8_t* row, int x) {
  const uint32_t c = reader.argb(row, x);
  if (reader.depth() == 16) {
    put16(out, (c >> 9 & 0x7C00) | (c >> 6 & 0x03E0) | (c >> 3 & 0x001F));
    return;
  }
  out.push_back(static_cast<uint8_t>(c));
  out.push_back(static_cast<uint8_t>(c >> 8));
  out.push_back(static_cast<uint8_t>(c >> 16));
  if (reader.depth() == 32) out.push_back(static_cast<uint8_t>(c >> 24));
}

}  // namespace

bool writeBmp(const ZrGiRasterImage& image, FILE* out) {
  RowReader reader(image);
  const int depth = reader.depth();
  if (!reader.valid() ||
      !(depth == 1 || depth == 4 || depth == 8 || depth == 16 || depth == 24 || depth == 32))
    return false;
  const size_t rowBytes = (reader.packedRowBytes() + 3) / 4 * 4;
  const std::vector<uint32_t> palette = isIndexed(depth) ? fullPalette(image, depth)
                                                         : std::vector<uint32_t>();
  const uint64_t headerBytes = 14 + 40 + 4 * palette.size();
  const uint64_t fileBytes = headerBytes + rowBytes * static_cast<uint64_t>(reader.height());
  if (fileBytes > 0xFFFFFFFFu) return false;

  std::vector<uint8_t> bytes;
  bytes.push_back('B');
  bytes.push_back('M');
  put32(bytes, static_cast<uint32_t>(fileBytes));
  put32(bytes, 0);
  put32(bytes, static_cast<uint32_t>(headerBytes));
  put32(bytes, 40);
  put32(bytes, static_cast<uint32_t>(reader.width()));
  put32(bytes, static_cast<uint32_t>(reader.height()));  // positive: rows bottom-up
  put16(bytes, 1);                                      // planes
  put16(bytes, static_cast<uint32_t>(depth));
  put32(bytes, 0);  // no compression
  put32(bytes, static_cast<uint32_t>(rowBytes * static_cast<uint64_t>(reader.height())));
  put32(bytes, 2835);  // 72 dots per inch, in dots per metre
  put32(bytes, 2835);
  put32(bytes, static_cast<uint32_t>(palette.size()));
  put32(bytes, 0);
  for (uint32_t c : palette) put32(bytes, c & 0x00FFFFFFu);
  if (fwrite(bytes.data(), 1, bytes.size(), out) != bytes.size()) return false;

  for (int r = reader.height() - 1; r >= 0; --r) {
    const uint8_t* row = reader.row(r);
    bytes.clear();
    if (isIndexed(depth)) {
      bytes.assign(row, row + reader.packedRowBytes());
    } else {
      for (int x = 0; x < reader.width(); ++x) putPixel(bytes, reader, row, x);
    }
    bytes.resize(rowBytes, 0);
    if (fwrite(bytes.data(), 1, bytes.size(), out) != bytes.size()) return false;
  }
  return true;
}

}  // namespace zrraster
