// Windows binding of the file and folder helpers: only Win32 and shell calls go in this file.
#include <shlobj.h>

#include "foundation/file_helpers_platform.h"

namespace DE::detail {

const wchar_t kPathSeparator = L'\\';

std::filesystem::path NativePath(const std::wstring& path) { return std::filesystem::path(path); }

std::wstring ExecutablePath() {
  std::wstring buffer(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, &buffer[0], static_cast<DWORD>(buffer.size()));
    if (length == 0) return std::wstring();
    if (length < buffer.size()) return buffer.substr(0, length);
    if (buffer.size() >= 32768) return std::wstring();  // longer than any Windows path
    buffer.resize(buffer.size() * 2);
  }
}

std::wstring UserAppDataFolder() {
  wchar_t folder[MAX_PATH] = {};
  if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder)))
    return std::wstring();
  return folder;
}

std::wstring PlatformRelativeName(const std::wstring& name) { return name; }

std::wstring SystemErrorText(DWORD code) {
  wchar_t* text = nullptr;
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
      code, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  std::wstring message = length > 0 && text != nullptr ? std::wstring(text, length) : std::wstring();
  if (text != nullptr) LocalFree(text);
  while (!message.empty() && (message.back() == L'\r' || message.back() == L'\n' || message.back() == L' ')) {
    message.pop_back();
  }
  return message;
}

}  // namespace DE::detail
