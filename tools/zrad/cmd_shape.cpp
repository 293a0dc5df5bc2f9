// zrad shape: renders built-in or "shape1.0" shapes to SVG or PNG and dumps their recordings.
//
// A shape is fitted into a square canvas by its frame (the larger side fills the canvas) and
// centred by what it draws (render/canvas.h).
#include <strings.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>

#include <zrad/shape.h>

#include "command.h"
#include "render/canvas.h"

using namespace zradtool;

namespace {

const char kName[] = "shape";
const int kBuiltinIcons = 8;
// PNG files are written by the "ZrRaster" module, which may be what is missing.
const char kPngHint[] = " (through the ZrRaster module)";

int run(const Args& args);

const Family kFamily{
    kName, "render shapes to SVG or PNG, dump shape recordings",
    "usage: zrad shape render (SLOT|FILE|-) OUT.(svg|png) [--size N] [--background COLOUR]\n"
    "       zrad shape render --all DIR [--size N] [--background COLOUR]\n"
    "       zrad shape dump (SLOT|FILE|-)\n"
    "  SLOT is a built-in shape 0-7; FILE or - (standard input) holds a shape1.0 text\n"
    "  --size N             canvas of N x N pixels (default 256)\n"
    "  --background COLOUR  #rrggbb, #rrggbbaa or none (default none)\n"
    "  --all DIR            writes DIR/slotN.svg and DIR/slotN.png for every built-in shape\n"
    "  dump prints one line per record: its tag and values, pens as a replay at scale 1\n"
    "  draws them\n",
    run};

// A built-in slot number or a text from a file or standard input; `error` says why not.
bool loadShape(const std::string& source, ZrShape& shape, std::string& error) {
  if (!source.empty() && source.find_first_not_of("0123456789") == std::string::npos) {
    const ZrShape* builtin = source.size() < 3 ? ZrShape::globalShape(std::stoi(source)) : nullptr;
    if (!builtin || !builtin->recording()) {
      error = "no built-in shape " + source + " (slots 0 to 7 hold shapes)";
      return false;
    }
    shape = *builtin;
    return true;
  }
  std::ifstream file;
  if (source != "-") {
    file.open(source, std::ios::binary);
    if (!file) {
      error = "cannot read " + source;
      return false;
    }
  }
  std::istream& in = source == "-" ? std::cin : file;
  const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  if (!shape.readFromString(text.c_str())) {
    error = source + " is not a shape1.0 text";
    return false;
  }
  return true;
}

// "#rrggbb", "#rrggbbaa" or "none" as 0xAABBGGRR.
bool parseColour(const std::string& text, unsigned& colour) {
  if (text == "none") return colour = 0, true;
  if ((text.size() != 7 && text.size() != 9) || text[0] != '#' ||
      text.find_first_not_of("0123456789abcdefABCDEF", 1) != std::string::npos)
    return false;
  const unsigned long v = std::stoul(text.substr(1), nullptr, 16);
  const unsigned long rgba = text.size() == 7 ? v << 8 | 0xFF : v;
  colour = unsigned((rgba & 0xFF) << 24 | (rgba >> 8 & 0xFF) << 16 | (rgba >> 16 & 0xFF) << 8 |
                    (rgba >> 24 & 0xFF));
  return true;
}

bool endsWith(const std::string& text, const char* tail) {
  const size_t n = std::strlen(tail);
  return text.size() >= n && strcasecmp(text.c_str() + text.size() - n, tail) == 0;
}

// Prints every call as the record it would make: tag, then values.
class DumpContext : public ZrShapeContext {
 public:
  void setPen(int style, float width, unsigned colour) override {
    std::printf("p %d %g %u\n", style, width, colour);
  }
  void setBrush(int style, unsigned colour) override { std::printf("B %d %u\n", style, colour); }
  void beginPath(int kind) override { std::printf("b %d\n", kind); }
  void endPath() override { std::printf("e\n"); }
  void fill() override { std::printf("f\n"); }
  void strokenPath() override { std::printf("s\n"); }
  void closeFigure() override { std::printf("C\n"); }
  void moveTo(float x, float y) override { std::printf("m %g %g\n", x, y); }
  void lineTo(float x, float y) override { std::printf("l %g %g\n", x, y); }
  void arcTo(float x1, float y1, float x2, float y2) override {
    std::printf("a %g %g %g %g\n", x1, y1, x2, y2);
  }
  void curve2To(float cx, float cy, float x, float y) override {
    std::printf("v %g %g %g %g\n", cx, cy, x, y);
  }
  void curve3To(float a, float b, float c, float d, float x, float y) override {
    std::printf("V %g %g %g %g %g %g\n", a, b, c, d, x, y);
  }
  void circle(float cx, float cy, float r) override { std::printf("m %g %g\nc %g\n", cx, cy, r); }
};

int run(const Args& args) {
  if (wantsHelp(args)) return std::printf("%s", kFamily.usage), kOk;
  Args operands;
  int size = 256;
  unsigned background = 0;
  bool all = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool hasValue = i + 1 < args.size();
    if (arg == "--all") {
      all = true;
    } else if (arg == "--size" && hasValue) {
      const std::string& value = args[++i];
      size = value.find_first_not_of("0123456789") == std::string::npos && value.size() < 6
                 ? std::stoi(value) : 0;
      if (size < 1 || size > 16384) return usageError(kFamily, "--size wants 1 to 16384");
    } else if (arg == "--background" && hasValue) {
      if (!parseColour(args[++i], background))
        return usageError(kFamily, "--background wants #rrggbb, #rrggbbaa or none");
    } else if (arg.size() > 1 && arg[0] == '-') {
      return usageError(kFamily, "unknown option or missing value: " + arg);
    } else {
      operands.push_back(arg);
    }
  }
  if (operands.empty()) return usageError(kFamily, "expected render or dump");
  const std::string verb = operands[0];
  std::string error;
  ZrShape shape;
  if (verb == "dump" && operands.size() == 2 && !all) {
    if (!loadShape(operands[1], shape, error)) return fail(kName, error);
    DumpContext dump;
    shape.draw(&dump, shape.baseX(), shape.baseY(), shape.width(), shape.height());
    return kOk;
  }
  if (verb == "render" && all && operands.size() == 2) {
    for (int slot = 0; slot < kBuiltinIcons; ++slot) {
      const std::string path = operands[1] + "/slot" + std::to_string(slot);
      const ZrShape& builtin = *ZrShape::globalShape(slot);
      if (!writeSvg(builtin, path + ".svg", size, background))
        return fail(kName, "cannot write " + path + ".svg");
      if (!writePng(builtin, path + ".png", size, background))
        return fail(kName, "cannot write " + path + ".png" + kPngHint);
    }
    return kOk;
  }
  if (verb == "render" && !all && operands.size() == 3) {
    const std::string& out = operands[2];
    const bool png = endsWith(out, ".png");
    if (!png && !endsWith(out, ".svg"))
      return fail(kName, "the output name must end in .svg or .png (" + out + ")");
    if (!loadShape(operands[1], shape, error)) return fail(kName, error);
    if (png ? !writePng(shape, out, size, background) : !writeSvg(shape, out, size, background))
      return fail(kName, "cannot write " + out + (png ? kPngHint : ""));
    return kOk;
  }
  return usageError(kFamily, "expected render SOURCE OUT, render --all DIR or dump SOURCE");
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace
