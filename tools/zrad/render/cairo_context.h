// A shape drawing context that draws with cairo onto any cairo surface.
//
// Colours are 0xAABBGGRR (red in the low byte); fills use the even-odd rule, strokes round
// joins and caps, as in SvgContext. A path stays after fill() so that a stroke can follow.
// Coordinates that are not finite make their call draw nothing; others are held to
// +-kCairoLimit, inside the range of cairo's fixed-point numbers.
#pragma once

#include <cairo.h>

#include <zrad/shape.h>

namespace zradtool {

const double kCairoLimit = 1 << 20;

class CairoContext : public ZrShapeContext {
 public:
  // Draws through `cr`, which the caller keeps alive.
  explicit CairoContext(cairo_t* cr);
  // Covers the whole surface with `colour`.
  void paint(unsigned colour);

  void setPen(int style, float width, unsigned colour) override;
  void setBrush(int style, unsigned colour) override;
  void beginPath(int kind) override;
  void endPath() override {}
  void fill() override;
  void strokenPath() override;
  void closeFigure() override;
  void moveTo(float x, float y) override;
  void lineTo(float x, float y) override;
  void arcTo(float x1, float y1, float x2, float y2) override;
  void curve2To(float cx, float cy, float x, float y) override;
  void curve3To(float c1x, float c1y, float c2x, float c2y, float x, float y) override;
  void circle(float cx, float cy, float r) override;

 private:
  void setSource(unsigned colour);

  cairo_t* m_cr;
  double m_penWidth = 1.0;
  unsigned m_pen = 0xFF000000u, m_brush = 0xFF000000u;
};

}  // namespace zradtool
