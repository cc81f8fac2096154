// Windows lookup of the application-data folder. Only Windows-specific code goes in this file.
#include "UtilPlatform.h"

#include <shlobj.h>

#include "config/app_data.h"
#include "foundation/text_codec.h"

namespace DE::detail {

std::string LibraryAppDataFolder() {
  wchar_t folder[MAX_PATH] = {};
  if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder)))
    return std::string();
  const std::wstring path = std::wstring(folder) + L"\\Util";
  return FromWide(CodePage::Ansi, path.data(), path.size());
}

}  // namespace DE::detail
