// zrad/shape.h: small vector pictures ("shape1.0" texts), their recordings and replay.
//
// A ZrShape keeps a picture as a byte recording of drawing calls and replays it onto any
// ZrShapeContext at a chosen place and size. Shapes are read from "shape1.0" texts whose
// outlines are SVG path data; fifteen built-in slots hold the application's standard icons.
// Nothing here throws (but the platform's out-of-memory error) and nothing locks, except the
// one-time creation of the built-in table.
#pragma once

#include <cstdint>

#include <zrad/export.h>
#include <zrplatform/array.h>
#include <zrplatform/geometry.h>
#include <zrplatform/rxobject.h>
#include <zrplatform/stream.h>

// A path-based drawing target. The thirteen operations occupy the first thirteen virtual slots
// in this order; the destructor comes after them. Colours are 0xAABBGGRR: alpha in the top byte,
// red in the low byte. Pen styles, brush styles and path kinds are the caller's integers,
// passed through untouched.
class ZRAD_EXPORT ZrShapeContext {
 public:
  virtual void setPen(int style, float width, unsigned colour) = 0;
  virtual void setBrush(int style, unsigned colour) = 0;
  virtual void beginPath(int kind) = 0;
  virtual void endPath() = 0;
  virtual void fill() = 0;
  virtual void strokenPath() = 0;
  virtual void closeFigure() = 0;
  virtual void moveTo(float x, float y) = 0;
  virtual void lineTo(float x, float y) = 0;
  // Arc from the current point through (x1, y1) to (x2, y2).
  virtual void arcTo(float x1, float y1, float x2, float y2) = 0;
  // Quadratic Bezier: control point, end.
  virtual void curve2To(float cx, float cy, float x, float y) = 0;
  // Cubic Bezier: two control points, end.
  virtual void curve3To(float c1x, float c1y, float c2x, float c2y, float x, float y) = 0;
  virtual void circle(float cx, float cy, float r) = 0;
  virtual ~ZrShapeContext();
};

// Records every call as bytes appended to a stream: a one-byte tag, then 4-byte values in the
// machine's byte order (little-endian here). The tags are the "shape1.0" body letters:
//   setPen(1, 4, c)     => 'p' int32 1, float 4, uint32 c        (13 bytes)
//   setBrush(1, c)      => 'B' int32 1, uint32 c                 (9 bytes)
//   beginPath(k)        => 'b' int32 k
//   endPath, fill, strokenPath, closeFigure => 'e', 'f', 's', 'C' alone
//   moveTo / lineTo     => 'm' / 'l' x y
//   arcTo, curve2To     => 'a', 'v' x1 y1 x2 y2
//   curve3To            => 'V' six floats
//   circle(10, 20, 5)   => 'm' 10 20 'c' 5                       (18 bytes)
// A null stream records nothing.
class ZRAD_EXPORT CMemoryStreamWithDC : public ZrShapeContext {
 public:
  explicit CMemoryStreamWithDC(ZrSmartPtr<ZrStreamBuf> stream);
  ~CMemoryStreamWithDC() override;

  const ZrSmartPtr<ZrStreamBuf>& stream() const { return m_stream; }

  void setPen(int style, float width, unsigned colour) override;
  void setBrush(int style, unsigned colour) override;
  void beginPath(int kind) override;
  void endPath() override;
  void fill() override;
  void strokenPath() override;
  void closeFigure() override;
  void moveTo(float x, float y) override;
  void lineTo(float x, float y) override;
  void arcTo(float x1, float y1, float x2, float y2) override;
  void curve2To(float cx, float cy, float x, float y) override;
  void curve3To(float c1x, float c1y, float c2x, float c2y, float x, float y) override;
  void circle(float cx, float cy, float r) override;

 protected:
  // Appends one record: the tag, then `count` 4-byte values.
  void record(char tag, const uint32_t* values, int count);

 private:
  ZrSmartPtr<ZrStreamBuf> m_stream;
};

// The recorder the "shape1.0" reader writes into; the same bytes as CMemoryStreamWithDC.
class ZRAD_EXPORT LocalStreamDC final : public CMemoryStreamWithDC {
 public:
  using CMemoryStreamWithDC::CMemoryStreamWithDC;
  void setPen(int style, float width, unsigned colour) override;
  void setBrush(int style, unsigned colour) override;
};

class ZRAD_EXPORT ZrShape {
 public:
  ZrShape() = default;

  // Reads a "shape1.0" text: the word "shape1.0" exactly, eight header numbers (base x, base y,
  // width, height, sx, sy, ox, oy), then body tokens, each one character followed by its
  // arguments. Every body point (x, y) is recorded as (x*sx + ox, y*sy + oy).
  //   token  arguments              records
  //   p      style width colour     setPen(style, max(width*sx + 0.5, 1), colour)
  //   B      style colour           setBrush          b kind  beginPath
  //   e f s C                       endPath, fill, strokenPath, closeFigure
  //   m l    x y                    moveTo / lineTo; the current point moves there
  //   L      x y ...                lineTo per pair, continuing only while the byte right
  //                                 after the last number is a digit ("L 1 2 3 4": one line)
  //   r      w h                    the four lines of a rectangle from the current point
  //   c      radius                 circle(current point, radius*sx)
  //   a v    x1 y1 x2 y2            arcTo / curve2To;  V x1 y1 x2 y2 x3 y3  curve3To
  //   d D    "(" path data ")"      readSVGPath(data, context, sx, sy, ox, oy); blanks before
  //                                 "(" are skipped, a missing ")" takes the rest of the text,
  //                                 no "(" reads empty data and the byte is read as a token
  // Unknown characters are skipped one at a time. A malformed or missing number stops the
  // reader; what was recorded so far stays. Numbers are decimal: floats with optional sign,
  // fraction and exponent (any magnitude, rounded to float), ints within int32, colours as
  // unsigned digits within uint32.
  // Returns false and changes nothing when the text is null or does not start with
  // "shape1.0"; otherwise stores the header's base point and size, appends the body's records
  // to the recording (made with 2048 bytes of room when the shape has none) and returns true,
  // also when the header or body is cut short.
  //   "shape1.0 0 0 10 10 1 1 0 0"   => true, empty recording
  //   "shape1.0x 0 0 10 10 1 1 0 0"  => false
  bool readFromString(const char* text);

  // Binary persistence is not implemented: both do nothing and return false.
  bool readFromStream(ZrSmartPtr<ZrStreamBuf> stream);
  bool writeStream(ZrSmartPtr<ZrStreamBuf> stream);

  // Reads SVG path data onto `context`, every point (x, y) drawn as (x*sx + ox, y*sy + oy).
  // The reader keeps its own current point starting at (0, 0) and differs from SVG on purpose:
  //   - a number is a sign (first only), digits, ".", "e" and "E": "1e-5" is 1 then -5,
  //     "2.5-3" is 2.5 then -3; it is rounded to float; past 255 characters only the first
  //     255 count
  //   - "M 1 2 3 4 5 6" moves to (5, 6) and draws nothing; "m" adds only its last pair
  //   - "Z" closes the figure and puts the current point at (0, 0), not at the figure's start
  //   - "S" and "T" always reflect the previous point (after a line: the line's start)
  //   - arcs are circular only: rx != ry skips the group; an end point closer than 1e-4 or
  //     beyond the diameter draws lineTo(x, y) without scale and offset; otherwise
  //     arcTo(middle of the arc, end). After an arc command with seven or more numbers the
  //     current point is its last two numbers as written (relative ones too)
  //   - bytes that are not command letters are skipped; incomplete argument groups are dropped
  // Returns false for a null text or context (nothing drawn), true otherwise.
  //   "M0 25 a 25 25 0 0 0 50 0 25 25 0 0 0 -50 0" => moveTo(0, 25),
  //       arcTo(25, 50, 50, 25), arcTo(25, 0, 0, 25)
  static bool readSVGPath(const char* path, ZrShapeContext* context, float sx, float sy,
                          float ox, float oy);

  // The built-in shapes: slots 0 to 7 hold the standard icons, 8 to 14 are empty shapes.
  // Created once, thread-safely, on first use; lives to process exit. Returns null for an
  // index outside 0..14; otherwise rewinds the slot's recording and returns the slot, so two
  // threads replaying the same slot at once disturb each other.
  static ZrShape* globalShape(int index);

  // Replays the recording onto `context` so that the base point lands on (x, y) and the frame
  // on width x height: kx = width / frame width, ky = height / frame height (both 1 when the
  // frame has a zero side), origin (x - baseX*kx, y - baseY*ky). Pen widths become
  // max(w*kx + 0.5, 1) again, radii scale by kx. Unknown tags are skipped; a record cut short
  // by the end of the stream is not drawn. Returns false for a null context, an empty shape or
  // a context that records into this shape's own stream; true at the end of the stream.
  bool draw(ZrShapeContext* context, const float& x, const float& y, const double& width,
            const double& height) const;

  // Where draw() with the same arguments puts the frame: (x - baseX*kx, y - baseY*ky) to
  // (x + width - baseX*kx, y + height - baseY*ky). Reads nothing of the recording.
  void drawBoundingBox(ZrGeExtents2d& extents, const float& x, const float& y,
                       const double& width, const double& height) const;

  const ZrSmartPtr<ZrStreamBuf>& recording() const { return m_recording; }
  float baseX() const { return m_baseX; }
  float baseY() const { return m_baseY; }
  float width() const { return m_width; }
  float height() const { return m_height; }

 private:
  ZrSmartPtr<ZrStreamBuf> m_recording;
  float m_baseX = 0.0f;
  float m_baseY = 0.0f;
  float m_width = 0.0f;
  float m_height = 0.0f;
};

// A path in two arrays: points (two floats each, indexed in order of addition) and
// instructions (an opcode, then the point indices it uses). Runs of one opcode share it:
//   moveTo A, moveTo B, lineTo C, lineTo D
//     => instructions kMove, B, kLine, C, D; points A B C D
class ZRAD_EXPORT ZrGraphicsPath : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(ZrGraphicsPath);

  static constexpr int kMove = int(0x80000000u);
  static constexpr int kLine = 0x10000000;
  static constexpr int kArc = 0x20000000;    // through, end
  static constexpr int kCubic = 0x30000000;  // control, control, end
  static constexpr int kQuad = 0x40000000;   // control, end
  static constexpr int kClose = int(0x90000000u);

  // A new empty path with one reference.
  static ZrSmartPtr<ZrGraphicsPath> createObject();

  // Empties both arrays; the last opcode becomes -1.
  void reset();
  // Appends the point and returns its index.
  int addPoint(const float& x, const float& y);
  // Appends `op` unless it continues the last opcode's run, then the indices it uses. A move
  // after a move replaces the previous move's index; a close after a close is dropped; an
  // unknown opcode only becomes the last opcode.
  void addIns(const int& op, const int& i1, const int& i2, const int& i3);

  void moveTo(const float& x, const float& y);
  void lineTo(const float& x, const float& y);
  void arcTo(float x1, float y1, float x2, float y2);
  void curve2dTo(float cx, float cy, float x, float y);
  void curve3dTo(float c1x, float c1y, float c2x, float c2y, float x, float y);
  void closeFigure();

  const ZrArray<float, ZrArrayMemCopyReallocator<float>>& points() const { return m_points; }
  const ZrArray<int, ZrArrayMemCopyReallocator<int>>& instructions() const { return m_ins; }
  int lastOpcode() const { return m_lastOp; }

 protected:
  ZrGraphicsPath() = default;
  ~ZrGraphicsPath() override = default;

 private:
  ZrArray<float, ZrArrayMemCopyReallocator<float>> m_points;
  ZrArray<int, ZrArrayMemCopyReallocator<int>> m_ins;
  int m_lastOp = -1;
  // Second state word of the path record; reset() sets it to -1 and nothing else uses it.
  int m_reserved = -1;
};
