// Linux printf bindings: glibc's formatters, and the rewriting of wide formats to glibc's reading.
#include <cstdio>
#include <cwchar>
#include <string>

#include "foundation/string_format.h"

namespace DE::detail {
namespace {

bool IsOneOf(wchar_t c, const wchar_t* set) { return c != L'\0' && std::wcschr(set, c) != nullptr; }

// Rewrites a wide format written for the Windows reading into glibc's: in a wide format glibc
// reads %s and %c as narrow and %ls / %lc as wide, so %s -> %ls, %c -> %lc, %S -> %s,
// %C -> %c; the "h" forms become narrow and the "l" / "w" forms wide. Flags, width, precision and
// argument positions are kept; every other conversion is copied unchanged.
std::wstring ToGlibcWideFormat(const wchar_t* fmt) {
  std::wstring out;
  const wchar_t* p = fmt;
  while (*p != L'\0') {
    if (*p != L'%') {
      out.push_back(*p++);
      continue;
    }
    out.push_back(*p++);
    if (*p == L'%') {
      out.push_back(*p++);
      continue;
    }
    while (IsOneOf(*p, L"-+ #0'123456789*$.")) out.push_back(*p++);
    std::wstring length;
    while (IsOneOf(*p, L"hlLqjztw")) length.push_back(*p++);
    const wchar_t conversion = *p;
    if (IsOneOf(conversion, L"sScC")) {
      const bool upper = conversion == L'S' || conversion == L'C';
      bool wide = !upper;
      if (length.find_first_of(L"lw") != std::wstring::npos) {
        wide = true;
      } else if (length.find(L'h') != std::wstring::npos) {
        wide = false;
      }
      if (wide) out.push_back(L'l');
      out.push_back(upper ? static_cast<wchar_t>(conversion + (L'a' - L'A')) : conversion);
      ++p;
      continue;
    }
    for (wchar_t c : length) {
      if (c != L'w') out.push_back(c);
    }
    if (conversion != L'\0') out.push_back(*p++);
  }
  return out;
}

}  // namespace

// glibc returns -1 both for a format error and when the output does not fit in `cap` units.
int FormatNarrow(char* buf, std::size_t cap, const char* fmt, va_list args) {
  const int n = std::vsnprintf(buf, cap, fmt, args);
  return n < 0 || static_cast<std::size_t>(n) >= cap ? -1 : n;
}

int FormatWide(wchar_t* buf, std::size_t cap, const wchar_t* fmt, va_list args) {
  const std::wstring glibcFormat = ToGlibcWideFormat(fmt);
  const int n = std::vswprintf(buf, cap, glibcFormat.c_str(), args);
  return n < 0 || static_cast<std::size_t>(n) >= cap ? -1 : n;
}

}  // namespace DE::detail
