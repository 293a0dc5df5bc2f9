// Whole-file text reading and writing through stdio, with byte-order marks.
//
// The size from the descriptor decides whether the content is decoded at all: a pipe or an
// empty file (size 0) comes back byte for byte.
#include <cstdio>
#include <string>

#include <zrad/files.h>

#include "files/content.h"

std::string zrad::files::readToEnd(FILE* stream) {
  std::string bytes;
  char block[65536];
  size_t n;
  while ((n = fread(block, 1, sizeof block, stream)) > 0) bytes.append(block, n);
  return bytes;
}

FILE* fopenUTF8(const char* path, const char* mode) {
  if (!path || !mode) return nullptr;
  return fopen(path, mode);
}

ZrUtf8String zrutReadContent(FILE* file) {
  if (!file) return ZrUtf8String();
  int64_t size = filelength(fileno(file));
  std::string bytes = zrad::files::readToEnd(file);
  if (size == 0) return ZrUtf8String(std::move(bytes));
  return zrad::files::decodeContent(bytes);
}

ZrUtf8String zrutReadContentFromFile(const ZrUtf8String& path) {
  FILE* file = fopen(path.c_str(), "rb");
  if (!file) return ZrUtf8String();
  ZrUtf8String text = zrutReadContent(file);
  fclose(file);
  return text;
}

bool zrutWriteContentToFile(FILE* file, const ZrUtf8String& text, int mode) {
  if (!file) return false;
  std::string bytes = zrad::files::encodeContent(text, mode);
  return fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && fflush(file) == 0;
}

bool zrutWriteContentToFile(const ZrUtf8String& path, const ZrUtf8String& text, int mode) {
  FILE* file = fopen(path.c_str(), "wb");
  if (!file) return false;
  bool written = zrutWriteContentToFile(file, text, mode);
  return fclose(file) == 0 && written;
}
