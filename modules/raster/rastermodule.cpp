// The entry point of the "ZrRaster" module: picks the file type and writes the file.
#include <strings.h>

#include <cstring>
#include <type_traits>

#include <zrad/image.h>

#include "image/rastermodule.h"
#include "outputfile.h"
#include "writers.h"

namespace {

// The file type `format` names; the path's extension decides for kZrImageFileByExtension.
int fileTypeFor(const char* path, int format) {
  if (format != kZrImageFileByExtension) return format;
  const char* dot = strrchr(path, '.');
  if (!dot || strchr(dot, '/')) return -1;
  if (strcasecmp(dot, ".png") == 0) return kZrImageFilePng;
  if (strcasecmp(dot, ".bmp") == 0) return kZrImageFileBmp;
  return -1;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int zrRasterSaveImage(ZrGiRasterImage* image,
                                                                        const char* path,
                                                                        int format) {
  static_assert(std::is_same<decltype(&zrRasterSaveImage),
                             zrad::image::RasterSaveFunction>::value,
                "the save operation has the type the library calls");
  if (!image || !path || !*path) return 0;
  switch (fileTypeFor(path, format)) {
    case kZrImageFilePng:
      return zrraster::replaceFile(path, [image](FILE* out) {
        return zrraster::writePng(*image, out);
      });
    case kZrImageFileBmp:
      return zrraster::replaceFile(path, [image](FILE* out) {
        return zrraster::writeBmp(*image, out);
      });
    default:
      return 0;
  }
}
