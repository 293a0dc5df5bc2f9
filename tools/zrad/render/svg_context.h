// A shape drawing context that writes SVG: one <path> element per fill or stroke.
//
// Colours are 0xAABBGGRR (red in the low byte); fills use the even-odd rule, strokes round
// joins and caps. Three-point arcs become SVG arcs through the circle the three points define.
#pragma once

#include <string>

#include <zrad/shape.h>

namespace zradtool {

class SvgContext : public ZrShapeContext {
 public:
  // The document's canvas is size x size; `background` (0xAABBGGRR) fills it unless its alpha
  // is 0.
  SvgContext(int size, unsigned background);
  // The whole document.
  std::string document() const;

  void setPen(int style, float width, unsigned colour) override;
  void setBrush(int style, unsigned colour) override;
  void beginPath(int kind) override;
  void endPath() override {}
  void fill() override;
  void strokenPath() override;
  void closeFigure() override;
  void moveTo(float x, float y) override;
  void lineTo(float x, float y) override;
  void arcTo(float x1, float y1, float x2, float y2) override;
  void curve2To(float cx, float cy, float x, float y) override;
  void curve3To(float c1x, float c1y, float c2x, float c2y, float x, float y) override;
  void circle(float cx, float cy, float r) override;

 private:
  void add(char command, std::initializer_list<double> values);

  std::string m_body;
  std::string m_path;
  float m_x = 0.0f, m_y = 0.0f;            // the current point
  float m_startX = 0.0f, m_startY = 0.0f;  // where the figure began, where "Z" returns
  float m_penWidth = 1.0f;
  unsigned m_pen = 0xFF000000u, m_brush = 0xFF000000u;
};

}  // namespace zradtool
