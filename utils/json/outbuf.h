// Output buffer of the element tree's writers (JSON text and the binary form).
#pragma once

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <zrplatform/platform.h>

namespace zrad::json {

// The output under construction: a buffer grown ahead of the writes, so each token is one
// bounds check and plain stores. It grows by realloc, which neither zero-fills the new room
// nor (for large blocks) copies the old bytes, as growing a std::string would.
class OutBuffer {
 public:
  OutBuffer() = default;
  ~OutBuffer() { std::free(m_data); }
  OutBuffer(const OutBuffer&) = delete;
  OutBuffer& operator=(const OutBuffer&) = delete;

  // Room for `n` more bytes; putEnd tells how far they were used.
  char* room(size_t n) {
    if (n > m_capacity - m_used) grow(n);
    return m_data + m_used;
  }
  void put(char c) { *room(1) = c, ++m_used; }
  void put(std::string_view s) {
    if (s.empty()) return;
    std::memcpy(room(s.size()), s.data(), s.size());
    m_used += s.size();
  }
  void putEnd(const char* end) { m_used = static_cast<size_t>(end - m_data); }
  std::string_view view() const { return std::string_view(m_data ? m_data : "", m_used); }
  std::string text() const { return std::string(view()); }

 private:
  __attribute__((noinline)) void grow(size_t n) {
    size_t capacity = m_capacity * 2 > m_used + n + 4096 ? m_capacity * 2 : m_used + n + 4096;
    void* data = std::realloc(m_data, capacity);
    if (!data) throw ZrError(Zrad::eOutOfMemory);
    m_data = static_cast<char*>(data);
    m_capacity = capacity;
  }

  char* m_data = nullptr;
  size_t m_capacity = 0;
  size_t m_used = 0;
};

}  // namespace zrad::json
