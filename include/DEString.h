// Text utilities of the foundation library: trimming, cutting, splitting, replacing, case,
// numbers, hex, Base64, code-page conversion and formatting.
//
// Narrow text is in the ANSI code page unless a name says UTF-8; wide text is UTF-16 on Windows
// and code points (32-bit wchar_t) on Linux. On Linux the ANSI page is the iconv page set by
// UTIL_ANSI_CODEPAGE (default: the locale's code set, CP1252 for a plain-ASCII locale).
// Nothing here throws on bad input; failure shows as "", 0 or a null pointer.
#pragma once

#include <cstdarg>
#include <string>
#include <vector>

#include "UtilExport.h"

namespace DE {

// ---- Trimming: only the space character (0x20) counts; tabs, CR and LF are kept. ----
UTIL_API std::string TrimSPLeft(const std::string& s);
UTIL_API std::wstring TrimSPLeft(const std::wstring& s);
UTIL_API std::string TrimSPRight(const std::string& s);
UTIL_API std::wstring TrimSPRight(const std::wstring& s);
UTIL_API std::string TrimSP(const std::string& s);
UTIL_API std::wstring TrimSP(const std::wstring& s);
// In place. RTrim never removes the first character: RTrim("   ") leaves " ".
UTIL_API void LTrim(std::string& s);
UTIL_API void RTrim(std::string& s);
UTIL_API void Trim(std::string& s);

// ---- Cutting at a separator (whole substring, case-sensitive, first from the left). ----
// The text before `sep`; all of `s` when absent; "" for an empty `sep`.
UTIL_API std::string SeparateLeft(const std::string& s, const std::string& sep);
UTIL_API std::wstring SeparateLeft(const std::wstring& s, const std::wstring& sep);
// The text after `sep`; all of `s` when absent or `sep` is empty.
UTIL_API std::string SeparateRight(const std::string& s, const std::string& sep);
UTIL_API std::wstring SeparateRight(const std::wstring& s, const std::wstring& sep);
// Returns the text before `sep` and leaves the rest in `src`; a missing separator returns all of
// `src` and empties it; an empty separator returns "" and empties it.
UTIL_API std::string FetchBin(std::string& src, const std::string& sep);
UTIL_API std::wstring FetchBin(std::wstring& src, const std::wstring& sep);
// FetchBin, then both the result and the remainder are passed through TrimSP.
UTIL_API std::string Fetch(std::string& src, const std::string& sep);
UTIL_API std::wstring Fetch(std::wstring& src, const std::wstring& sep);
// The next field, where separators inside `quote` characters do not count; quotes are kept.
UTIL_API std::string FetchEx(std::string& src, const std::string& sep, const std::string& quote);
UTIL_API std::wstring FetchEx(std::wstring& src, const std::wstring& sep, const std::wstring& quote);
// The text before the first CR or LF; "\r\n" and "\n\r" are one break, "\r\r" and "\n\n" two.
UTIL_API std::string FetchLine(std::string& src);
UTIL_API std::wstring FetchLine(std::wstring& src);

// ---- Splitting and replacing. ----
// Appends fields to `out` (never clears it); every character of `delims` is a delimiter, a run of
// them separates once, a leading one gives an empty first field, trailing ones give none.
UTIL_API void Split(const std::string& s, const std::string& delims, std::vector<std::string>& out);
UTIL_API void SplitW(const std::wstring& s, const std::wstring& delims, std::vector<std::wstring>& out);
// Replaces up to `count` occurrences left to right: -1 means "as many as the text is long",
// other negative values mean no limit, 0 still replaces once. Inserted text is not searched.
UTIL_API std::string Replace(std::string s, const std::string& from, const std::string& to, int count);
UTIL_API std::wstring Replace(std::wstring s, const std::wstring& from, const std::wstring& to, int count);

// ---- Case: each byte (or each wide unit) through the C library's single-byte toupper/tolower. ----
UTIL_API std::string UpperCase(const std::string& s);
UTIL_API std::wstring UpperCase(const std::wstring& s);
UTIL_API std::string LowerCase(const std::string& s);
UTIL_API std::wstring LowerCase(const std::wstring& s);

// ---- Numbers from text: base 10 (floats as strtod), leading white space and a sign allowed,
// trailing text ignored; the default is returned when nothing converts or the value is out of
// range. The 8- and 16-bit forms parse as 32-bit and then range-check. ----
UTIL_API signed char StringToInt8Def(const std::string& s, const signed char& def);
UTIL_API signed char StringToInt8Def(const std::wstring& s, const signed char& def);
UTIL_API unsigned char StringToUInt8Def(const std::string& s, const unsigned char& def);
UTIL_API unsigned char StringToUInt8Def(const std::wstring& s, const unsigned char& def);
UTIL_API short StringToInt16Def(const std::string& s, const short& def);
UTIL_API short StringToInt16Def(const std::wstring& s, const short& def);
UTIL_API unsigned short StringToUInt16Def(const std::string& s, const unsigned short& def);
UTIL_API unsigned short StringToUInt16Def(const std::wstring& s, const unsigned short& def);
UTIL_API int StringToInt32Def(const std::string& s, const int& def);
UTIL_API int StringToInt32Def(const std::wstring& s, const int& def);
// "-1" gives 4294967295, as strtoul does.
UTIL_API unsigned int StringToUInt32Def(const std::string& s, const unsigned int& def);
UTIL_API unsigned int StringToUInt32Def(const std::wstring& s, const unsigned int& def);
UTIL_API long long StringToInt64Def(const std::string& s, const long long& def);
UTIL_API long long StringToInt64Def(const std::wstring& s, const long long& def);
UTIL_API unsigned long long StringToUInt64Def(const std::string& s, const unsigned long long& def);
UTIL_API unsigned long long StringToUInt64Def(const std::wstring& s, const unsigned long long& def);
UTIL_API float StringToFloatDef(const std::string& s, const float& def);
UTIL_API float StringToFloatDef(const std::wstring& s, const float& def);
UTIL_API double StringToDoubleDef(const std::string& s, const double& def);
UTIL_API double StringToDoubleDef(const std::wstring& s, const double& def);

// ---- Hex (upper case) and byte order. ----
// The value's bit pattern in as few digits as needed, left-padded with "0" to `digits`.
UTIL_API std::string IntToHex(int v, int digits);
UTIL_API std::string IntToHex(unsigned int v, int digits);
UTIL_API std::string IntToHex(long long v, int digits);
UTIL_API std::string IntToHex(unsigned long long v, int digits);
UTIL_API std::string BytesToHexString(const std::string& bytes);
UTIL_API std::string BytesToHexString(const char* p, unsigned int n);
// `out` is resized to exactly 2 * n and overwritten.
UTIL_API void BytesToHexString(const std::string& bytes, std::string& out);
UTIL_API void BytesToHexString(const char* p, unsigned int n, std::string& out);
// "" for a null `p`, n == 0 or n > 0x7FFFFFFFFFFFFFFF.
UTIL_API std::string BytesToHexString(const unsigned char* p, unsigned long long n);
// Bytes written (length / 2); 0 for a null buffer, odd or empty text, a short buffer or a
// non-hex character (pairs before the bad one are already written).
UTIL_API int HexStringToBytes(const std::string& hex, char* buf, int bufSize);
// As HexStringToBytes; `out` is replaced on success and untouched on 0.
UTIL_API int HexStringToBytesString(const std::string& hex, std::string& out);
// Reverse the 8 bytes (the host is little-endian); the two are the same operation.
UTIL_API long long HToNll(long long v);
UTIL_API long long NToHll(long long v);

// ---- Base64, standard alphabet with "=" padding, no line breaks. ----
UTIL_API std::string Base64Encode(unsigned char* data, unsigned int len);
// Decodes up to the first "=" or non-alphabet character; never fails.
UTIL_API std::string Base64Decode(const std::string& text);

// ---- Code-page conversion. Undecodable input becomes U+FFFD (UTF-8) or follows the ANSI page's
// rules; characters the ANSI page lacks become "?". These stop at the first NUL. ----
UTIL_API std::wstring ANSIToUnicode(const std::string& s);
UTIL_API std::string UnicodeToANSI(const std::wstring& s);
UTIL_API std::wstring UTF8ToUnicode(const std::string& s);
UTIL_API std::string UnicodeToUTF8(const std::wstring& s);
UTIL_API std::string ANSIToUTF8(const std::string& s);
UTIL_API std::string UTF8ToANSI(const std::string& s);

// Raw-buffer conversions in the ANSI page. The one-argument forms return a new NUL-terminated
// buffer that the caller releases with delete[] (null for a null source or when out of memory).
// The buffer forms write at most size - 1 units, always store a NUL at buf[size - 1], and return
// buf (null for a null source, a null buf or size < 1).
UTIL_API wchar_t* CharToWchar(const char* s);
UTIL_API wchar_t* CharToWchar(wchar_t* buf, int size, const char* s);
UTIL_API char* WcharToChar(const wchar_t* s);
UTIL_API char* WcharToChar(char* buf, int size, const wchar_t* s);
// Buffer lengths, NUL included, for the conversions above (0 for a null pointer):
// the narrow form counts the wchar_t units the ANSI text converts to (UTF-16 units on Windows,
// code points on Linux: exactly what CharToWchar writes); the wide form counts the bytes the wide
// text converts to in the ANSI page.
UTIL_API int GetMultiByteToWideCharBufLen(const char* s);
UTIL_API int GetMultiByteToWideCharBufLen(const wchar_t* s);

// ---- Formatting and miscellany. ----
// printf-style; "" for a null format, an empty result, a format error, or 4094 or more
// characters (never a truncated text). The wide forms follow the Windows reading of the format
// on both platforms: %s and %c take wide arguments, %S and %C narrow ones.
// Beware on Windows, where va_list is char*: FormatString("%s", p) with a non-const char* p as
// the only argument picks the va_list overload. Pass a const char* (or add an argument).
UTIL_API std::string FormatString(const char* fmt, ...);
UTIL_API std::string FormatString(const char* fmt, va_list args);
UTIL_API std::wstring FormatString(const wchar_t* fmt, ...);
UTIL_API std::wstring FormatString(const wchar_t* fmt, va_list args);
UTIL_API int SafeStrLen(const char* s);
UTIL_API int SafeStrLen(const wchar_t* s);
// A fresh GUID as "%08X-%04X-%04x-%02X%02X-%02X%02X%02X%02X%02X%02X" (third group lower case);
// "" when no GUID can be made.
UTIL_API std::string GetGuidString();
// Up to 28 hex digits taken from a fresh GUID; len must be at least 1.
UTIL_API std::string GetRandomString(int len);
// Copies GetRandomString(len) into buf (logging an error when it does not fit); returns buf.
UTIL_API char* GetRandomString(char* buf, int size, int len);

class UTIL_API StringProc {
 public:
  // Copy without leading and trailing spaces; "" for an all-space input.
  static std::string StringTrim(const std::string& s);
  static std::wstring WStringTrim(const std::wstring& s);
  // Replaces the first `placeholder` with `value`; "" when the placeholder does not occur.
  static std::wstring ReplacePlaceholder(const std::wstring& text, const std::wstring& value,
                                         const std::wstring& placeholder);
  // Whole-length conversions: embedded NULs survive. "" when nothing converts.
  static std::wstring StringToWString(const std::string& s);
  static std::string WStringToString(const std::wstring& s);
  static std::wstring StringToWStringByUTF8(const std::string& s);
  static std::string WStringToStringByUTF8(const std::wstring& s);
};

}  // namespace DE
