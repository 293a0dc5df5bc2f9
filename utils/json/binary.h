// Binary element stream: the little-endian encoding of an element tree.
#pragma once

#include <string_view>

#include <zrad/json.h>

#include "json/outbuf.h"

namespace zrad::json {

// Appends the encoding of `root` (no signature) to `out`. False (logged) when the reader could
// not read it back: a text of 2 GiB or more, a byte block of 4 GiB or more, or a tree that
// contains itself (`out` then holds part of it).
bool encodeBinary(const IElementValueBase& root, OutBuffer& out);

// The first byte of a binary file or stream.
constexpr unsigned char kBinarySignature = 0xE0;

// Replaces the content of `target` by the next encoded element of `stream` and leaves the
// stream just after it. False, with `target` and the stream position unchanged, on a short or
// inconsistent stream.
bool decodeBinary(ElementValue& target, ZrStreamBuf& stream);

// The signature byte and the encoding of `root`, as ZrJson writes files and streams.
bool signedBinary(const IElementValueBase& root, OutBuffer& out);

// Writes `bytes` to the stream in blocks the stream's 32-bit interface accepts.
void putAll(ZrStreamBuf& stream, std::string_view bytes);

}  // namespace zrad::json
