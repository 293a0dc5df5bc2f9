// SVG path data: command letters with their argument lists, drawn onto a shape context.
//
// The reader is a single forward pass that draws each argument group as soon as it is
// complete, so it needs no memory beyond one group whatever the length of the data.
#include "shape/svgpath.h"

#include <cmath>
#include <cstring>

#include <zrad/shape.h>

#include "shape/numscan.h"

namespace zrad::shape {

namespace {

struct Point {
  double x = 0.0;
  double y = 0.0;
};

Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
// The reflection of `p` about `centre`.
Point reflect(Point p, Point centre) { return {2.0 * centre.x - p.x, 2.0 * centre.y - p.y}; }

bool isSeparator(char c) { return (c >= 0x01 && c <= 0x20) || c == ','; }
bool startsNumber(char c) { return c == '+' || c == '-' || c == '.' || isDigit(c); }
bool continuesNumber(char c) { return c == '.' || c == 'e' || c == 'E' || isDigit(c); }

class PathReader {
 public:
  PathReader(const char* begin, const char* end, ZrShapeContext& context, float sx, float sy,
             float ox, float oy)
      : m_p(begin), m_end(end), m_context(context), m_sx(sx), m_sy(sy), m_ox(ox), m_oy(oy) {}

  void run() {
    while (m_p < m_end) {
      const char command = *m_p++;
      const bool relative = command >= 'a';
      switch (command) {
        case 'M': case 'm': move(relative); break;
        case 'L': case 'l': lines(relative); break;
        case 'H': case 'h': horizontal(relative); break;
        case 'V': case 'v': vertical(relative); break;
        case 'C': case 'c': cubics(relative, false); break;
        case 'S': case 's': cubics(relative, true); break;
        case 'Q': case 'q': quadratics(relative, false); break;
        case 'T': case 't': quadratics(relative, true); break;
        case 'A': case 'a': arcs(relative); break;
        case 'Z': case 'z': close(); break;
        default: break;  // blanks, commas and stray letters
      }
    }
  }

 private:
  // The next number of the current argument list; false when the list has ended, leaving the
  // cursor on the byte that ended it.
  bool number(double& value) {
    while (m_p < m_end && isSeparator(*m_p)) ++m_p;
    if (m_p == m_end || !startsNumber(*m_p)) return false;
    const char* start = m_p++;
    while (m_p < m_end && continuesNumber(*m_p)) ++m_p;
    value = double(float(decimalValue(start, m_p)));
    return true;
  }

  bool pair(Point& p) { return number(p.x) && number(p.y); }
  Point resolve(Point p, bool relative) const { return relative ? p + m_cur : p; }
  float X(double x) const { return float(x * m_sx + m_ox); }
  float Y(double y) const { return float(y * m_sy + m_oy); }

  void advance(Point to, Point previous) {
    m_prev = previous;
    m_cur = to;
  }

  void move(bool relative) {
    Point last, p;
    bool any = false;
    while (pair(p)) last = p, any = true;
    if (!any) return;
    advance(resolve(last, relative), m_cur);
    m_context.moveTo(X(m_cur.x), Y(m_cur.y));
  }

  void lines(bool relative) {
    Point p;
    while (pair(p)) lineTo(resolve(p, relative));
  }

  void horizontal(bool relative) {
    double v;
    while (number(v)) lineTo({relative ? m_cur.x + v : v, m_cur.y});
  }

  void vertical(bool relative) {
    double v;
    while (number(v)) lineTo({m_cur.x, relative ? m_cur.y + v : v});
  }

  void lineTo(Point to) {
    advance(to, m_cur);
    m_context.lineTo(X(to.x), Y(to.y));
  }

  // C and S; `smooth` takes the first control point from the reflection of the previous one.
  void cubics(bool relative, bool smooth) {
    Point c1, c2, end;
    while ((smooth || pair(c1)) && pair(c2) && pair(end)) {
      c1 = smooth ? reflect(m_prev, m_cur) : resolve(c1, relative);
      c2 = resolve(c2, relative);
      end = resolve(end, relative);
      m_context.curve3To(X(c1.x), Y(c1.y), X(c2.x), Y(c2.y), X(end.x), Y(end.y));
      advance(end, c2);
    }
  }

  // Q and T; `smooth` takes the control point from the reflection of the previous one.
  void quadratics(bool relative, bool smooth) {
    Point control, end;
    while ((smooth || pair(control)) && pair(end)) {
      control = smooth ? reflect(m_prev, m_cur) : resolve(control, relative);
      end = resolve(end, relative);
      m_context.curve2To(X(control.x), Y(control.y), X(end.x), Y(end.y));
      advance(end, control);
    }
  }

  // Groups of rx ry rotation large-arc sweep x y. After the command the current point is the
  // list's last two numbers as written.
  void arcs(bool relative) {
    double group[7];
    int inGroup = 0, total = 0;
    Point lastTwo;
    double v;
    while (number(v)) {
      lastTwo = {lastTwo.y, v};
      ++total;
      group[inGroup++] = v;
      if (inGroup == 7) {
        arc(group, relative);
        inGroup = 0;
      }
    }
    if (total > 6) m_cur = lastTwo;
  }

  void arc(const double* g, bool relative) {
    if (g[0] != g[1]) return;  // circular arcs only; both are already rounded to float
    const double r = g[0];
    const Point end = resolve({g[5], g[6]}, relative);
    const double dx = end.x - m_cur.x, dy = end.y - m_cur.y;
    const double q = dx * dx + dy * dy;
    if (q < 1e-8 || r * r - q * 0.25 < 0) {
      // The fallback line is drawn untransformed on purpose.
      m_context.lineTo(float(end.x), float(end.y));
    } else {
      const double h = std::sqrt(r * r - q / 4);  // chord midpoint to centre
      double s = g[3] != 0 ? r + h : r - h;        // chord midpoint to the arc's middle
      if (g[4] != 0) s = -s;
      const double length = std::sqrt(q);
      const double ux = length > 1e-300 ? dx / length : dx;
      const double uy = length > 1e-300 ? dy / length : dy;
      const Point middle{(end.x + m_cur.x) / 2 - uy * s, (end.y + m_cur.y) / 2 + ux * s};
      m_context.arcTo(X(middle.x), Y(middle.y), X(end.x), Y(end.y));
    }
    advance(end, m_cur);
  }

  void close() {
    double ignored;
    while (number(ignored)) {
    }
    m_context.closeFigure();
    advance(Point(), m_cur);
  }

  const char* m_p;
  const char* const m_end;
  ZrShapeContext& m_context;
  const float m_sx, m_sy, m_ox, m_oy;
  Point m_cur;
  Point m_prev;
};

}  // namespace

void readPathData(const char* begin, const char* end, ZrShapeContext& context, float sx,
                  float sy, float ox, float oy) {
  PathReader(begin, end, context, sx, sy, ox, oy).run();
}

}  // namespace zrad::shape

bool ZrShape::readSVGPath(const char* path, ZrShapeContext* context, float sx, float sy,
                          float ox, float oy) {
  if (!path || !context) return false;
  zrad::shape::readPathData(path, path + std::strlen(path), *context, sx, sy, ox, oy);
  return true;
}
