// Platform errors and assertions.
//
// ZrError is the one exception type of the platform; the library lets only its out-of-memory and
// wrong-class errors escape. zrAssert reports a failed programmer check through a replaceable
// handler and lets execution go on.
#pragma once

#include <exception>

#include "export.h"

namespace Zrad {
enum ErrorStatus : int {
  eOk = 0,
  eNotImplemented = 1,
  eNotApplicable = 2,
  eInvalidInput = 3,
  eOutOfMemory = 6,
  eNotThatKindOfClass = 40,
  eFileOpenError = 50,
  eFileReadError = 51,
  eFileWriteError = 52,
  eFileSeekError = 53,
  eEndOfFile = 54,
};
}  // namespace Zrad

class ZRPLATFORM_EXPORT ZrError : public std::exception {
 public:
  explicit ZrError(int status) : m_status(status) {}
  int status() const { return m_status; }
  const char* what() const noexcept override;

 private:
  int m_status;
};

// Receives the failed check's text and where it failed.
using ZrAssertHandler = void (*)(const char* text, const char* file, int line);

// Installs `handler` (null restores the default: one line on stderr); returns the previous one.
ZRPLATFORM_EXPORT ZrAssertHandler zrSetAssertHandler(ZrAssertHandler handler);
ZRPLATFORM_EXPORT void zrAssertFailed(const char* text, const char* file, int line);

#define zrAssert(cond, text)                              \
  do {                                                    \
    if (!(cond)) zrAssertFailed((text), __FILE__, __LINE__); \
  } while (0)
