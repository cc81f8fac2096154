// The code-page conversions every text function rests on. Windows calls MultiByteToWideChar /
// WideCharToMultiByte; Linux uses its own UTF-8 codec and iconv for the configured ANSI page.
//
// Both platforms follow the Windows rules for flags 0: an undecodable byte sequence becomes
// U+FFFD, and a character the ANSI page cannot hold becomes the page's default character "?".
// Conversions stop at nothing: embedded NULs are converted like any other character.
#pragma once

#include <cstddef>
#include <string>

namespace DE::detail {

enum class CodePage { Ansi, Utf8 };

std::wstring ToWide(CodePage page, const char* text, std::size_t length);
std::string FromWide(CodePage page, const wchar_t* text, std::size_t length);

inline std::wstring Utf8ToWide(const char* text, std::size_t length) {
  return ToWide(CodePage::Utf8, text, length);
}
inline std::string WideToUtf8(const wchar_t* text, std::size_t length) {
  return FromWide(CodePage::Utf8, text, length);
}

}  // namespace DE::detail
