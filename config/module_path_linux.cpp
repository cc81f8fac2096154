// Linux lookup of the library's file (dladdr) and the host executable (/proc/self/exe). Only
// Linux-specific code goes in this file.
#include <dlfcn.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <memory>

#include "config/module_path.h"

namespace DE::detail {

namespace {

std::string FolderWithinLimit(const std::string& file) {
  if (file.empty() || file.size() >= kMaxModulePath) return std::string();
  return FolderOf(file);
}

}  // namespace

std::string LibraryFolder() {
  Dl_info info = {};
  if (dladdr(reinterpret_cast<void*>(&LibraryFolder), &info) == 0 || info.dli_fname == nullptr) {
    return std::string();
  }
  // dli_fname is the name the loader was given, which may be relative to the start-up folder.
  std::unique_ptr<char, decltype(&free)> resolved(realpath(info.dli_fname, nullptr), &free);
  return FolderWithinLimit(resolved ? resolved.get() : info.dli_fname);
}

std::string HostExecutableFolder() {
  char buffer[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", buffer, sizeof(buffer));
  if (length <= 0 || static_cast<std::size_t>(length) >= sizeof(buffer)) return std::string();
  return FolderWithinLimit(std::string(buffer, static_cast<std::size_t>(length)));
}

char PathSeparator() { return '/'; }

}  // namespace DE::detail
