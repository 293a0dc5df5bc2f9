// Hexadecimal text of digest bytes, shared by the MD5 digest forms.
#pragma once

#include <cstddef>
#include <string>

namespace zrad::crypto {

// Two digits per byte, in order; capitals when `upper` is true.
//   {0x00, 0xAB}, upper false => "00ab"
std::string toHex(const unsigned char* bytes, size_t count, bool upper);

}  // namespace zrad::crypto
