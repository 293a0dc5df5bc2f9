// A drawing context for tests that writes every call as text: "line 3 4 move 1 2 ...".
#pragma once

#include <cstdio>
#include <string>

#include <zrad/shape.h>

class CallLog : public ZrShapeContext {
 public:
  std::string text;

  void setPen(int style, float width, unsigned colour) override { add("pen", {float(style), width}, colour); }
  void setBrush(int style, unsigned colour) override { add("brush", {float(style)}, colour); }
  void beginPath(int kind) override { add("begin", {float(kind)}); }
  void endPath() override { add("end", {}); }
  void fill() override { add("fill", {}); }
  void strokenPath() override { add("stroke", {}); }
  void closeFigure() override { add("close", {}); }
  void moveTo(float x, float y) override { add("move", {x, y}); }
  void lineTo(float x, float y) override { add("line", {x, y}); }
  void arcTo(float x1, float y1, float x2, float y2) override { add("arc", {x1, y1, x2, y2}); }
  void curve2To(float cx, float cy, float x, float y) override { add("quad", {cx, cy, x, y}); }
  void curve3To(float a, float b, float c, float d, float x, float y) override {
    add("cubic", {a, b, c, d, x, y});
  }
  void circle(float cx, float cy, float r) override { add("circle", {cx, cy, r}); }

 private:
  void add(const char* name, std::initializer_list<float> values, long long colour = -1) {
    if (!text.empty()) text += ' ';
    text += name;
    char number[32];
    for (float v : values) {
      std::snprintf(number, sizeof number, " %g", double(v) == 0.0 ? 0.0 : double(v));
      text += number;
    }
    if (colour >= 0) text += " " + std::to_string(colour);
  }
};
