// The 256-entry drawing palette for dark backgrounds.
//
// Entries 10-249 are twenty-four hues 15 degrees apart, each in ten shades that alternate a
// strong and a pastel tone while dimming, so neighbouring indices stay distinct on a black
// background. None repeats the pure colours of entries 1-7.
#include <cmath>

#include "zrplatform/raster.h"

namespace {

uint32_t rgb(int r, int g, int b) {
  return 0xFF000000u | static_cast<uint32_t>(r) << 16 | static_cast<uint32_t>(g) << 8 |
         static_cast<uint32_t>(b);
}

// Hue in degrees, saturation and value in 0..1.
uint32_t fromHsv(double hue, double saturation, double value) {
  const double c = value * saturation;
  const double h = hue / 60.0;
  const double x = c * (1.0 - std::fabs(std::fmod(h, 2.0) - 1.0));
  double r = 0, g = 0, b = 0;
  switch (static_cast<int>(h) % 6) {
    case 0: r = c, g = x; break;
    case 1: r = x, g = c; break;
    case 2: g = c, b = x; break;
    case 3: g = x, b = c; break;
    case 4: r = x, b = c; break;
    default: r = c, b = x; break;
  }
  const double m = value - c;
  auto byte = [m](double v) { return static_cast<int>(std::lround((v + m) * 255.0)); };
  return rgb(byte(r), byte(g), byte(b));
}

struct DarkPalette {
  uint32_t entries[256];
  DarkPalette() {
    const uint32_t basics[10] = {rgb(0, 0, 0),       rgb(255, 0, 0),   rgb(255, 255, 0),
                                 rgb(0, 255, 0),     rgb(0, 255, 255), rgb(0, 0, 255),
                                 rgb(255, 0, 255),   rgb(255, 255, 255), rgb(128, 128, 128),
                                 rgb(192, 192, 192)};
    for (int i = 0; i < 10; ++i) entries[i] = basics[i];
    for (int hue = 0; hue < 24; ++hue)
      for (int shade = 0; shade < 10; ++shade) {
        const double value = 1.0 - 0.15 * (shade / 2);
        const double saturation = shade % 2 ? 0.45 : 0.9;
        entries[10 + hue * 10 + shade] = fromHsv(hue * 15.0, saturation, value);
      }
    for (int i = 0; i < 6; ++i) {
      const int level = 51 + 40 * i;
      entries[250 + i] = rgb(level, level, level);
    }
  }
};

}  // namespace

const uint32_t* zrGiDarkBackgroundPalette() {
  static const DarkPalette palette;
  return palette.entries;
}
