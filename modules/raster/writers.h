// The file writers of the "ZrRaster" module. Each writes a whole file to an open stream and
// returns false when the image's depth has no form in that file type or the stream fails.
#pragma once

#include <cstdio>

#include <zrplatform/raster.h>

namespace zrraster {

// Depths 1, 2, 4, 8 as palette images of the same bit depth (the palette written opaque),
// 16 and 24 as 8-bit RGB, 32 as 8-bit RGBA (RGB when the format has no alpha).
bool writePng(const ZrGiRasterImage& image, FILE* out);
// Depths 1, 4, 8 with a palette, 16 (5 bits a channel), 24 and 32; rows bottom-up, padded to
// whole words, no compression.
bool writeBmp(const ZrGiRasterImage& image, FILE* out);

}  // namespace zrraster
