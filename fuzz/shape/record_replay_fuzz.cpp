// Fuzzes the replay of recordings: any bytes as a shape's recording, replayed onto a counting
// context and re-recorded at another scale. Replay must end without reading past the stream.
#include <cstdint>

#include "counting_context.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ZrShape shape;
  shape.readFromString("shape1.0 5 5 10 10 1 1 0 0");
  shape.recording()->putBytes(data, uint32_t(size));
  CountingContext context;
  if (!shape.draw(&context, 0.0f, 0.0f, 20.0, 5.0)) __builtin_trap();
  if (shape.recording()->tell() > size) __builtin_trap();
  CMemoryStreamWithDC recorder(ZrMemoryStream::createNew());
  shape.draw(&recorder, 1.0f, 1.0f, 10.0, 10.0);
  return 0;
}
