// Windows bindings of the code-page conversions. Only Windows-specific code goes in this file.
#include "UtilPlatform.h"
#include "foundation/text_codec.h"

#include <climits>

namespace DE::detail {
namespace {

UINT WindowsCodePage(CodePage page) { return page == CodePage::Utf8 ? CP_UTF8 : CP_ACP; }

}  // namespace

std::wstring ToWide(CodePage page, const char* text, std::size_t length) {
  if (text == nullptr || length == 0 || length > INT_MAX) return std::wstring();
  const UINT cp = WindowsCodePage(page);
  const int n = MultiByteToWideChar(cp, 0, text, static_cast<int>(length), nullptr, 0);
  if (n <= 0) return std::wstring();
  std::wstring out(static_cast<std::size_t>(n), L'\0');
  const int written = MultiByteToWideChar(cp, 0, text, static_cast<int>(length), &out[0], n);
  out.resize(written > 0 ? static_cast<std::size_t>(written) : 0);
  return out;
}

std::string FromWide(CodePage page, const wchar_t* text, std::size_t length) {
  if (text == nullptr || length == 0 || length > INT_MAX) return std::string();
  const UINT cp = WindowsCodePage(page);
  const int n = WideCharToMultiByte(cp, 0, text, static_cast<int>(length), nullptr, 0, nullptr, nullptr);
  if (n <= 0) return std::string();
  std::string out(static_cast<std::size_t>(n), '\0');
  const int written =
      WideCharToMultiByte(cp, 0, text, static_cast<int>(length), &out[0], n, nullptr, nullptr);
  out.resize(written > 0 ? static_cast<std::size_t>(written) : 0);
  return out;
}

}  // namespace DE::detail
