// Files and folders: the shared logic of DEFile.h over std::filesystem and the platform binding.
#include <system_error>

#include "DEFile.h"
#include "DEString.h"
#include "foundation/file_helpers_platform.h"

namespace DE {
namespace fs = std::filesystem;
namespace {

bool IsSeparator(wchar_t c) { return c == L'/' || c == detail::kPathSeparator; }

}  // namespace

bool FileExists(const std::wstring& path) {
  if (path.empty()) return false;
  std::error_code error;
  const fs::file_status status = fs::status(detail::NativePath(path), error);
  return !error && fs::exists(status) && !fs::is_directory(status);
}

bool FileExists(const std::string& path) { return FileExists(StringProc::StringToWString(path)); }

bool ForceDirectories(const std::wstring& path) {
  if (path.empty()) return false;
  const fs::path native = detail::NativePath(path);
  std::error_code error;
  fs::create_directories(native, error);
  return fs::is_directory(native, error);
}

bool ForceDirectories(const std::string& path) { return ForceDirectories(StringProc::StringToWString(path)); }

bool DeleteDeepDirectoryW(const std::wstring& path) {
  if (path.empty()) return false;
  const fs::path native = detail::NativePath(path);
  std::error_code error;
  if (!fs::is_directory(fs::symlink_status(native, error))) return false;
  fs::remove_all(native, error);
  return !error && !fs::exists(fs::symlink_status(native, error));
}

bool DeleteDeepDirectory(const std::string& path) {
  return DeleteDeepDirectoryW(StringProc::StringToWString(path));
}

std::wstring GetCurrentPathW() {
  const std::wstring executable = detail::ExecutablePath();
  std::size_t end = executable.size();
  while (end > 0 && !IsSeparator(executable[end - 1])) --end;
  return executable.substr(0, end);
}

std::string GetCurrentPathA() { return StringProc::WStringToString(GetCurrentPathW()); }

std::wstring GetUserAppdataFullFile(const std::wstring& fileName) {
  const std::wstring folder = detail::UserAppDataFolder();
  if (folder.empty()) return std::wstring();
  const std::wstring name = detail::PlatformRelativeName(fileName);
  if (name.empty() || IsSeparator(name[0])) return folder + name;
  return folder + detail::kPathSeparator + name;
}

std::string GetUserAppdataFullFile(const std::string& fileName) {
  return StringProc::WStringToString(GetUserAppdataFullFile(StringProc::StringToWString(fileName)));
}

std::wstring SysErrorMessageW(DWORD code) {
  const std::wstring text = detail::SystemErrorText(code);
  return text.empty() ? L"Unknown error " + std::to_wstring(code) : text;
}

}  // namespace DE
