// Fuzzes the SVG path data reader with any bytes; the first four choose the scale and offset.
// Every drawing call consumes at least one byte of data, so the count is bounded by the size.
#include <cstdint>
#include <string>

#include "counting_context.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4) return 0;
  const std::string path(reinterpret_cast<const char*>(data + 4), size - 4);
  CountingContext context;
  ZrShape::readSVGPath(path.c_str(), &context, float(int8_t(data[0])) / 8, float(int8_t(data[1])) / 8,
                       float(int8_t(data[2])), float(int8_t(data[3])));
  if (context.calls > path.size()) __builtin_trap();
  return 0;
}
