// ZrError texts and the replaceable assertion handler.
#include "zrplatform/error.h"

#include <cstdio>

const char* ZrError::what() const noexcept {
  switch (m_status) {
    case Zrad::eOutOfMemory: return "out of memory";
    case Zrad::eNotThatKindOfClass: return "not that kind of class";
    case Zrad::eFileOpenError: return "cannot open file";
    case Zrad::eFileReadError: return "file read error";
    case Zrad::eFileWriteError: return "file write error";
    case Zrad::eFileSeekError: return "file seek error";
    case Zrad::eEndOfFile: return "end of file";
    case Zrad::eInvalidInput: return "invalid input";
    default: return "platform error";
  }
}

static void printAssert(const char* text, const char* file, int line) {
  std::fprintf(stderr, "assertion failed: %s (%s:%d)\n", text, file, line);
}

static ZrAssertHandler g_assertHandler = printAssert;

ZrAssertHandler zrSetAssertHandler(ZrAssertHandler handler) {
  ZrAssertHandler previous = g_assertHandler;
  g_assertHandler = handler ? handler : printAssert;
  return previous;
}

void zrAssertFailed(const char* text, const char* file, int line) { g_assertHandler(text, file, line); }
