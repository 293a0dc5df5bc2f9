// ZrGraphicsPath: points and run-length shared instructions.
#include <zrad/shape.h>

ZR_RX_DEFINE_MEMBERS(ZrGraphicsPath, ZrRxObject, L"ZrGraphicsPath")

namespace {

// How many point indices an opcode carries, or -1 for an unknown opcode.
int indexCount(int op) {
  switch (op) {
    case ZrGraphicsPath::kMove:
    case ZrGraphicsPath::kLine: return 1;
    case ZrGraphicsPath::kArc:
    case ZrGraphicsPath::kQuad: return 2;
    case ZrGraphicsPath::kCubic: return 3;
    case ZrGraphicsPath::kClose: return 0;
    default: return -1;
  }
}

}  // namespace

ZrSmartPtr<ZrGraphicsPath> ZrGraphicsPath::createObject() {
  ZrSmartPtr<ZrGraphicsPath> path = ZrRxObjectImpl<ZrGraphicsPath>::createObject();
  path->reset();
  return path;
}

void ZrGraphicsPath::reset() {
  m_points.clear();
  m_ins.clear();
  m_lastOp = -1;
  m_reserved = -1;
}

int ZrGraphicsPath::addPoint(const float& x, const float& y) {
  const int index = m_points.length() / 2;
  m_points.append(x);
  m_points.append(y);
  return index;
}

void ZrGraphicsPath::addIns(const int& op, const int& i1, const int& i2, const int& i3) {
  const int count = indexCount(op);
  const bool continues = op == m_lastOp;
  m_lastOp = op;
  if (count < 0 || (continues && op == kClose)) return;
  if (continues && op == kMove) {
    m_ins[m_ins.length() - 1] = i1;  // only the last move of a run is kept
    return;
  }
  if (!continues) m_ins.append(op);
  const int indices[] = {i1, i2, i3};
  for (int k = 0; k < count; ++k) m_ins.append(indices[k]);
}

void ZrGraphicsPath::moveTo(const float& x, const float& y) { addIns(kMove, addPoint(x, y), -1, -1); }
void ZrGraphicsPath::lineTo(const float& x, const float& y) { addIns(kLine, addPoint(x, y), -1, -1); }
void ZrGraphicsPath::arcTo(float x1, float y1, float x2, float y2) {
  const int through = addPoint(x1, y1);
  addIns(kArc, through, addPoint(x2, y2), -1);
}
void ZrGraphicsPath::curve2dTo(float cx, float cy, float x, float y) {
  const int control = addPoint(cx, cy);
  addIns(kQuad, control, addPoint(x, y), -1);
}
void ZrGraphicsPath::curve3dTo(float c1x, float c1y, float c2x, float c2y, float x, float y) {
  const int c1 = addPoint(c1x, c1y);
  const int c2 = addPoint(c2x, c2y);
  addIns(kCubic, c1, c2, addPoint(x, y));
}
void ZrGraphicsPath::closeFigure() { addIns(kClose, -1, -1, -1); }
