// The three-point arc of ZrShapeContext::arcTo as a circle, centre and angles, for the renderers.
#pragma once

namespace zradtool {

constexpr double kFullTurn = 2 * 3.14159265358979323846;  // radians

// An arc of the circle around (cx, cy). The angles (radians, y pointing down) are unwrapped
// along the direction of travel: start <= middle <= end when `clockwise` (angles grow, which is
// clockwise on screen), start >= middle >= end otherwise.
struct Arc {
  double cx = 0, cy = 0, radius = 0;
  double start = 0, middle = 0, end = 0;
  bool clockwise = true;
};

// The arc from a through b to c. False when no circle goes through the three points (they lie
// on one line, or two of them coincide): the renderers then draw a line to c.
bool arcThrough(double ax, double ay, double bx, double by, double cx, double cy, Arc& arc);

}  // namespace zradtool
