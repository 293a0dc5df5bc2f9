// Payload strings: a 32-bit count, then the low 16 bits of every character.
#include "remotedebug/payload.h"

#include <cstdint>
#include <vector>

namespace zrad::remote {

void writePayloadString(ZrStreamBuf& stream, const ZrString& text) {
  const uint32_t count = static_cast<uint32_t>(text.length());
  std::vector<uint16_t> units(count);
  for (uint32_t i = 0; i < count; ++i) units[i] = static_cast<uint16_t>(text.str()[i]);
  stream.putBytes(&count, sizeof count);
  if (count != 0) stream.putBytes(units.data(), count * 2);
}

bool readPayloadString(ZrStreamBuf& stream, ZrString& text) {
  const uint64_t length = stream.length();
  const uint64_t start = stream.tell();
  uint32_t count = 0;
  if (length - start < sizeof count || stream.getBytes(&count, sizeof count) != sizeof count)
    return false;
  if (count > UINT32_MAX / 2 || length - stream.tell() < uint64_t{count} * 2) {
    stream.seek(static_cast<int64_t>(start), kSeekFromStart);
    return false;
  }
  std::vector<uint16_t> units(count);
  if (count != 0) stream.getBytes(units.data(), count * 2);
  ZrString::Std wide(units.begin(), units.end());
  text = ZrString(std::move(wide));
  return true;
}

}  // namespace zrad::remote
