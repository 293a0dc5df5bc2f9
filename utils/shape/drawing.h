// Drawing rules shared by the "shape1.0" reader and the replay of recordings.
#pragma once

#include <zrad/shape.h>

namespace zrad::shape {

// A pen width w at scale k is drawn w*k + 0.5 wide, and never thinner than 1.
inline float penWidth(float width, float scale) {
  const float w = width * scale + 0.5f;
  return w < 1.0f ? 1.0f : w;
}

// The four sides of a w x h rectangle from (x, y), ending back at (x, y).
inline void rectangleFrom(ZrShapeContext& context, float x, float y, float w, float h) {
  context.lineTo(x + w, y);
  context.lineTo(x + w, y + h);
  context.lineTo(x, y + h);
  context.lineTo(x, y);
}

}  // namespace zrad::shape
