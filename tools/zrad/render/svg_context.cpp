// SvgContext: shape drawing calls as SVG path data.
#include "svg_context.h"

#include "arc.h"

#include <cmath>
#include <cstdio>

namespace zradtool {

namespace {

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

void SvgContext::closeFigure() {
  add('Z', {});
  m_x = m_startX, m_y = m_startY;
}
void SvgContext::moveTo(float x, float y) {
  add('M', {x, y});
  m_x = m_startX = x, m_y = m_startY = y;
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
// the middle point, so that no single SVG arc has to decide between two halves.
void SvgContext::arcTo(float x1, float y1, float x2, float y2) {
  Arc arc;
  if (!arcThrough(m_x, m_y, x1, y1, x2, y2, arc)) {
    lineTo(x2, y2);
    return;
  }
  const double pi = kFullTurn / 2, sweep = arc.clockwise ? 1 : 0;
  add('A', {arc.radius, arc.radius, 0, std::fabs(arc.middle - arc.start) > pi ? 1.0 : 0.0, sweep,
            x1, y1});
  add('A', {arc.radius, arc.radius, 0, std::fabs(arc.end - arc.middle) > pi ? 1.0 : 0.0, sweep,
            x2, y2});
  m_x = x2, m_y = y2;
}

void SvgContext::circle(float cx, float cy, float r) {
  add('M', {cx - r, cy});
  add('A', {r, r, 0, 1, 0, cx + r, cy});
  add('A', {r, r, 0, 1, 0, cx - r, cy});
  add('Z', {});
  m_x = m_startX = cx - r, m_y = m_startY = cy;
}

}  // namespace zradtool
