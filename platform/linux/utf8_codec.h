// UTF-8 <-> wide text (code points in 32-bit wchar_t), with the replacement rules of Windows:
// each maximal ill-formed subsequence decodes to one U+FFFD; a lone surrogate or an out-of-range
// value encodes as U+FFFD. A surrogate pair held in two wchar_t units is joined into one character.
#pragma once

#include <cstddef>
#include <string>

namespace DE::detail::linux_impl {

std::wstring DecodeUtf8(const char* text, std::size_t length);
std::string EncodeUtf8(const wchar_t* text, std::size_t length);

}  // namespace DE::detail::linux_impl
