// CairoContext: shape drawing calls as cairo path and paint operations.
#include "cairo_context.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "arc.h"

namespace zradtool {

namespace {

// False when any value is not finite (the call is then dropped).
bool finite(std::initializer_list<float> values) {
  return std::all_of(values.begin(), values.end(), [](float v) { return std::isfinite(v); });
}

double held(float v) { return std::clamp(double(v), -kCairoLimit, kCairoLimit); }

}  // namespace

CairoContext::CairoContext(cairo_t* cr) : m_cr(cr) {
  cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
  cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
}

void CairoContext::setSource(unsigned colour) {
  cairo_set_source_rgba(m_cr, (colour & 0xFF) / 255.0, (colour >> 8 & 0xFF) / 255.0,
                        (colour >> 16 & 0xFF) / 255.0, (colour >> 24) / 255.0);
}

void CairoContext::paint(unsigned colour) {
  setSource(colour);
  cairo_paint(m_cr);
}

void CairoContext::setPen(int, float width, unsigned colour) {
  if (finite({width})) m_penWidth = std::clamp(double(width), 0.0, kCairoLimit);
  m_pen = colour;
}
void CairoContext::setBrush(int, unsigned colour) { m_brush = colour; }
void CairoContext::beginPath(int) { cairo_new_path(m_cr); }

void CairoContext::fill() {
  setSource(m_brush);
  cairo_fill_preserve(m_cr);
}

void CairoContext::strokenPath() {
  setSource(m_pen);
  cairo_set_line_width(m_cr, m_penWidth);
  cairo_stroke_preserve(m_cr);
}

void CairoContext::closeFigure() { cairo_close_path(m_cr); }

void CairoContext::moveTo(float x, float y) {
  if (finite({x, y})) cairo_move_to(m_cr, held(x), held(y));
}
void CairoContext::lineTo(float x, float y) {
  if (finite({x, y})) cairo_line_to(m_cr, held(x), held(y));
}

void CairoContext::arcTo(float x1, float y1, float x2, float y2) {
  if (!finite({x1, y1, x2, y2})) return;
  double x0 = 0, y0 = 0;
  cairo_get_current_point(m_cr, &x0, &y0);
  Arc arc;
  if (!arcThrough(x0, y0, held(x1), held(y1), held(x2), held(y2), arc) ||
      arc.radius > kCairoLimit) {
    lineTo(x2, y2);
    return;
  }
  (arc.clockwise ? cairo_arc : cairo_arc_negative)(m_cr, arc.cx, arc.cy, arc.radius, arc.start,
                                                   arc.end);
}

// Quadratic control points raised to cubic ones: c1 = p0 + 2/3 (c - p0), c2 = p + 2/3 (c - p).
void CairoContext::curve2To(float cx, float cy, float x, float y) {
  if (!finite({cx, cy, x, y})) return;
  double x0 = 0, y0 = 0;
  cairo_get_current_point(m_cr, &x0, &y0);
  const double qx = held(cx), qy = held(cy), ex = held(x), ey = held(y);
  cairo_curve_to(m_cr, x0 + 2 * (qx - x0) / 3, y0 + 2 * (qy - y0) / 3, ex + 2 * (qx - ex) / 3,
                 ey + 2 * (qy - ey) / 3, ex, ey);
}

void CairoContext::curve3To(float c1x, float c1y, float c2x, float c2y, float x, float y) {
  if (finite({c1x, c1y, c2x, c2y, x, y}))
    cairo_curve_to(m_cr, held(c1x), held(c1y), held(c2x), held(c2y), held(x), held(y));
}

void CairoContext::circle(float cx, float cy, float r) {
  if (!finite({cx, cy, r})) return;
  // From the leftmost point, as SvgContext draws it, so that a figure going on from the
  // circle starts from the same place in both.
  const double half = kFullTurn / 2;
  cairo_new_sub_path(m_cr);
  cairo_arc(m_cr, held(cx), held(cy), std::clamp(double(r), 0.0, kCairoLimit), half, 3 * half);
  cairo_close_path(m_cr);
}

}  // namespace zradtool
