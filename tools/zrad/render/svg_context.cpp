// SvgContext: shape drawing calls as SVG path data.
#include "render/svg_context.h"

#include <cmath>
#include <cstdio>

namespace zradtool {

namespace {

const double kPi = 3.14159265358979323846;

// ' fill="#rrggbb" fill-opacity="a"' for `attribute` "fill".
std::string paint(const char* attribute, unsigned colour) {
  char text[96];
  std::snprintf(text, sizeof text, " %s=\"#%02x%02x%02x\" %s-opacity=\"%.3g\"", attribute,
                colour & 0xFF, (colour >> 8) & 0xFF, (colour >> 16) & 0xFF, attribute,
                (colour >> 24) / 255.0);
  return text;
}

std::string number(double v) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", std::isfinite(v) ? v : 0.0);
  return text;
}

}  // namespace

SvgContext::SvgContext(int size, unsigned background) {
  const std::string side = std::to_string(size);
  m_body = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + side + "\" height=\"" + side +
           "\" viewBox=\"0 0 " + side + " " + side + "\">\n";
  if (background >> 24)
    m_body += "<rect width=\"" + side + "\" height=\"" + side + "\"" + paint("fill", background) + "/>\n";
}

std::string SvgContext::document() const { return m_body + "</svg>\n"; }

void SvgContext::setPen(int, float width, unsigned colour) {
  m_penWidth = width;
  m_pen = colour;
}
void SvgContext::setBrush(int, unsigned colour) { m_brush = colour; }
void SvgContext::beginPath(int) { m_path.clear(); }

void SvgContext::fill() {
  if (!m_path.empty())
    m_body += "<path d=\"" + m_path + "\" fill-rule=\"evenodd\"" + paint("fill", m_brush) + "/>\n";
}

void SvgContext::strokenPath() {
  if (!m_path.empty())
    m_body += "<path d=\"" + m_path + "\" fill=\"none\"" + paint("stroke", m_pen) +
              " stroke-width=\"" + number(m_penWidth) +
              "\" stroke-linejoin=\"round\" stroke-linecap=\"round\"/>\n";
}

void SvgContext::add(char command, std::initializer_list<double> values) {
  m_path += command;
  bool first = true;
  for (double v : values) {
    if (!first) m_path += ' ';
    m_path += number(v);
    first = false;
  }
}

void SvgContext::closeFigure() { add('Z', {}); }
void SvgContext::moveTo(float x, float y) {
  add('M', {x, y});
  m_x = x, m_y = y;
}
void SvgContext::lineTo(float x, float y) {
  add('L', {x, y});
  m_x = x, m_y = y;
}
void SvgContext::curve2To(float cx, float cy, float x, float y) {
  add('Q', {cx, cy, x, y});
  m_x = x, m_y = y;
}
void SvgContext::curve3To(float c1x, float c1y, float c2x, float c2y, float x, float y) {
  add('C', {c1x, c1y, c2x, c2y, x, y});
  m_x = x, m_y = y;
}

// The circle through the current point, (x1, y1) and (x2, y2), drawn as two SVG arcs split at
// the middle point, so that an arc back to its start (a full circle) still draws.
void SvgContext::arcTo(float x1, float y1, float x2, float y2) {
  const double ax = m_x, ay = m_y, bx = x1, by = y1, cx = x2, cy = y2;
  const double d = 2 * (ax * (by - cy) + bx * (cy - ay) + cx * (ay - by));
  if (std::fabs(d) < 1e-12) {  // on one line: no circle
    lineTo(x2, y2);
    return;
  }
  const double a2 = ax * ax + ay * ay, b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
  const double ux = (a2 * (by - cy) + b2 * (cy - ay) + c2 * (ay - by)) / d;
  const double uy = (a2 * (cx - bx) + b2 * (ax - cx) + c2 * (bx - ax)) / d;
  const double r = std::hypot(ax - ux, ay - uy);
  // Turning direction of a -> b -> c; 1 is the direction of growing angles (clockwise on screen).
  const int sweep = (bx - ax) * (cy - by) - (by - ay) * (cx - bx) > 0 ? 1 : 0;
  auto angle = [&](double x, double y) { return std::atan2(y - uy, x - ux); };
  auto span = [&](double from, double to) {  // the angle swept from `from` to `to`, 0 .. 2 pi
    double s = sweep ? to - from : from - to;
    while (s < 0) s += 2 * kPi;
    return s;
  };
  const double ta = angle(ax, ay), tb = angle(bx, by), tc = angle(cx, cy);
  add('A', {r, r, 0, span(ta, tb) > kPi ? 1.0 : 0.0, double(sweep), bx, by});
  add('A', {r, r, 0, span(tb, tc) > kPi ? 1.0 : 0.0, double(sweep), cx, cy});
  m_x = x2, m_y = y2;
}

void SvgContext::circle(float cx, float cy, float r) {
  add('M', {cx - r, cy});
  add('A', {r, r, 0, 1, 0, cx + r, cy});
  add('A', {r, r, 0, 1, 0, cx - r, cy});
  add('Z', {});
  m_x = cx, m_y = cy;
}

}  // namespace zradtool
