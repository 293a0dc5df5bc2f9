// The "shape1.0" text reader: header, body tokens and their path data, recorded into a shape.
#include <climits>
#include <cstring>

#include <zrad/shape.h>

#include "shape/drawing.h"
#include "shape/numscan.h"
#include "shape/svgpath.h"

namespace zrad::shape {

namespace {

const char kMagic[] = "shape1.0";
const uint32_t kInitialRecordRoom = 2048;

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// A cursor over the text with the token reads of the format. Every read skips blanks first
// and returns false, consuming nothing more, on a malformed value.
class TextCursor {
 public:
  TextCursor(const char* begin, const char* end) : m_p(begin), m_end(end) {}

  bool atEnd() {
    skipBlanks();
    return m_p == m_end;
  }
  char take() { return *m_p++; }

  // The first word, compared whole: "shape1.0x" is not "shape1.0".
  bool magic() {
    skipBlanks();
    const char* start = m_p;
    while (m_p < m_end && !isBlank(*m_p)) ++m_p;
    return size_t(m_p - start) == sizeof kMagic - 1 && std::memcmp(start, kMagic, m_p - start) == 0;
  }

  bool real(float& v) {
    skipBlanks();
    const char* e = floatEnd(m_p, m_end);
    if (e == m_p) return false;
    v = float(decimalValue(m_p, e));
    m_p = e;
    return true;
  }
  bool integer(int& v) {
    int64_t x;
    if (!whole(true, INT32_MIN, INT32_MAX, x)) return false;
    v = int(x);
    return true;
  }
  bool colour(unsigned& v) {
    int64_t x;
    if (!whole(false, 0, UINT32_MAX, x)) return false;
    v = unsigned(x);
    return true;
  }
  // The L token goes on only while a digit follows the last number immediately.
  bool digitFollows() const { return m_p < m_end && isDigit(*m_p); }

  // The data of a d token: "(" ... ")" after spaces, or empty with the cursor left on the byte
  // that was not "(".
  void pathData(const char*& begin, const char*& end) {
    while (m_p < m_end && *m_p == ' ') ++m_p;
    begin = end = m_p;
    if (m_p == m_end || *m_p != '(') return;
    begin = ++m_p;
    const void* close = std::memchr(m_p, ')', size_t(m_end - m_p));
    end = close ? static_cast<const char*>(close) : m_end;
    m_p = close ? end + 1 : m_end;
  }

 private:
  void skipBlanks() {
    while (m_p < m_end && isBlank(*m_p)) ++m_p;
  }
  bool whole(bool allowMinus, int64_t minimum, int64_t maximum, int64_t& v) {
    skipBlanks();
    const char* e = integerEnd(m_p, m_end, allowMinus, minimum, maximum, v);
    if (e == m_p) return false;
    m_p = e;
    return true;
  }

  const char* m_p;
  const char* const m_end;
};

// Reads body tokens onto the recorder until the text ends or a number is malformed.
class BodyReader {
 public:
  BodyReader(TextCursor& in, ZrShapeContext& out, const float* scale)
      : m_in(in), m_out(out), m_sx(scale[0]), m_sy(scale[1]), m_ox(scale[2]), m_oy(scale[3]) {}

  void run() {
    while (!m_in.atEnd() && token(m_in.take())) {
    }
  }

 private:
  // Draws one token; false when its arguments are malformed.
  bool token(char t) {
    int i;
    unsigned colour;
    float a, b, c, d, e, f;
    switch (t) {
      case 'p':
        if (!(m_in.integer(i) && m_in.real(a) && m_in.colour(colour))) return false;
        m_out.setPen(i, penWidth(a, m_sx), colour);
        return true;
      case 'B':
        if (!(m_in.integer(i) && m_in.colour(colour))) return false;
        m_out.setBrush(i, colour);
        return true;
      case 'b':
        if (!m_in.integer(i)) return false;
        m_out.beginPath(i);
        return true;
      case 'e': m_out.endPath(); return true;
      case 'f': m_out.fill(); return true;
      case 's': m_out.strokenPath(); return true;
      case 'C': m_out.closeFigure(); return true;
      case 'm':
        if (!point(a, b)) return false;
        m_out.moveTo(a, b);
        return true;
      case 'l':
        if (!point(a, b)) return false;
        m_out.lineTo(a, b);
        return true;
      case 'L':
        do {
          if (!point(a, b)) return false;
          m_out.lineTo(a, b);
        } while (m_in.digitFollows());
        return true;
      case 'r':
        if (!(m_in.real(a) && m_in.real(b))) return false;
        rectangleFrom(m_out, m_x, m_y, a * m_sx, b * m_sy);
        return true;
      case 'c':
        if (!m_in.real(a)) return false;
        m_out.circle(m_x, m_y, a * m_sx);
        return true;
      case 'a':
      case 'v': {
        if (!(point(a, b) && point(c, d))) return false;
        if (t == 'a') m_out.arcTo(a, b, c, d);
        else m_out.curve2To(a, b, c, d);
        return true;
      }
      case 'V':
        if (!(point(a, b) && point(c, d) && point(e, f))) return false;
        m_out.curve3To(a, b, c, d, e, f);
        return true;
      case 'd':
      case 'D': {
        const char *begin, *end;
        m_in.pathData(begin, end);
        readPathData(begin, end, m_out, m_sx, m_sy, m_ox, m_oy);
        return true;
      }
      default:
        return true;  // not a token: skipped
    }
  }

  // Reads a pair, transforms it and makes it the current point.
  bool point(float& x, float& y) {
    if (!(m_in.real(x) && m_in.real(y))) return false;
    m_x = x = x * m_sx + m_ox;
    m_y = y = y * m_sy + m_oy;
    return true;
  }

  TextCursor& m_in;
  ZrShapeContext& m_out;
  const float m_sx, m_sy, m_ox, m_oy;
  float m_x = 0.0f, m_y = 0.0f;
};

}  // namespace

}  // namespace zrad::shape

bool ZrShape::readFromString(const char* text) {
  using namespace zrad::shape;
  if (!text) return false;
  TextCursor in(text, text + std::strlen(text));
  if (!in.magic()) return false;
  // base x, base y, width, height, sx, sy, ox, oy; numbers missing from a short header are 0
  float header[8] = {};
  int read = 0;
  while (read < 8 && in.real(header[read])) ++read;
  m_baseX = header[0];
  m_baseY = header[1];
  m_width = header[2];
  m_height = header[3];
  if (!m_recording) m_recording = ZrSmartPtr<ZrStreamBuf>(ZrMemoryStream::createNew(kInitialRecordRoom));
  m_recording->seek(0, kSeekFromEnd);
  if (read < 8) return true;
  LocalStreamDC recorder(m_recording);
  BodyReader(in, recorder, header + 4).run();
  return true;
}

bool ZrShape::readFromStream(ZrSmartPtr<ZrStreamBuf>) { return false; }
bool ZrShape::writeStream(ZrSmartPtr<ZrStreamBuf>) { return false; }
