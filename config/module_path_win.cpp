// Windows lookup of the library's own module file and the narrow path form. Only Windows-specific
// code goes in this file.
#include "UtilPlatform.h"

#include <vector>

#include "config/module_path.h"
#include "foundation/text_codec.h"

namespace DE::detail {

std::string LibraryFolder() {
  HMODULE self = nullptr;
  // The module that holds this very function is Util.dll, whatever it was renamed to.
  if (!GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          reinterpret_cast<LPCWSTR>(&LibraryFolder), &self)) {
    return std::string();
  }
  std::vector<wchar_t> name(32768);
  const DWORD length = GetModuleFileNameW(self, name.data(), static_cast<DWORD>(name.size()));
  if (length == 0 || length >= name.size()) return std::string();
  return ModuleFileFolder(NarrowPath(std::wstring(name.data(), length)));
}

std::string NarrowPath(const std::wstring& path) {
  return FromWide(CodePage::Ansi, path.data(), path.size());
}

}  // namespace DE::detail
