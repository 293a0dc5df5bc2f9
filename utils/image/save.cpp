// zrutSaveImage: hands the image to the "ZrRaster" module's save operation.
#include <zrad/image.h>
#include <zrplatform/module.h>

#include "image/rastermodule.h"

int zrutSaveImage(ZrSmartPtr<ZrGiRasterImage> image, const ZrString& path, int format) {
  if (!image) return 0;
  ZrModuleHandle module =
      zrLoadModule(zrad::image::kRasterModuleName, reinterpret_cast<const void*>(&zrutSaveImage));
  auto save = reinterpret_cast<zrad::image::RasterSaveFunction>(
      module.symbol(zrad::image::kRasterSaveSymbol));
  if (!save) return 0;
  return save(image.get(), ZrUtf8String(path).c_str(), format);
}
