// Wide strings as UTF-16 code units, the form every byte-level encoding of the library uses.
//
// On Windows wchar_t already is a UTF-16 unit and both directions copy. On Linux wchar_t holds a
// code point: one above U+FFFF becomes a surrogate pair, a pair comes back as one code point.
// Unpaired surrogates travel unchanged both ways (as Windows keeps them in its wide strings);
// a value above U+10FFFF, which no UTF-16 form can carry, is written as U+FFFD.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace DE::detail {

constexpr bool IsHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
// The code point a high and a low surrogate stand for together.
constexpr std::uint32_t JoinSurrogates(std::uint32_t high, std::uint32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

std::vector<std::uint16_t> ToUtf16(const wchar_t* text, std::size_t length);
inline std::vector<std::uint16_t> ToUtf16(const std::wstring& text) {
  return ToUtf16(text.data(), text.size());
}

std::wstring FromUtf16(const std::uint16_t* units, std::size_t count);

}  // namespace DE::detail
