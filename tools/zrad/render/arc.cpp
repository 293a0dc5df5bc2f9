// The circle through three points and the direction an arc turns on it.
#include "arc.h"

#include <cmath>

namespace zradtool {

namespace {

// `angle` moved by whole turns until it lies at or past `from` in the direction of travel.
double unwrap(double angle, double from, bool clockwise) {
  if (clockwise) {
    while (angle < from) angle += kFullTurn;
  } else {
    while (angle > from) angle -= kFullTurn;
  }
  return angle;
}

}  // namespace

bool arcThrough(double ax, double ay, double bx, double by, double cx, double cy, Arc& arc) {
  const double d = 2 * (ax * (by - cy) + bx * (cy - ay) + cx * (ay - by));
  if (!(std::fabs(d) > 1e-12)) return false;
  const double a2 = ax * ax + ay * ay, b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
  arc.cx = (a2 * (by - cy) + b2 * (cy - ay) + c2 * (ay - by)) / d;
  arc.cy = (a2 * (cx - bx) + b2 * (ax - cx) + c2 * (bx - ax)) / d;
  arc.radius = std::hypot(ax - arc.cx, ay - arc.cy);
  if (!std::isfinite(arc.cx) || !std::isfinite(arc.cy) || !std::isfinite(arc.radius)) return false;
  arc.clockwise = (bx - ax) * (cy - by) - (by - ay) * (cx - bx) > 0;
  arc.start = std::atan2(ay - arc.cy, ax - arc.cx);
  arc.middle = unwrap(std::atan2(by - arc.cy, bx - arc.cx), arc.start, arc.clockwise);
  arc.end = unwrap(std::atan2(cy - arc.cy, cx - arc.cx), arc.middle, arc.clockwise);
  return true;
}

}  // namespace zradtool
