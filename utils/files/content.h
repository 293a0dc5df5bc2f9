// Byte-order marks: turning file bytes into UTF-8 text and text into the bytes of an encoding.
//
// The text work behind zrutReadContent and zrutWriteContentToFile, and the one stdio read
// loop the files subsystem uses.
#pragma once

#include <cstdio>
#include <string>

#include <zrplatform/strings.h>

namespace zrad::files {

// The text of file bytes that may begin with a byte-order mark (see zrutReadContent). UTF-16
// surrogate pairs become one character; an odd last byte of UTF-16 is dropped.
//   FE FF 00 41     => "A"
//   FF FE 41 00     => "A"
//   EF BB BF 41     => "A"
//   EF BB 41        => EF BB 41 (no mark, bytes as they are)
ZrUtf8String decodeContent(const std::string& bytes);

// The bytes of `text` in a zrutWriteContentToFile mode.
//   ("A", 0) => 41      ("A", 1) => EF BB BF 41      ("A", 3) => FF FE 41 00
//   ("A", 4) => 00 41   ("A", 7) => FF FE 41 00 (bits: mark, little-endian)
std::string encodeContent(const ZrUtf8String& text, int mode);

// Everything from the stream's position to its end (a file or a pipe).
std::string readToEnd(FILE* stream);

}  // namespace zrad::files
