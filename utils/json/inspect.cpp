// What tools ask about element-tree input: its form, and where and why its text breaks.
#include <string>

#include "json/element_store.h"
#include "json/reader.h"
#include "json/zrjson_detect.h"

using namespace zrad::json;

bool zrutIsBinaryJsonStart(unsigned char first) { return isBinarySignature(first); }

bool zrutLocateJsonError(const char* text, size_t length, ZrJsonTextError& error) {
  const std::string copy(text ? text : "", text ? length : 0);  // zero-terminated for the parser
  ZrJsonPtr scratch = ElementValue::createObject(etObject);
  ParseFailure failure;
  if (parseInto(static_cast<ElementValue&>(*scratch), copy, &failure)) return false;
  error = ZrJsonTextError();
  error.offset = failure.offset;
  error.reason = failure.reason;
  error.line = 1;
  error.column = 1;
  for (size_t i = 0; i < failure.offset && i < copy.size(); ++i) {
    if (copy[i] == '\n') ++error.line, error.column = 1;
    else ++error.column;
  }
  return true;
}
