// Fuzz target: date-time texts, path texts, number tests and splits on arbitrary bytes.
//
// The input is split at its first zero byte into a text and a second operand (a base path or a
// delimiter set), so the two-argument operations see independent inputs.
#include <cstddef>
#include <cstdint>
#include <string>

#include <zrad/files.h>
#include <zrad/text.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string input(reinterpret_cast<const char*>(data), size);
  size_t zero = input.find('\0');
  ZrUtf8String text(input.substr(0, zero));
  ZrUtf8String other(zero == std::string::npos ? std::string() : input.substr(zero + 1));

  zrutStrToTime(text);
  zrutIsDouble(text);
  zrutIsLong(ZrString(text));
  stol(text);
  ZrArray<ZrUtf8String> fields;
  zrutSplitString(text, other, fields);
  ZrArray<ZrString> wideFields;
  zrutSplitString(ZrString(text), L'/', wideFields);

  zrutFormatPath(text);
  zrutAbsolutPath(text, other);
  zrutRelatePath(text, other);
  zrutCombinePath(other, text);
  zrutPathRenameExtension(text, other);
  zrutGetFileNoExtName(ZrString(text));
  ZrUtf8String dir, name;
  zrutSplitPath2(text, dir, name);
  return 0;
}
