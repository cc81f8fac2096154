// Linux binding of the file and folder helpers: only Linux-specific code goes in this file.
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "foundation/file_helpers_platform.h"
#include "foundation/text_codec.h"
#include "platform/linux/win32_error.h"

namespace DE::detail {
namespace {

std::wstring FromUtf8(const std::string& text) { return Utf8ToWide(text.data(), text.size()); }

// glibc gives the GNU strerror_r (returning the text), other C libraries the XSI one (filling
// the buffer); these two overloads take whichever result the build has.
[[maybe_unused]] const char* ErrorText(const char* gnuResult, const char*) { return gnuResult; }
[[maybe_unused]] const char* ErrorText(int xsiResult, const char* buffer) {
  return xsiResult == 0 ? buffer : "";
}

std::string HomeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return home;
  std::vector<char> buffer(16384);
  struct passwd entry;
  struct passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
      found->pw_dir != nullptr && found->pw_dir[0] == '/') {
    return found->pw_dir;
  }
  return std::string();
}

}  // namespace

const wchar_t kPathSeparator = L'/';

std::filesystem::path NativePath(const std::wstring& path) {
  return std::filesystem::path(WideToUtf8(path.data(), path.size()));
}

std::wstring ExecutablePath() {
  std::vector<char> buffer(4096);
  for (;;) {
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length < 0) return std::wstring();
    if (static_cast<std::size_t>(length) < buffer.size()) {
      return FromUtf8(std::string(buffer.data(), static_cast<std::size_t>(length)));
    }
    buffer.resize(buffer.size() * 2);
  }
}

std::wstring UserAppDataFolder() {
  const char* dataHome = std::getenv("XDG_DATA_HOME");
  std::string folder;
  if (dataHome != nullptr && dataHome[0] == '/') {
    folder = dataHome;
  } else {
    folder = HomeFolder();
    if (folder.empty()) return std::wstring();
    if (folder.back() != '/') folder += '/';
    folder += ".local/share";
  }
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return FromUtf8(folder);
}

std::wstring PlatformRelativeName(const std::wstring& name) {
  std::wstring converted = name;
  for (wchar_t& c : converted) {
    if (c == L'\\') c = L'/';
  }
  return converted;
}

std::wstring SystemErrorText(DWORD code) {
  const int error = code == 0 ? 0 : linux_impl::ErrnoFromWin32Error(code);
  if (code != 0 && error == 0) return std::wstring();
  char buffer[256] = {};
  const char* text = ErrorText(strerror_r(error, buffer, sizeof buffer), buffer);
  return ToWide(CodePage::Ansi, text, std::strlen(text));
}

}  // namespace DE::detail
