// The memory stream: one contiguous block that at least doubles when it must grow.
#include "zrplatform/stream.h"

#include <cstring>

#include "zrplatform/memory.h"

ZR_RX_DEFINE_MEMBERS(ZrStreamBuf, ZrRxObject, L"ZrStreamBuf")
ZR_RX_DEFINE_MEMBERS(ZrMemoryStream, ZrStreamBuf, L"ZrMemoryStream")

ZrSmartPtr<ZrMemoryStream> ZrMemoryStream::createNew(uint64_t initialCapacity) {
  return ZrRxObjectImpl<ZrMemoryStream>::createObject(initialCapacity);
}

ZrMemoryStream::ZrMemoryStream(uint64_t initialCapacity) { reserve(initialCapacity); }

ZrMemoryStream::~ZrMemoryStream() { zrrxFree(m_data); }

void ZrMemoryStream::reserve(uint64_t needed) {
  if (needed <= m_capacity) return;
  uint64_t capacity = m_capacity < 64 ? 64 : m_capacity * 2;
  if (capacity < needed) capacity = needed;
  auto* fresh = static_cast<uint8_t*>(zrrxAlloc(capacity));
  if (!fresh) throw ZrError(Zrad::eOutOfMemory);
  if (m_size) std::memcpy(fresh, m_data, m_size);
  zrrxFree(m_data);
  m_data = fresh;
  m_capacity = capacity;
}

uint64_t ZrMemoryStream::seek(int64_t offset, ZrSeekFrom from) {
  int64_t base = from == kSeekFromStart ? 0
                 : from == kSeekFromCurrent ? static_cast<int64_t>(m_pos)
                                            : static_cast<int64_t>(m_size);
  int64_t target = base + offset;
  if (target < 0) target = 0;
  m_pos = static_cast<uint64_t>(target) > m_size ? m_size : static_cast<uint64_t>(target);
  return m_pos;
}

uint32_t ZrMemoryStream::getBytes(void* buf, uint32_t n) {
  uint64_t left = m_size - m_pos;
  uint32_t count = left < n ? static_cast<uint32_t>(left) : n;
  if (count) std::memcpy(buf, m_data + m_pos, count);
  m_pos += count;
  return count;
}

void ZrMemoryStream::putBytes(const void* buf, uint32_t n) {
  if (!n) return;
  reserve(m_pos + n);
  std::memcpy(m_data + m_pos, buf, n);
  m_pos += n;
  if (m_pos > m_size) m_size = m_pos;
}
