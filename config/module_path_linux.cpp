// Linux lookup of the library's own file (dladdr) and the narrow path form. Only Linux-specific
// code goes in this file.
#include <dlfcn.h>
#include <stdlib.h>

#include <memory>

#include "config/module_path.h"
#include "foundation/text_codec.h"

namespace DE::detail {

std::string LibraryFolder() {
  Dl_info info = {};
  if (dladdr(reinterpret_cast<void*>(&LibraryFolder), &info) == 0 || info.dli_fname == nullptr) {
    return std::string();
  }
  // dli_fname is the name the loader was given, which may be relative to the start-up folder.
  std::unique_ptr<char, decltype(&free)> resolved(realpath(info.dli_fname, nullptr), &free);
  return ModuleFileFolder(resolved ? resolved.get() : info.dli_fname);
}

std::string NarrowPath(const std::wstring& path) { return WideToUtf8(path.data(), path.size()); }

}  // namespace DE::detail
