// ZrJson: reading and writing trees as files.
//
// Text files go through stdio and the files family; binary files through the platform's file
// streams. Writers build the whole output before they open the file, so a tree that cannot be
// written never truncates an existing file.
#include <cstdio>

#include <zrad/files.h>

#include "json/binary.h"
#include "json/element_store.h"
#include "json/reader.h"
#include "json/writer.h"
#include "json/zrjson_detect.h"

using namespace zrad::json;

bool ZrJson::read(const ZrUtf8String& source, int format, const char*) {
  ElementValue* e = ensureElement();
  if (format == eJsonText) return e && parseInto(*e, viewOf(source));
  if (format >= 0) return true;
  int64_t size = zrutGetFileSize(source);
  FILE* file = fopenUTF8(source.c_str(), "rb");
  if (!file) return false;
  std::string text;
  if (size >= 2) {
    int first = std::fgetc(file);
    std::fclose(file);
    if (first != EOF && isBinarySignature(static_cast<unsigned char>(first))) return true;
    text = zrutReadContentFromFile(source).str();
  } else {
    // A file too small to tell: the path text itself stands in for the content.
    std::fclose(file);
    text = source.str();
    if (skipLeadingSpace(text).empty()) return false;
  }
  std::string_view view = skipLeadingSpace(text);
  if (!opensContainer(view)) return true;
  return e && parseInto(*e, view);
}

bool ZrJson::load(const ZrUtf8String& path) {
  ElementValue* e = ensureElement();
  if (!e) return false;
  try {
    ZrStreamBufPtr stream = zrSystemServices()->createFile(path, kFileRead, kShareDenyNo, kOpenExisting);
    if (stream->length() > 0 && isBinarySignature(stream->getByte())) {
      stream->rewind();
      return readBinaryStream(stream.get());
    }
  } catch (const ZrError&) {
    return false;
  }
  std::string text = zrutReadContentFromFile(path).str();
  return parseInto(*e, text);
}

bool ZrJson::write(const std::string& path, fileFormat format, const char*) const {
  if (!m_p) return false;
  OutBuffer bytes;
  if (format == eJsonText) {
    if (!writeText(*m_p, bytes)) return false;
    FILE* file = fopenUTF8(path.c_str(), "w");
    if (!file) return false;
    bool ok = std::fwrite(bytes.view().data(), 1, bytes.view().size(), file) == bytes.view().size();
    return std::fclose(file) == 0 && ok;
  }
  if (format != eBinary) return true;
  if (!signedBinary(*m_p, bytes)) return false;
  try {
    ZrStreamBufPtr stream =
        zrSystemServices()->createFile(ZrUtf8String(path), kFileWrite, kShareDenyNo, kCreateAlways);
    putAll(*stream, bytes.view());
    stream->flush();
    return true;
  } catch (const ZrError&) {
    return false;
  }
}
