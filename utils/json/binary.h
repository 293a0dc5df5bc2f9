// Binary element stream: the little-endian encoding of an element tree.
#pragma once

#include <string>

#include <zrad/json.h>

namespace zrad::json {

// Appends the encoding of `root` (no signature) to `out`. False, with `out` unchanged, when
// the tree nests deeper than kMaxDepth.
bool encodeBinary(const IElementValueBase* root, std::string& out);

// The first byte of a binary file or stream.
constexpr unsigned char kBinarySignature = 0xE0;

// Replaces the content of `target` by the next encoded element of `stream` and leaves the
// stream just after it. False, with `target` unchanged, on a short or inconsistent stream.
bool decodeBinary(ElementValue& target, ZrStreamBuf& stream);

// The signature byte and the encoding of `root`, as ZrJson writes files and streams.
bool signedBinary(const IElementValueBase& root, std::string& out);

// Writes `bytes` to the stream in blocks the stream's 32-bit interface accepts.
void putAll(ZrStreamBuf& stream, const std::string& bytes);

}  // namespace zrad::json
