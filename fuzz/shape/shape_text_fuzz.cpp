// Fuzzes the "shape1.0" reader with any text after the magic word, then replays the result.
// Each byte of text may record at most a few records, so the recording stays within a fixed
// multiple of the input.
#include <cstdint>
#include <string>

#include "counting_context.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text = "shape1.0 " + std::string(reinterpret_cast<const char*>(data), size);
  ZrShape shape;
  if (!shape.readFromString(text.c_str())) return 0;
  if (shape.recording()->length() > 16 * size + 64) __builtin_trap();
  CountingContext context;
  if (!shape.draw(&context, 3.0f, 4.0f, 20.0, 30.0)) __builtin_trap();
  return 0;
}
