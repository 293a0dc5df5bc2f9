// Output buffer of the element tree's writers (JSON text and the binary form).
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace zrad::json {

// The output under construction: a buffer grown ahead of the writes, so each token is one
// bounds check and plain stores.
class OutBuffer {
 public:
  OutBuffer() = default;
  // Continues after the bytes of `start`.
  explicit OutBuffer(std::string start) : m_buf(std::move(start)), m_used(m_buf.size()) {}

  char* room(size_t n) {
    if (m_used + n > m_buf.size()) m_buf.resize(std::max(m_buf.size() * 2, m_used + n + 4096));
    return &m_buf[m_used];
  }
  void put(char c) { *room(1) = c, ++m_used; }
  void put(std::string_view s) {
    if (s.empty()) return;
    std::memcpy(room(s.size()), s.data(), s.size());
    m_used += s.size();
  }
  void putEnd(const char* end) { m_used = static_cast<size_t>(end - m_buf.data()); }
  std::string take() {
    m_buf.resize(m_used);
    return std::move(m_buf);
  }

 private:
  std::string m_buf;
  size_t m_used = 0;
};

}  // namespace zrad::json
