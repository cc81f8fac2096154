// UTF-8 <-> wide text (code points in 32-bit wchar_t), with the replacement rules of Windows:
// each maximal ill-formed subsequence decodes to one U+FFFD; a lone surrogate or an out-of-range
// value encodes as U+FFFD. A surrogate pair held in two wchar_t units is joined into one character.
#pragma once

#include <cstddef>
#include <string>

namespace DE::detail::linux_impl {

std::wstring DecodeUtf8(const char* text, std::size_t length);
std::string EncodeUtf8(const wchar_t* text, std::size_t length);

// Appends the UTF-8 form of one code point (U+FFFD for surrogates and values past U+10FFFF).
void AppendUtf8(std::string& out, char32_t codePoint);

}  // namespace DE::detail::linux_impl
