// ZrJson: reading and writing whole trees from memory and platform streams.
//
// Format detection looks at the first byte (0xE0..0xE2 is the binary form) and at the first
// character after leading white space (JSON text starts with "[" or "{").
#include "json/binary.h"
#include "json/element_store.h"
#include "json/reader.h"
#include "json/writer.h"
#include "json/zrjson_detect.h"
#include "log/logmsg.h"

using namespace zrad::json;

namespace {
const char kLogSource[] = "utils/zradjson";
}  // namespace

namespace zrad::json {

std::string_view skipLeadingSpace(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
  return text.substr(i);
}

}  // namespace zrad::json

ElementValue* ZrJson::ensureElement() {
  if (!m_p) static_cast<ZrJsonPtr&>(*this) = ElementValue::createObject(etObject);
  return asElement(m_p);
}

bool ZrJson::readFromStream(const char* data, unsigned int length, int format, const char*) {
  if (!data || length == 0) return false;
  ElementValue* e = ensureElement();
  if (format == 0 || format >= 2) return true;
  std::string_view view(data, length);
  if (format < 0) {
    if (length < 2) return false;
    if (isBinarySignature(static_cast<unsigned char>(data[0]))) return true;
    view = skipLeadingSpace(view);
    if (!opensContainer(view)) return true;
  }
  return e && parseInto(*e, view);
}

ZrJsonPtr ZrJson::readjson(const ZrUtf8String& text) {
  ZrJsonPtr root = ElementValue::createObject(etObject);
  if (!parseInto(static_cast<ElementValue&>(*root), viewOf(text))) {
    ZRAD_LOG(5, kLogSource, "%s, %d", "readjson", __LINE__);
    return {};
  }
  return root;
}

bool ZrJson::readBinaryStream(ZrStreamBuf* stream) {
  if (!stream) return false;
  ElementValue* e = ensureElement();
  if (!e) return false;
  try {
    if (stream->tell() >= stream->length() || stream->getByte() != kBinarySignature) return false;
    return decodeBinary(*e, *stream);
  } catch (const ZrError&) {
    return false;
  }
}

bool ZrJson::write2Stream(ZrStreamBuf* stream, fileFormat format, const char*) const {
  if (!m_p || !stream) return false;
  try {
    OutBuffer bytes;
    if (format == eJsonText) {
      if (!writeText(*m_p, bytes)) return false;
    } else if (format == eBinary) {
      if (!signedBinary(*m_p, bytes)) return false;
    } else {
      return true;
    }
    putAll(*stream, bytes.view());
    return true;
  } catch (const ZrError&) {
    return false;
  }
}
