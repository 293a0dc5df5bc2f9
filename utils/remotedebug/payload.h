// Payload strings: the text encoding of console commands and their answers.
//
// A string is a 32-bit character count in host byte order followed by that many 16-bit code
// units, the low 16 bits of each wide character; there is no terminator. Reading widens each
// unit back into one character, so characters above U+FFFF come back truncated.
//   L""        => 00 00 00 00
//   L"A"       => 01 00 00 00  41 00
//   U+1F600    => 01 00 00 00  00 F6   (read back as U+F600)
#pragma once

#include <zrplatform/stream.h>
#include <zrplatform/strings.h>

namespace zrad::remote {

// Writes `text` at the stream's position.
void writePayloadString(ZrStreamBuf& stream, const ZrString& text);

// Reads one string at the stream's position into `text`. False, with `text` unchanged, when
// fewer bytes remain than the count announces; nothing is reserved before the count is
// checked against what the stream holds.
bool readPayloadString(ZrStreamBuf& stream, ZrString& text);

}  // namespace zrad::remote
