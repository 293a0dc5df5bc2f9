// The module loader: finds "lib<name>.so" and loads it with dlopen.
#include "zrplatform/module.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

// The application's load flags 1 and 2, passed to the dynamic linker as they are.
constexpr int kLoadFlags = 1 | 2;
static_assert(kLoadFlags == (RTLD_LAZY | RTLD_NOW), "load flags are the dynamic linker's");

std::vector<std::string>& searchPaths() {
  static std::vector<std::string> paths;
  return paths;
}

// The directory of the object file that contains `address`; empty when it is not known.
std::string directoryOf(const void* address) {
  Dl_info info;
  if (!address || !dladdr(address, &info) || !info.dli_fname) return std::string();
  std::string file = info.dli_fname;
  size_t slash = file.rfind('/');
  return slash == std::string::npos ? std::string(".") : file.substr(0, slash);
}

// Every directory to look in, in search order; empty entries are left out.
std::vector<std::string> candidateDirectories(const void* besideAddress) {
  std::vector<std::string> dirs;
  dirs.push_back(directoryOf(besideAddress));
  const std::vector<std::string>& pushed = searchPaths();
  dirs.insert(dirs.end(), pushed.rbegin(), pushed.rend());
  if (const char* env = getenv("LD_LIBRARY_PATH")) {
    std::string list = env;
    for (size_t start = 0; start <= list.size();) {
      size_t colon = list.find(':', start);
      if (colon == std::string::npos) colon = list.size();
      dirs.push_back(list.substr(start, colon - start));
      start = colon + 1;
    }
  }
  std::vector<std::string> result;
  for (std::string& d : dirs)
    if (!d.empty()) result.push_back(std::move(d));
  return result;
}

}  // namespace

ZrModuleHandle::ZrModuleHandle(ZrModuleHandle&& other) noexcept
    : m_handle(std::exchange(other.m_handle, nullptr)), m_path(std::move(other.m_path)) {}

ZrModuleHandle& ZrModuleHandle::operator=(ZrModuleHandle&& other) noexcept {
  if (this != &other) {
    release();
    m_handle = std::exchange(other.m_handle, nullptr);
    m_path = std::move(other.m_path);
  }
  return *this;
}

ZrModuleHandle::~ZrModuleHandle() { release(); }

void* ZrModuleHandle::symbol(const char* name) const {
  return m_handle && name ? dlsym(m_handle, name) : nullptr;
}

void ZrModuleHandle::release() {
  if (m_handle) dlclose(m_handle);
  m_handle = nullptr;
  m_path = ZrUtf8String();
}

ZrModuleHandle zrLoadModule(const char* name, const void* besideAddress) {
  ZrModuleHandle module;
  if (!name || !*name || std::string(name).find('/') != std::string::npos) return module;
  const std::string file = std::string("lib") + name + ".so";
  for (const std::string& dir : candidateDirectories(besideAddress)) {
    std::string path = dir + "/" + file;
    if (access(path.c_str(), F_OK) != 0) continue;
    module.m_handle = dlopen(path.c_str(), kLoadFlags);
    if (module.m_handle) module.m_path = ZrUtf8String(path);
    break;
  }
  return module;
}

void zrPushModuleSearchPath(const ZrUtf8String& directory) {
  searchPaths().push_back(directory.str());
}

void zrPopModuleSearchPath() {
  if (!searchPaths().empty()) searchPaths().pop_back();
}
