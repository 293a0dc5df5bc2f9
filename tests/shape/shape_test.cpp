// The shape family: "shape1.0" tokens, SVG path data with its deliberate differences from SVG,
// the record bytes, replay placement, graphics path instructions and the built-in table.
#include <zrad/shape.h>

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "shape/calllog.h"

namespace {

struct Row {
  const char* input;
  const char* calls;
};

// Reads `text` and replays it at scale 1 with the origin at (0, 0) (the texts use a zero frame).
std::string replayed(const ZrShape& shape) {
  CallLog log;
  EXPECT_TRUE(shape.draw(&log, 0.0f, 0.0f, 1.0, 1.0));
  return log.text;
}

std::string bytesOf(ZrStreamBuf& stream) {
  std::string bytes(size_t(stream.length()), '\0');
  stream.seek(0, kSeekFromStart);
  stream.getBytes(&bytes[0], uint32_t(bytes.size()));
  return bytes;
}

TEST(ShapeText, TokensRecordTheirCalls) {
  // Header "0 0 0 0 sx sy ox oy": the replay is at scale 1, where pens gain 0.5 once more.
  const Row rows[] = {
      {"shape1.0 0 0 0 0 1 1 0 0", ""},
      {"shape1.0 0 0 0 0 1 1 0 0 p 1 0.2 7", "pen 1 1.5 7"},
      {"shape1.0 0 0 0 0 3 3 0 0 p 1 4 4294967295", "pen 1 13 4294967295"},
      {"shape1.0 0 0 0 0 1 1 0 0 B -2 16 b 3 e f s C", "brush -2 16 begin 3 end fill stroke close"},
      {"shape1.0 0 0 0 0 2 3 10 20 m 1 2 l 3 4", "move 12 26 line 16 32"},
      {"shape1.0 0 0 0 0 1 1 0 0 L 1 2 3 4", "line 1 2"},
      {"shape1.0 0 0 0 0 2 1 0 0 m 1 1 r 2 3", "move 2 1 line 6 1 line 6 4 line 2 4 line 2 1"},
      {"shape1.0 0 0 0 0 2 2 0 0 m 5 5 c 2", "move 10 10 move 10 10 circle 10 10 4"},
      {"shape1.0 0 0 0 0 1 1 0 0 a 1 2 3 4 v 5 6 7 8 V 1 2 3 4 5 6",
       "arc 1 2 3 4 quad 5 6 7 8 cubic 1 2 3 4 5 6"},
      {"shape1.0 0 0 0 0 2 2 1 1 d   (M1 2 L 3 4) f", "move 3 5 line 7 9 fill"},
      {"shape1.0 0 0 0 0 1 1 0 0 b 0 d (M0 0L1 1 e)f s", "begin 0 move 0 0 line 1 1 fill stroke"},
      {"shape1.0 0 0 0 0 1 1 0 0 d f", "fill"},                // no "(": the byte is a token
      {"shape1.0 0 0 0 0 1 1 0 0 D(M1 2 L3 4", "move 1 2 line 3 4"},  // no ")"
      {"shape1.0 0 0 0 0 1 1 0 0 x 12 e", "end"},              // unknown letter, junk digits
      {"shape1.0 0 0 0 0 1 1 0 0 m 1 2 l 1 x m 3 3", "move 1 2"},     // malformed number stops
      {"shape1.0 0 0 0 0 1 1 0 0 B 1 4294967296 f", ""},         // colour out of range
      {"shape1.0 0 0 0 0 1 1 0 0 m 1e1 -.5 l +2.5E-1 1.", "move 10 -0.5 line 0.25 1"},
      {"shape1.0 0 0 0 0 1 1", ""},                                  // short header
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrShape shape;
    ASSERT_TRUE(shape.readFromString(rows[i].input)) << "row " << i;
    ASSERT_TRUE(shape.recording()) << "row " << i;
    EXPECT_EQ(replayed(shape), rows[i].calls) << "row " << i;
  }
  for (const char* refused : {"shape1.0x 0 0 1 1 1 1 0 0", "shape1 0 0", "", "SHAPE1.0"}) {
    ZrShape shape;
    EXPECT_FALSE(shape.readFromString(refused)) << refused;
    EXPECT_FALSE(shape.recording()) << refused;
  }
  ZrShape shape;
  EXPECT_FALSE(shape.readFromString(nullptr));
  ASSERT_TRUE(shape.readFromString("  shape1.0 1 2 3 4 1 1 0 0 m 1 1"));
  ASSERT_TRUE(shape.readFromString("shape1.0 5 6 7 8 1 1 0 0 l 2 2"));  // appends
  EXPECT_EQ(shape.baseX(), 5.0f);
  EXPECT_EQ(shape.height(), 8.0f);
  CallLog log;
  shape.draw(&log, 5.0f, 6.0f, 7.0, 8.0);
  EXPECT_EQ(log.text, "move 1 1 line 2 2");
  EXPECT_FALSE(shape.readFromStream(shape.recording()));
  EXPECT_FALSE(shape.writeStream(shape.recording()));
}

TEST(SvgPath, ReadsCommandsWithTheirQuirks) {
  const Row rows[] = {
      {"M1 2 3 4 5 6", "move 5 6"},
      {"m1 1 m2 2 4 4", "move 1 1 move 5 5"},
      {"M", ""},
      {"M0 25 a 25 25 0 0 0 50 0 25 25 0 0 0 -50 0", "move 0 25 arc 25 50 50 25 arc 25 0 0 25"},
      {"M0 0 A10 12 0 0 0 5 0", "move 0 0"},
      {"M0 0 A1 1 0 0 0 5 0", "move 0 0 line 5 0"},
      {"M0 0 A5 5 0 1 1 6 0", "move 0 0 arc 3 -9 6 0"},
      {"M0 0 A5 5 0 0 0 6", "move 0 0"},
      {"M2 2 A5 5 0 0 0 2 2", "move 2 2 line 2 2"},
      {"M10 10 a5 5 0 0 0 10 0 l1 1", "move 10 10 arc 15 15 20 10 line 11 1"},
      {"M3 3 z l5 0", "move 3 3 close line 5 0"},
      {"M3 3 Z 7 7 L1 1", "move 3 3 close line 1 1"},
      {"M0 0 L1e-5", "move 0 0 line 1 -5"},
      {"M2388.2-3452.9", "move 2388.2 -3452.9"},
      {"M1,2L3,4H10V20h1v1", "move 1 2 line 3 4 line 10 4 line 10 20 line 11 20 line 11 21"},
      {"M1 1 l1 1 1 1", "move 1 1 line 2 2 line 3 3"},
      {"M0 0C1 1 2 2 3 3 4 4", "move 0 0 cubic 1 1 2 2 3 3"},
      {"M0 0c1 1 2 2 3 3s1 1 2 2", "move 0 0 cubic 1 1 2 2 3 3 cubic 4 4 4 4 5 5"},
      {"M0 0 L4 0 S5 5 6 6", "move 0 0 line 4 0 cubic 8 0 5 5 6 6"},
      {"M0 0Q1 1 2 0T4 0 t2 0", "move 0 0 quad 1 1 2 0 quad 3 -1 4 0 quad 5 1 6 0"},
      {"M0 0 q1 1 2 0 3 3", "move 0 0 quad 1 1 2 0"},
      {"xyw e, M1 1 L1.5.5", "move 1 1"},
      {"M.5 -.5 L+1 1.2.3 4", "move 0.5 -0.5 line 1 1.2"},
      {"M 0.1 0", "move 0.1 0"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    CallLog log;
    EXPECT_TRUE(ZrShape::readSVGPath(rows[i].input, &log, 1, 1, 0, 0)) << "row " << i;
    EXPECT_EQ(log.text, rows[i].calls) << "row " << i << ": " << rows[i].input;
  }
  CallLog log;
  ZrShape::readSVGPath("M1 1L2 2 A1 1 0 0 0 9 2", &log, 2, 3, 1, 1);
  EXPECT_EQ(log.text, "move 3 4 line 5 7 line 9 2");  // the arc's fallback line skips the transform
  EXPECT_FALSE(ZrShape::readSVGPath(nullptr, &log, 1, 1, 0, 0));
  EXPECT_FALSE(ZrShape::readSVGPath("M1 1", nullptr, 1, 1, 0, 0));
}

// Record bytes: a tag, then 4-byte native values.
std::string record(char tag, std::initializer_list<float> values) {
  std::string bytes(1, tag);
  for (float v : values) bytes.append(reinterpret_cast<const char*>(&v), 4);
  return bytes;
}
std::string word(uint32_t v) { return std::string(reinterpret_cast<const char*>(&v), 4); }

TEST(Recording, WritesTheRecordFormat) {
  const std::string expected = "p" + word(1) + record(0, {4.0f}).substr(1) + word(0xFF0000FFu) +
                               "B" + word(uint32_t(-1)) + word(7) + "b" + word(2) + "efsC" +
                               record('m', {1, 2}) + record('l', {3, 4}) +
                               record('a', {1, 2, 3, 4}) + record('v', {5, 6, 7, 8}) +
                               record('V', {1, 2, 3, 4, 5, 6}) + record('m', {10, 20}) +
                               record('c', {5});
  auto script = [](ZrShapeContext& dc) {
    dc.setPen(1, 4, 0xFF0000FFu);
    dc.setBrush(-1, 7);
    dc.beginPath(2);
    dc.endPath(), dc.fill(), dc.strokenPath(), dc.closeFigure();
    dc.moveTo(1, 2), dc.lineTo(3, 4), dc.arcTo(1, 2, 3, 4), dc.curve2To(5, 6, 7, 8);
    dc.curve3To(1, 2, 3, 4, 5, 6);
    dc.circle(10, 20, 5);
  };
  ZrSmartPtr<ZrStreamBuf> a(ZrMemoryStream::createNew()), b(ZrMemoryStream::createNew());
  CMemoryStreamWithDC recorder(a);
  LocalStreamDC local(b);
  script(recorder);
  script(local);
  EXPECT_EQ(bytesOf(*a), expected);
  EXPECT_EQ(bytesOf(*b), expected);
  CMemoryStreamWithDC(nullptr).circle(1, 1, 1);  // a null stream records nothing
}

TEST(Replay, PlacesAndScalesTheRecording) {
  ZrShape shape;
  ASSERT_TRUE(shape.readFromString("shape1.0 75 75 150 150 1 1 0 0 p 1 4 9 m 0 0 c 10 m 150 150 r -10 -20"));
  ZrGeExtents2d box;
  shape.drawBoundingBox(box, 100.0f, 100.0f, 30.0, 30.0);
  EXPECT_EQ(box.minPoint(), ZrGePoint2d(85, 85));
  EXPECT_EQ(box.maxPoint(), ZrGePoint2d(115, 115));
  CallLog log;
  EXPECT_TRUE(shape.draw(&log, 100.0f, 100.0f, 30.0, 30.0));  // kx = ky = 0.2, origin (85, 85)
  EXPECT_EQ(log.text, "pen 1 1.4 9 move 85 85 move 85 85 circle 85 85 2 move 115 115 "
                      "line 113 115 line 113 111 line 115 111 line 115 115");

  // Re-recording at scale 2 into another stream, then replaying that at scale 1.
  ZrShape frameless;
  ASSERT_TRUE(frameless.readFromString("shape1.0 0 0 0 0 1 1 0 0 p 1 4 9 m 1 2 c 3 b 0 d (M1 1 L2 2)"));
  ZrSmartPtr<ZrStreamBuf> copy(ZrMemoryStream::createNew());
  CMemoryStreamWithDC recorder(copy);
  ZrShape scaled;
  ASSERT_TRUE(scaled.readFromString("shape1.0 0 0 10 10 1 1 0 0 p 1 4 9 m 1 2 c 3"));
  EXPECT_TRUE(scaled.draw(&recorder, 0.0f, 0.0f, 20.0, 20.0));  // kx = ky = 2
  // The replayed circle records its own move to the centre again.
  EXPECT_EQ(bytesOf(*copy), "p" + word(1) + record(0, {9.5f}).substr(1) + word(9) +
                                record('m', {2, 4}) + record('m', {2, 4}) + record('m', {2, 4}) +
                                record('c', {6}));
  EXPECT_FALSE(scaled.draw(nullptr, 0.0f, 0.0f, 1.0, 1.0));
  EXPECT_FALSE(ZrShape().draw(&log, 0.0f, 0.0f, 1.0, 1.0));
  CMemoryStreamWithDC ownStream(frameless.recording());
  EXPECT_FALSE(frameless.draw(&ownStream, 0.0f, 0.0f, 1.0, 1.0));

  // A zero frame draws at scale 1 whatever the size asked for; the pen rule applies again.
  log.text.clear();
  ASSERT_TRUE(frameless.draw(&log, 10.0f, 0.0f, 50.0, 50.0));
  EXPECT_EQ(log.text, "pen 1 5 9 move 11 2 move 11 2 circle 11 2 3 begin 0 move 11 1 line 12 2");

  // Tags only replay knows: L goes on while the next byte is a digit (the low byte of 0x41200035
  // is "5"), r draws from the current point, "?" is skipped, D carries its length.
  const std::string data = "M1 1 L2 2";
  const std::string bytes = record('m', {1, 1}) + record('L', {2, 2}) + word(0x41200035u) +
                            record(0, {3}).substr(1) + record('r', {1, 2}) + "?" + "D" +
                            word(uint32_t(data.size())) + data;
  ZrShape fromBytes;
  ASSERT_TRUE(fromBytes.readFromString("shape1.0 0 0 0 0 1 1 0 0"));
  fromBytes.recording()->putBytes(bytes.data(), uint32_t(bytes.size()));
  EXPECT_EQ(replayed(fromBytes), "move 1 1 line 2 2 line 10.0001 3 line 11.0001 3 line 11.0001 5 "
                                 "line 10.0001 5 line 10.0001 3 move 1 1 line 2 2");
}

TEST(Replay, CutOrHostileRecordingsEndAtTheStreamsEnd) {
  const std::string whole = record('m', {1, 1}) + record('V', {1, 2, 3, 4, 5, 6}) + "d" +
                            word(0xFFFFFFF0u) + "M1 1" + record('L', {2, 2});
  for (size_t cut = 0; cut <= whole.size(); ++cut) {
    ZrShape shape;
    shape.readFromString("shape1.0 0 0 0 0 1 1 0 0");
    shape.recording()->putBytes(whole.data(), uint32_t(cut));
    CallLog log;
    EXPECT_TRUE(shape.draw(&log, 0.0f, 0.0f, 1.0, 1.0)) << "cut " << cut;
    EXPECT_LE(shape.recording()->tell(), cut) << "cut " << cut;
    const char* full = "move 1 1 cubic 1 2 3 4 5 6";
    EXPECT_EQ(log.text, cut >= 34 ? full : cut >= 9 ? "move 1 1" : "") << "cut " << cut;
  }
}

TEST(GraphicsPath, RunsShareTheirOpcode) {
  ZrSmartPtr<ZrGraphicsPath> path = ZrGraphicsPath::createObject();
  EXPECT_EQ(path->numRefs(), 1);
  EXPECT_EQ(path->lastOpcode(), -1);
  path->moveTo(0, 0), path->moveTo(1, 1), path->lineTo(2, 2), path->lineTo(3, 3);
  path->closeFigure(), path->closeFigure();
  path->arcTo(4, 4, 5, 5), path->curve2dTo(6, 6, 7, 7), path->curve3dTo(8, 8, 9, 9, 10, 10);
  path->addIns(0x12345678, 0, 0, 0);
  path->curve3dTo(1, 1, 2, 2, 3, 3);
  const std::vector<int> expected = {ZrGraphicsPath::kMove, 1, ZrGraphicsPath::kLine, 2, 3,
                                     ZrGraphicsPath::kClose, ZrGraphicsPath::kArc, 4, 5,
                                     ZrGraphicsPath::kQuad, 6, 7, ZrGraphicsPath::kCubic, 8, 9, 10,
                                     ZrGraphicsPath::kCubic, 11, 12, 13};
  EXPECT_EQ(std::vector<int>(path->instructions().begin(), path->instructions().end()), expected);
  ASSERT_EQ(path->points().length(), 28);
  EXPECT_EQ(path->points()[26], 3.0f);
  EXPECT_EQ(path->lastOpcode(), ZrGraphicsPath::kCubic);
  path->reset();
  EXPECT_TRUE(path->points().isEmpty() && path->instructions().isEmpty());
  EXPECT_EQ(path->lastOpcode(), -1);
}

TEST(Builtin, FifteenSlotsWithTheStandardIcons) {
  EXPECT_EQ(ZrShape::globalShape(-1), nullptr);
  EXPECT_EQ(ZrShape::globalShape(15), nullptr);
  // The pen and brush records of each icon, in order.
  const char* const colours[] = {
      "pen 1 13 4294967295 brush 1 4287147557", "pen 1 13 4294967295 brush 1 4283062999",
      "pen 1 1.5 4278190335 brush 1 2147483903", "pen 1 1.5 4278190335 brush 1 2147483903",
      "pen 1 1.5 4294967295 brush 1 4287147557",
      "pen 1 15 4278231273 brush 1 4294967295 brush 1 4278231273",
      "pen 1 15 4278231273 brush 1 4294967295 brush 1 4278231273",
      "pen 1 15 4278231273 brush 1 4294967295 brush 1 4278231273"};
  for (int slot = 0; slot < 15; ++slot) {
    ZrShape* shape = ZrShape::globalShape(slot);
    ASSERT_NE(shape, nullptr) << "slot " << slot;
    if (slot >= 8) {
      EXPECT_FALSE(shape->recording()) << "slot " << slot;
      continue;
    }
    ASSERT_TRUE(shape->recording()) << "slot " << slot;
    EXPECT_EQ(shape->recording()->tell(), 0u) << "slot " << slot;
    CallLog log;
    shape->draw(&log, 0.0f, 0.0f, shape->width(), shape->height());
    std::istringstream calls(log.text);
    std::string penAndBrush, call;
    while (calls >> call) {
      if (call != "pen" && call != "brush") continue;
      std::string style, width, colour;
      calls >> style >> width;
      if (call == "pen") calls >> colour;
      penAndBrush += (penAndBrush.empty() ? "" : " ") + call + " " + style + " " + width +
                     (colour.empty() ? "" : " " + colour);
    }
    EXPECT_EQ(penAndBrush, colours[slot]) << "slot " << slot;
    EXPECT_EQ(ZrShape::globalShape(slot)->recording()->tell(), 0u) << "slot " << slot;
  }
}

TEST(Hostile, AnyBytesGiveAResult) {
  const std::string digits(10 << 20, '7');
  const std::string longNumber = "1." + std::string(100000, '3');
  const std::string texts[] = {
      "shape1.0 0 0 1 1 1 1 0 0 d (" + digits,
      "shape1.0 0 0 1 1 1 1 0 0 " + digits,
      "shape1.0 0 0 1 1 1 1 0 0 m " + longNumber + " 1 d (M" + longNumber + " " + longNumber + ")",
      "shape1.0 0 0 1 1 1 1 0 0 d ((((M1 1))) d ) d (",
      "shape1.0 0 0 1 1 nan inf 0 0 m 1 1",
      "shape1.0 0 0 1 1 1e38 1e38 1e38 0 p 1 1e38 1 m 1e38 1e38 c 1e38 d (M1e38 1e38 A1e38 1e38 0 0 0 1 1)",
      "shape1.0 0 0 1 1 1 1 0 0 \xff\x80\x01 m 1",
  };
  for (size_t i = 0; i < sizeof texts / sizeof texts[0]; ++i) {
    ZrShape shape;
    EXPECT_TRUE(shape.readFromString(texts[i].c_str())) << "row " << i;
    CallLog log;
    EXPECT_TRUE(shape.draw(&log, 1.0f, 1.0f, 1e300, -1e300)) << "row " << i;
    EXPECT_LT(shape.recording()->length(), 4096u) << "row " << i;
  }
}

}  // namespace
