// Numbers from text through the C library's parsers, with a default for text that does not parse.
//
// The 32-bit conversions follow the Windows `long` (32 bits) on every platform: they parse with the
// 64-bit functions and then apply the 32-bit range, so a 64-bit `long` (Linux) gives the same
// results. The unsigned one keeps strtoul's rule of negating the magnitude: "-1" is 4294967295 and
// "-4294967295" is 1, while a magnitude above 0xFFFFFFFF is out of range.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <limits>
#include <string>

#include "DEString.h"

namespace DE {
namespace {

// The C library's base-10 and floating-point parsers for each character type.
template <typename Char>
struct Parsers;

template <>
struct Parsers<char> {
  static long long Signed(const char* s, char** end) { return std::strtoll(s, end, 10); }
  static unsigned long long Unsigned(const char* s, char** end) { return std::strtoull(s, end, 10); }
  static float Float(const char* s, char** end) { return std::strtof(s, end); }
  static double Double(const char* s, char** end) { return std::strtod(s, end); }
};

template <>
struct Parsers<wchar_t> {
  static long long Signed(const wchar_t* s, wchar_t** end) { return std::wcstoll(s, end, 10); }
  static unsigned long long Unsigned(const wchar_t* s, wchar_t** end) { return std::wcstoull(s, end, 10); }
  static float Float(const wchar_t* s, wchar_t** end) { return std::wcstof(s, end); }
  static double Double(const wchar_t* s, wchar_t** end) { return std::wcstod(s, end); }
};

// One parse of `s`: true when something was converted without ERANGE. `negative` tells whether
// the converted text began with '-' (white space holds no sign or digit, so the first of those
// characters is the sign if there is one). The caller's errno is left as it was.
template <typename Char, typename T>
bool ParseWith(T (*parse)(const Char*, Char**), const std::basic_string<Char>& s, T& value,
               bool* negative = nullptr) {
  const Char* begin = s.c_str();
  Char* end = nullptr;
  const int savedErrno = errno;
  errno = 0;
  value = parse(begin, &end);
  const bool ok = end != begin && errno != ERANGE;
  errno = savedErrno;
  if (ok && negative != nullptr) {
    *negative = false;
    for (const Char* p = begin; p != end; ++p) {
      if (*p == Char('-') || *p == Char('+') || (*p >= Char('0') && *p <= Char('9'))) {
        *negative = *p == Char('-');
        break;
      }
    }
  }
  return ok;
}

// strtol with a 32-bit `long`.
template <typename Char>
bool ParseLong32(const std::basic_string<Char>& s, std::int32_t& value) {
  long long wide = 0;
  if (!ParseWith(&Parsers<Char>::Signed, s, wide)) return false;
  if (wide < std::numeric_limits<std::int32_t>::min() || wide > std::numeric_limits<std::int32_t>::max())
    return false;
  value = static_cast<std::int32_t>(wide);
  return true;
}

// strtoul with a 32-bit `unsigned long`.
template <typename Char>
bool ParseULong32(const std::basic_string<Char>& s, std::uint32_t& value) {
  unsigned long long wide = 0;
  bool negative = false;
  if (!ParseWith(&Parsers<Char>::Unsigned, s, wide, &negative)) return false;
  const unsigned long long magnitude = negative ? 0 - wide : wide;
  if (magnitude > 0xFFFFFFFFull) return false;
  const auto low = static_cast<std::uint32_t>(magnitude);
  value = negative ? 0u - low : low;
  return true;
}

// The 8- and 16-bit forms: a 32-bit signed parse, then the range of T. Unsigned targets compare
// the 32-bit result as unsigned, so negative values fail.
template <typename T, typename Char>
T NarrowIntOrDefault(const std::basic_string<Char>& s, const T& def) {
  std::int32_t v = 0;
  if (!ParseLong32(s, v)) return def;
  if (std::numeric_limits<T>::is_signed) {
    if (v < std::numeric_limits<T>::min() || v > std::numeric_limits<T>::max()) return def;
  } else if (static_cast<std::uint32_t>(v) > static_cast<std::uint32_t>(std::numeric_limits<T>::max())) {
    return def;
  }
  return static_cast<T>(v);
}

template <typename Char>
int Int32OrDefault(const std::basic_string<Char>& s, const int& def) {
  std::int32_t v = 0;
  return ParseLong32(s, v) ? v : def;
}

template <typename Char>
unsigned int UInt32OrDefault(const std::basic_string<Char>& s, const unsigned int& def) {
  std::uint32_t v = 0;
  return ParseULong32(s, v) ? v : def;
}

template <typename Char, typename T>
T ParsedOrDefault(T (*parse)(const Char*, Char**), const std::basic_string<Char>& s, const T& def) {
  T v{};
  return ParseWith(parse, s, v) ? v : def;
}

}  // namespace

signed char StringToInt8Def(const std::string& s, const signed char& def) {
  return NarrowIntOrDefault(s, def);
}
signed char StringToInt8Def(const std::wstring& s, const signed char& def) {
  return NarrowIntOrDefault(s, def);
}
unsigned char StringToUInt8Def(const std::string& s, const unsigned char& def) {
  return NarrowIntOrDefault(s, def);
}
unsigned char StringToUInt8Def(const std::wstring& s, const unsigned char& def) {
  return NarrowIntOrDefault(s, def);
}
short StringToInt16Def(const std::string& s, const short& def) { return NarrowIntOrDefault(s, def); }
short StringToInt16Def(const std::wstring& s, const short& def) { return NarrowIntOrDefault(s, def); }
unsigned short StringToUInt16Def(const std::string& s, const unsigned short& def) {
  return NarrowIntOrDefault(s, def);
}
unsigned short StringToUInt16Def(const std::wstring& s, const unsigned short& def) {
  return NarrowIntOrDefault(s, def);
}

int StringToInt32Def(const std::string& s, const int& def) { return Int32OrDefault(s, def); }
int StringToInt32Def(const std::wstring& s, const int& def) { return Int32OrDefault(s, def); }
unsigned int StringToUInt32Def(const std::string& s, const unsigned int& def) {
  return UInt32OrDefault(s, def);
}
unsigned int StringToUInt32Def(const std::wstring& s, const unsigned int& def) {
  return UInt32OrDefault(s, def);
}

long long StringToInt64Def(const std::string& s, const long long& def) {
  return ParsedOrDefault(&Parsers<char>::Signed, s, def);
}
long long StringToInt64Def(const std::wstring& s, const long long& def) {
  return ParsedOrDefault(&Parsers<wchar_t>::Signed, s, def);
}
unsigned long long StringToUInt64Def(const std::string& s, const unsigned long long& def) {
  return ParsedOrDefault(&Parsers<char>::Unsigned, s, def);
}
unsigned long long StringToUInt64Def(const std::wstring& s, const unsigned long long& def) {
  return ParsedOrDefault(&Parsers<wchar_t>::Unsigned, s, def);
}
float StringToFloatDef(const std::string& s, const float& def) {
  return ParsedOrDefault(&Parsers<char>::Float, s, def);
}
float StringToFloatDef(const std::wstring& s, const float& def) {
  return ParsedOrDefault(&Parsers<wchar_t>::Float, s, def);
}
double StringToDoubleDef(const std::string& s, const double& def) {
  return ParsedOrDefault(&Parsers<char>::Double, s, def);
}
double StringToDoubleDef(const std::wstring& s, const double& def) {
  return ParsedOrDefault(&Parsers<wchar_t>::Double, s, def);
}

}  // namespace DE
