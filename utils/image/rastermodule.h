// The contract between the library and the loadable "ZrRaster" module.
//
// The module exports one C function under kRasterSaveSymbol: it writes `image` to the UTF-8
// `path` in file format `format` (ZrImageFileFormat) and returns 1, or 0 when it writes nothing.
#pragma once

class ZrGiRasterImage;

namespace zrad::image {

constexpr char kRasterModuleName[] = "ZrRaster";
constexpr char kRasterSaveSymbol[] = "zrRasterSaveImage";
using RasterSaveFunction = int (*)(ZrGiRasterImage* image, const char* path, int format);

}  // namespace zrad::image
