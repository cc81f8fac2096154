// printf-style formatting into a fixed stack buffer; oversize output gives "", never a cut text.
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string>

#include "DEString.h"
#include "foundation/string_format.h"

namespace DE {
namespace {

constexpr std::size_t kBufferUnits = 4096;
// The formatter may fill 4094 units; a kept result has 1..4093.
constexpr std::size_t kCountLimit = 4094;
constexpr std::size_t kLongestKept = kCountLimit - 1;

// Output length in UTF-16 units, the unit the limits count on every platform: a 32-bit wchar_t
// beyond the BMP counts as the two units of its surrogate pair.
template <typename Char>
std::size_t Utf16Length(const std::basic_string<Char>& s) {
  std::size_t units = s.size();
  if constexpr (sizeof(Char) == 4) {
    for (Char c : s) {
      if (static_cast<std::uint32_t>(c) > 0xFFFF) ++units;
    }
  }
  return units;
}

template <typename Char>
std::basic_string<Char> FormatBounded(int (*format)(Char*, std::size_t, const Char*, va_list),
                                      const Char* fmt, va_list args) {
  if (fmt == nullptr) return std::basic_string<Char>();
  Char buf[kBufferUnits];
  const int n = format(buf, kCountLimit, fmt, args);
  if (n < 1) return std::basic_string<Char>();
  std::basic_string<Char> out(buf, static_cast<std::size_t>(n));
  if (Utf16Length(out) > kLongestKept) return std::basic_string<Char>();
  return out;
}

}  // namespace

std::string FormatString(const char* fmt, va_list args) {
  return FormatBounded(&detail::FormatNarrow, fmt, args);
}

std::string FormatString(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  std::string out = FormatBounded(&detail::FormatNarrow, fmt, args);
  va_end(args);
  return out;
}

std::wstring FormatString(const wchar_t* fmt, va_list args) {
  return FormatBounded(&detail::FormatWide, fmt, args);
}

std::wstring FormatString(const wchar_t* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  std::wstring out = FormatBounded(&detail::FormatWide, fmt, args);
  va_end(args);
  return out;
}

int SafeStrLen(const char* s) { return s == nullptr ? 0 : static_cast<int>(std::strlen(s)); }
int SafeStrLen(const wchar_t* s) { return s == nullptr ? 0 : static_cast<int>(std::wcslen(s)); }

}  // namespace DE
