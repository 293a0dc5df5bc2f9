// The shape recording: the recorders that write it and the replay that reads it back.
//
// A record is a one-byte tag and 4-byte values in native byte order. Replay never reads past
// the stream: every value is read with a length check, and path data is taken only when its
// whole length is there.
#include <cstring>
#include <string>

#include <zrad/shape.h>

#include "shape/drawing.h"

using zrad::shape::penWidth;

namespace {

uint32_t bits(float v) {
  uint32_t u;
  std::memcpy(&u, &v, sizeof u);
  return u;
}

float toFloat(uint32_t u) {
  float v;
  std::memcpy(&v, &u, sizeof v);
  return v;
}

}  // namespace

ZrShapeContext::~ZrShapeContext() = default;

CMemoryStreamWithDC::CMemoryStreamWithDC(ZrSmartPtr<ZrStreamBuf> stream)
    : m_stream(std::move(stream)) {}

CMemoryStreamWithDC::~CMemoryStreamWithDC() = default;

void CMemoryStreamWithDC::record(char tag, const uint32_t* values, int count) {
  if (!m_stream) return;
  uint8_t bytes[1 + 6 * sizeof(uint32_t)];
  bytes[0] = uint8_t(tag);
  if (count > 0) std::memcpy(bytes + 1, values, sizeof(uint32_t) * size_t(count));
  m_stream->putBytes(bytes, 1 + uint32_t(sizeof(uint32_t) * size_t(count)));
}

void CMemoryStreamWithDC::setPen(int style, float width, unsigned colour) {
  const uint32_t v[] = {uint32_t(style), bits(width), colour};
  record('p', v, 3);
}
void CMemoryStreamWithDC::setBrush(int style, unsigned colour) {
  const uint32_t v[] = {uint32_t(style), colour};
  record('B', v, 2);
}
void CMemoryStreamWithDC::beginPath(int kind) {
  const uint32_t v[] = {uint32_t(kind)};
  record('b', v, 1);
}
void CMemoryStreamWithDC::endPath() { record('e', nullptr, 0); }
void CMemoryStreamWithDC::fill() { record('f', nullptr, 0); }
void CMemoryStreamWithDC::strokenPath() { record('s', nullptr, 0); }
void CMemoryStreamWithDC::closeFigure() { record('C', nullptr, 0); }
void CMemoryStreamWithDC::moveTo(float x, float y) {
  const uint32_t v[] = {bits(x), bits(y)};
  record('m', v, 2);
}
void CMemoryStreamWithDC::lineTo(float x, float y) {
  const uint32_t v[] = {bits(x), bits(y)};
  record('l', v, 2);
}
void CMemoryStreamWithDC::arcTo(float x1, float y1, float x2, float y2) {
  const uint32_t v[] = {bits(x1), bits(y1), bits(x2), bits(y2)};
  record('a', v, 4);
}
void CMemoryStreamWithDC::curve2To(float cx, float cy, float x, float y) {
  const uint32_t v[] = {bits(cx), bits(cy), bits(x), bits(y)};
  record('v', v, 4);
}
void CMemoryStreamWithDC::curve3To(float c1x, float c1y, float c2x, float c2y, float x, float y) {
  const uint32_t v[] = {bits(c1x), bits(c1y), bits(c2x), bits(c2y), bits(x), bits(y)};
  record('V', v, 6);
}
void CMemoryStreamWithDC::circle(float cx, float cy, float r) {
  moveTo(cx, cy);
  const uint32_t v[] = {bits(r)};
  record('c', v, 1);
}

// The text reader's recorder keeps its pen and brush entries in the final class, so calls
// through it bind directly; the bytes are the base recorder's.
void LocalStreamDC::setPen(int style, float width, unsigned colour) {
  CMemoryStreamWithDC::setPen(style, width, colour);
}
void LocalStreamDC::setBrush(int style, unsigned colour) {
  CMemoryStreamWithDC::setBrush(style, colour);
}

namespace {

struct Placement {
  float kx = 1.0f, ky = 1.0f, ox = 0.0f, oy = 0.0f;
};

Placement place(const ZrShape& shape, float x, float y, double width, double height) {
  Placement p;
  if (shape.width() != 0.0f && shape.height() != 0.0f) {
    p.kx = float(width) / shape.width();
    p.ky = float(height) / shape.height();
  }
  p.ox = x - shape.baseX() * p.kx;
  p.oy = y - shape.baseY() * p.ky;
  return p;
}

// Reads a recording from its start and replays it, transformed, onto a context.
class Replay {
 public:
  Replay(ZrStreamBuf& stream, ZrShapeContext& context, const Placement& at)
      : m_stream(stream), m_context(context), m_at(at) {}

  void run() {
    m_stream.seek(0, kSeekFromStart);
    while (!m_stream.isEof() && step()) {
    }
  }

 private:
  // Replays one record; false when it was cut short by the end of the stream.
  bool step() {
    uint32_t v[6];
    switch (char(m_stream.getByte())) {
      case 'p':
        if (!values(v, 3)) return false;
        m_context.setPen(int(v[0]), penWidth(toFloat(v[1]), m_at.kx), v[2]);
        return true;
      case 'B':
        if (!values(v, 2)) return false;
        m_context.setBrush(int(v[0]), v[1]);
        return true;
      case 'b':
        if (!values(v, 1)) return false;
        m_context.beginPath(int(v[0]));
        return true;
      case 'e': m_context.endPath(); return true;
      case 'f': m_context.fill(); return true;
      case 's': m_context.strokenPath(); return true;
      case 'C': m_context.closeFigure(); return true;
      case 'm':
        if (!points(v, 1)) return false;
        m_context.moveTo(m_x, m_y);
        return true;
      case 'l':
        if (!points(v, 1)) return false;
        m_context.lineTo(m_x, m_y);
        return true;
      case 'L':
        do {
          if (!points(v, 1)) return false;
          m_context.lineTo(m_x, m_y);
        } while (nextIsDigit());
        return true;
      case 'a':
        if (!points(v, 2)) return false;
        m_context.arcTo(toFloat(v[0]), toFloat(v[1]), m_x, m_y);
        return true;
      case 'v':
        if (!points(v, 2)) return false;
        m_context.curve2To(toFloat(v[0]), toFloat(v[1]), m_x, m_y);
        return true;
      case 'V':
        if (!points(v, 3)) return false;
        m_context.curve3To(toFloat(v[0]), toFloat(v[1]), toFloat(v[2]), toFloat(v[3]), m_x, m_y);
        return true;
      case 'c':
        if (!values(v, 1)) return false;
        m_context.circle(m_x, m_y, toFloat(v[0]) * m_at.kx);
        return true;
      case 'r':
        if (!values(v, 2)) return false;
        zrad::shape::rectangleFrom(m_context, m_x, m_y, toFloat(v[0]) * m_at.kx,
                                   toFloat(v[1]) * m_at.ky);
        return true;
      case 'd':
      case 'D':
        return pathData();
      default:
        return true;  // unknown tag: its values, if any, are read as tags
    }
  }

  bool values(uint32_t* v, int count) {
    const uint32_t n = uint32_t(sizeof(uint32_t)) * uint32_t(count);
    return m_stream.getBytes(v, n) == n;
  }

  // Reads `count` points into v as transformed floats; the last becomes the current point.
  bool points(uint32_t* v, int count) {
    if (!values(v, 2 * count)) return false;
    for (int i = 0; i < 2 * count; i += 2) {
      v[i] = bits(toFloat(v[i]) * m_at.kx + m_at.ox);
      v[i + 1] = bits(toFloat(v[i + 1]) * m_at.ky + m_at.oy);
    }
    m_x = toFloat(v[2 * count - 2]);
    m_y = toFloat(v[2 * count - 1]);
    return true;
  }

  bool nextIsDigit() {
    if (m_stream.isEof()) return false;
    const uint8_t next = m_stream.getByte();
    m_stream.seek(-1, kSeekFromCurrent);
    return next >= '0' && next <= '9';
  }

  bool pathData() {
    uint32_t n;
    if (!values(&n, 1) || n > m_stream.length() - m_stream.tell()) return false;
    std::string data(n, '\0');
    if (m_stream.getBytes(&data[0], n) != n) return false;
    ZrShape::readSVGPath(data.c_str(), &m_context, m_at.kx, m_at.ky, m_at.ox, m_at.oy);
    return true;
  }

  ZrStreamBuf& m_stream;
  ZrShapeContext& m_context;
  const Placement m_at;
  float m_x = 0.0f, m_y = 0.0f;  // the current point, transformed
};

}  // namespace

bool ZrShape::draw(ZrShapeContext* context, const float& x, const float& y,
                   const double& width, const double& height) const {
  if (!context || !m_recording) return false;
  const auto* recorder = dynamic_cast<const CMemoryStreamWithDC*>(context);
  if (recorder && recorder->stream() == m_recording) return false;  // would read its own output
  Replay(*m_recording, *context, place(*this, x, y, width, height)).run();
  return true;
}

void ZrShape::drawBoundingBox(ZrGeExtents2d& extents, const float& x, const float& y,
                              const double& width, const double& height) const {
  const Placement p = place(*this, x, y, width, height);
  extents.set(ZrGePoint2d(p.ox, p.oy),
              ZrGePoint2d(x + width - m_baseX * p.kx, y + height - m_baseY * p.ky));
}
