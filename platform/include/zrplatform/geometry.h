// Plain 2-D and 3-D points of doubles and 2-D extents.
#pragma once

struct ZrGePoint2d {
  double x = 0.0;
  double y = 0.0;
  ZrGePoint2d() = default;
  ZrGePoint2d(double ax, double ay) : x(ax), y(ay) {}
  bool operator==(const ZrGePoint2d& o) const { return x == o.x && y == o.y; }
  bool operator!=(const ZrGePoint2d& o) const { return !(*this == o); }
};

struct ZrGePoint3d {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  ZrGePoint3d() = default;
  ZrGePoint3d(double ax, double ay, double az) : x(ax), y(ay), z(az) {}
  bool operator==(const ZrGePoint3d& o) const { return x == o.x && y == o.y && z == o.z; }
  bool operator!=(const ZrGePoint3d& o) const { return !(*this == o); }
};

class ZrGeExtents2d {
 public:
  ZrGeExtents2d() = default;
  ZrGeExtents2d(const ZrGePoint2d& min, const ZrGePoint2d& max) : m_min(min), m_max(max) {}
  const ZrGePoint2d& minPoint() const { return m_min; }
  const ZrGePoint2d& maxPoint() const { return m_max; }
  void set(const ZrGePoint2d& min, const ZrGePoint2d& max) {
    m_min = min;
    m_max = max;
  }

 private:
  ZrGePoint2d m_min;
  ZrGePoint2d m_max;
};
