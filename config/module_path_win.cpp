// Windows lookup of the library's and the host's module file names. Only Windows-specific code
// goes in this file.
#include "UtilPlatform.h"

#include <vector>

#include "config/module_path.h"
#include "foundation/text_codec.h"

namespace DE::detail {

namespace {

std::string ModuleFolder(HMODULE module) {
  std::vector<wchar_t> name(32768);
  const DWORD length = GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
  if (length == 0 || length >= name.size()) return std::string();
  const std::string narrow = FromWide(CodePage::Ansi, name.data(), length);
  if (narrow.size() >= kMaxModulePath) return std::string();
  return FolderOf(narrow);
}

}  // namespace

std::string LibraryFolder() {
  HMODULE self = nullptr;
  // The module that holds this very function is Util.dll, whatever it was renamed to.
  if (!GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          reinterpret_cast<LPCWSTR>(&LibraryFolder), &self)) {
    return std::string();
  }
  return ModuleFolder(self);
}

std::string HostExecutableFolder() { return ModuleFolder(nullptr); }

char PathSeparator() { return '\\'; }

}  // namespace DE::detail
