// A drawing context for the shape fuzz targets: counts calls and touches every value, so
// sanitizers see each one used.
#pragma once

#include <cstddef>

#include <zrad/shape.h>

class CountingContext : public ZrShapeContext {
 public:
  size_t calls = 0;
  float sum = 0.0f;

  void setPen(int style, float width, unsigned colour) override { add(float(style) + width + float(colour)); }
  void setBrush(int style, unsigned colour) override { add(float(style) + float(colour)); }
  void beginPath(int kind) override { add(float(kind)); }
  void endPath() override { add(0); }
  void fill() override { add(0); }
  void strokenPath() override { add(0); }
  void closeFigure() override { add(0); }
  void moveTo(float x, float y) override { add(x + y); }
  void lineTo(float x, float y) override { add(x + y); }
  void arcTo(float x1, float y1, float x2, float y2) override { add(x1 + y1 + x2 + y2); }
  void curve2To(float cx, float cy, float x, float y) override { add(cx + cy + x + y); }
  void curve3To(float a, float b, float c, float d, float x, float y) override { add(a + b + c + d + x + y); }
  void circle(float cx, float cy, float r) override { add(cx + cy + r); }

 private:
  void add(float v) {
    ++calls;
    sum += v;
  }
};
