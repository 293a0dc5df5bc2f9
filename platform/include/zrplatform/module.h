// Loadable modules: finding a module by name, loading it and releasing it.
//
// Module `name` is the file "lib<name>.so". zrLoadModule looks for it, in this order:
//   1. the directory of the library (or program) that contains `besideAddress`;
//   2. the directories pushed with zrPushModuleSearchPath, the most recent first;
//   3. each directory of LD_LIBRARY_PATH, in order.
// The first file found is loaded with the dynamic linker's flags 1 | 2 (lazy and immediate:
// glibc takes the pair as immediate binding) and nothing more. A file that exists but does not
// load ends the search: a broken module is not replaced by another one further down.
#pragma once

#include "export.h"
#include "strings.h"

// A loaded module; unloads it when it dies. Move only.
class ZRPLATFORM_EXPORT ZrModuleHandle {
 public:
  ZrModuleHandle() = default;
  ZrModuleHandle(ZrModuleHandle&& other) noexcept;
  ZrModuleHandle& operator=(ZrModuleHandle&& other) noexcept;
  ZrModuleHandle(const ZrModuleHandle&) = delete;
  ZrModuleHandle& operator=(const ZrModuleHandle&) = delete;
  ~ZrModuleHandle();

  bool isLoaded() const { return m_handle != nullptr; }
  // The file the module was loaded from; empty when nothing is loaded.
  const ZrUtf8String& path() const { return m_path; }
  // The address of the exported symbol `name`; null when absent or nothing is loaded.
  void* symbol(const char* name) const;
  // Unloads the module now (nothing when none is loaded).
  void release();

 private:
  friend ZRPLATFORM_EXPORT ZrModuleHandle zrLoadModule(const char*, const void*);
  void* m_handle = nullptr;
  ZrUtf8String m_path;
};

// Loads module `name` (see the search order above). A handle that is not loaded when the name
// is empty or holds "/", or when no file is found or the file does not load.
ZRPLATFORM_EXPORT ZrModuleHandle zrLoadModule(const char* name, const void* besideAddress);

// The process-wide list of extra module directories. Not synchronised: meant for the thread
// that loads modules.
ZRPLATFORM_EXPORT void zrPushModuleSearchPath(const ZrUtf8String& directory);
// Removes the most recently pushed directory; nothing when the list is empty.
ZRPLATFORM_EXPORT void zrPopModuleSearchPath();
