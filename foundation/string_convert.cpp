// Code-page conversions of the text utilities, over the platform codec in text_codec.h.
#include <cstring>
#include <cwchar>
#include <new>

#include "DEString.h"
#include "foundation/text_codec.h"

namespace DE {
namespace {

using detail::CodePage;

// The text up to its first NUL, as the NUL-terminated Windows calls would see it.
std::size_t LengthToNul(const std::string& s) { return std::strlen(s.c_str()); }
std::size_t LengthToNul(const std::wstring& s) { return std::wcslen(s.c_str()); }

// Copies a converted text into a caller's buffer of `size` units, NUL always at buf[size - 1].
template <typename Char, typename Text>
Char* CopyBounded(Char* buf, int size, const Text& converted) {
  const std::size_t room = static_cast<std::size_t>(size) - 1;
  const std::size_t n = converted.size() < room ? converted.size() : room;
  std::memcpy(buf, converted.data(), n * sizeof(Char));
  buf[n] = Char();
  buf[size - 1] = Char();
  return buf;
}

// A new[] copy with a NUL appended; null when memory runs out.
template <typename Char, typename Text>
Char* NewTerminatedCopy(const Text& converted) {
  Char* out = new (std::nothrow) Char[converted.size() + 1];
  if (out == nullptr) return nullptr;
  std::memcpy(out, converted.data(), converted.size() * sizeof(Char));
  out[converted.size()] = Char();
  return out;
}

}  // namespace

std::wstring ANSIToUnicode(const std::string& s) {
  return detail::ToWide(CodePage::Ansi, s.c_str(), LengthToNul(s));
}

std::string UnicodeToANSI(const std::wstring& s) {
  return detail::FromWide(CodePage::Ansi, s.c_str(), LengthToNul(s));
}

std::wstring UTF8ToUnicode(const std::string& s) {
  return detail::ToWide(CodePage::Utf8, s.c_str(), LengthToNul(s));
}

std::string UnicodeToUTF8(const std::wstring& s) {
  return detail::FromWide(CodePage::Utf8, s.c_str(), LengthToNul(s));
}

std::string ANSIToUTF8(const std::string& s) { return UnicodeToUTF8(ANSIToUnicode(s)); }

std::string UTF8ToANSI(const std::string& s) { return UnicodeToANSI(UTF8ToUnicode(s)); }

std::wstring StringProc::StringToWString(const std::string& s) {
  return detail::ToWide(CodePage::Ansi, s.data(), s.size());
}

std::string StringProc::WStringToString(const std::wstring& s) {
  return detail::FromWide(CodePage::Ansi, s.data(), s.size());
}

std::wstring StringProc::StringToWStringByUTF8(const std::string& s) {
  return detail::ToWide(CodePage::Utf8, s.data(), s.size());
}

std::string StringProc::WStringToStringByUTF8(const std::wstring& s) {
  return detail::FromWide(CodePage::Utf8, s.data(), s.size());
}

wchar_t* CharToWchar(const char* s) {
  if (s == nullptr) return nullptr;
  return NewTerminatedCopy<wchar_t>(detail::ToWide(CodePage::Ansi, s, std::strlen(s)));
}

wchar_t* CharToWchar(wchar_t* buf, int size, const char* s) {
  if (s == nullptr || buf == nullptr || size < 1) return nullptr;
  return CopyBounded(buf, size, detail::ToWide(CodePage::Ansi, s, std::strlen(s)));
}

char* WcharToChar(const wchar_t* s) {
  if (s == nullptr) return nullptr;
  return NewTerminatedCopy<char>(detail::FromWide(CodePage::Ansi, s, std::wcslen(s)));
}

char* WcharToChar(char* buf, int size, const wchar_t* s) {
  if (s == nullptr || buf == nullptr || size < 1) return nullptr;
  return CopyBounded(buf, size, detail::FromWide(CodePage::Ansi, s, std::wcslen(s)));
}

int GetMultiByteToWideCharBufLen(const char* s) {
  if (s == nullptr) return 0;
  return static_cast<int>(detail::ToWide(CodePage::Ansi, s, std::strlen(s)).size()) + 1;
}

int GetMultiByteToWideCharBufLen(const wchar_t* s) {
  if (s == nullptr) return 0;
  return static_cast<int>(detail::FromWide(CodePage::Ansi, s, std::wcslen(s)).size()) + 1;
}

}  // namespace DE
