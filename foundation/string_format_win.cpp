// Windows printf bindings: only the C run-time's own formatter calls belong here.
#include <cstdio>
#include <cwchar>

#include "foundation/string_format.h"

namespace DE::detail {

// _vsnprintf / _vsnwprintf are the run-time's own (MSVC semantics, %s wide in wide formats), not
// MinGW's C99 replacements, which __USE_MINGW_ANSI_STDIO puts behind the standard names. They
// return -1 when the output exceeds the count and do not terminate an output of exactly `cap`.
int FormatNarrow(char* buf, std::size_t cap, const char* fmt, va_list args) {
  const int n = _vsnprintf(buf, cap, fmt, args);
  return n < 0 || static_cast<std::size_t>(n) >= cap ? -1 : n;
}

int FormatWide(wchar_t* buf, std::size_t cap, const wchar_t* fmt, va_list args) {
  const int n = _vsnwprintf(buf, cap, fmt, args);
  return n < 0 || static_cast<std::size_t>(n) >= cap ? -1 : n;
}

}  // namespace DE::detail
