// zrad shape: renders built-in or "shape1.0" shapes to SVG or PNG and dumps their recordings.
//
// A shape is fitted into a square canvas by its frame (the larger side fills the canvas) and
// centred by what it draws (render/canvas.h).
#include <strings.h>

#include <cstdio>
#include <cstring>
#include <string>

#include <zrad/image.h>
#include <zrad/shape.h>
#include <zrplatform/module.h>

#include "command.h"
#include "render/canvas.h"

using namespace zradtool;

namespace {

const int kBuiltinIcons = 8;

std::string source, out, all, backgroundText = "none";
int size = 256;

// A built-in slot number or a text from a file or standard input ("-"); false after printing
// why not.
bool loadShape(ZrShape& shape) {
  if (!source.empty() && source.find_first_not_of("0123456789") == std::string::npos) {
    const ZrShape* builtin = source.size() < 3 ? ZrShape::globalShape(std::stoi(source)) : nullptr;
    if (builtin && builtin->recording()) return shape = *builtin, true;
    return fail("no built-in shape " + source, "slots 0 to 7 hold shapes"), false;
  }
  std::string text, cause;
  if (!readAll(source, text, cause)) return fail("cannot read " + operandName(source, true), cause), false;
  if (!shape.readFromString(text.c_str()))
    return fail("cannot read " + operandName(source, true), "not a shape1.0 text"), false;
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

// Writes one picture; false after printing why not.
bool write(const ZrShape& shape, const std::string& path, unsigned background) {
  if (!endsWith(path, ".png")) {
    if (writeSvg(shape, path, size, background)) return true;
    return fail("cannot write " + path, "cannot create the file"), false;
  }
  if (writePng(shape, path, size, background)) return true;
  const bool module = zrLoadModule("ZrRaster", reinterpret_cast<const void*>(&zrutSaveImage)).isLoaded();
  return fail("cannot write " + path, module ? "the ZrRaster module could not save it"
                                             : "the ZrRaster module that saves PNG cannot be loaded"),
         false;
}

int render() {
  unsigned background = 0;
  if (!parseColour(backgroundText, background))
    return usageError("--background wants #rrggbb, #rrggbbaa or none");
  if (!all.empty()) {
    if (!source.empty()) return usageError("--all takes no SOURCE or OUT");
    for (int slot = 0; slot < kBuiltinIcons; ++slot) {
      const std::string path = all + "/slot" + std::to_string(slot);
      const ZrShape& builtin = *ZrShape::globalShape(slot);
      if (!write(builtin, path + ".svg", background) || !write(builtin, path + ".png", background))
        return kFailed;
    }
    return kOk;
  }
  if (out.empty()) return usageError("expected SOURCE and OUT, or --all DIR");
  if (!endsWith(out, ".png") && !endsWith(out, ".svg"))
    return fail("cannot write " + out, "the name must end in .svg or .png");
  ZrShape shape;
  if (!loadShape(shape)) return kFailed;
  return write(shape, out, background) ? kOk : kFailed;
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

int dump() {
  ZrShape shape;
  if (!loadShape(shape)) return kFailed;
  DumpContext context;
  if (shape.recording()) shape.draw(&context, shape.baseX(), shape.baseY(), shape.width(), shape.height());
  return kOk;
}

void add(CLI::App& zrad) {
  CLI::App* shape = zrad.add_subcommand("shape", "render shapes to SVG or PNG, dump shape recordings");
  shape->require_subcommand(1);
  const char* sourceHelp = "a built-in slot 0-7, or a file (\"-\": standard input) holding a shape1.0 text";

  CLI::App* renderCmd = shape->add_subcommand("render", "draw a shape on a square canvas as SVG or PNG");
  renderCmd->footer(
      "The larger side of the shape's frame fills the canvas; what it draws is centred.\n"
      "OUT ending in .png (any case) is written through the ZrRaster module, else it must end\n"
      "in .svg. Exit status 1 when the shape or the file cannot be had.");
  renderCmd->add_option("SOURCE", source, sourceHelp);
  renderCmd->add_option("OUT", out, "the picture to write: NAME.svg or NAME.png");
  renderCmd->add_option("--all", all, "write DIR/slotN.svg and DIR/slotN.png for every built-in shape")
      ->type_name("DIR");
  renderCmd->add_option("--size", size, "a canvas of N x N pixels")
      ->type_name("N")->check(CLI::Range(1, 16384))->capture_default_str();
  renderCmd->add_option("--background", backgroundText, "#rrggbb, #rrggbbaa or none")
      ->type_name("COLOUR")->capture_default_str();
  onRun(renderCmd, render);

  CLI::App* dumpCmd = shape->add_subcommand("dump", "print a shape's recording, one record a line");
  dumpCmd->footer("Each line is a record's tag and values, replayed at the shape's own size (pens\n"
                  "show the replay's width rule).");
  dumpCmd->add_option("SOURCE", source, sourceHelp)->required();
  onRun(dumpCmd, dump);
}

const Registration kRegistration("shape", add);

}  // namespace
