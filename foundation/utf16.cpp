#include "foundation/utf16.h"

namespace DE::detail {
namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

}  // namespace

std::vector<std::uint16_t> ToUtf16(const wchar_t* text, std::size_t length) {
  std::vector<std::uint16_t> units;
  units.reserve(length);
  for (std::size_t i = 0; i < length; ++i) {
    const auto c = static_cast<std::uint32_t>(text[i]);
    if constexpr (sizeof(wchar_t) == 2) {
      units.push_back(static_cast<std::uint16_t>(c));
    } else if (c <= 0xFFFF) {
      units.push_back(static_cast<std::uint16_t>(c));
    } else if (c <= 0x10FFFF) {
      units.push_back(static_cast<std::uint16_t>(0xD800 + ((c - 0x10000) >> 10)));
      units.push_back(static_cast<std::uint16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
    } else {
      units.push_back(static_cast<std::uint16_t>(kReplacement));
    }
  }
  return units;
}

std::wstring FromUtf16(const std::uint16_t* units, std::size_t count) {
  std::wstring text;
  text.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t unit = units[i];
    if constexpr (sizeof(wchar_t) == 2) {
      text.push_back(static_cast<wchar_t>(unit));
    } else if (IsHighSurrogate(unit) && i + 1 < count && IsLowSurrogate(units[i + 1])) {
      text.push_back(static_cast<wchar_t>(JoinSurrogates(unit, units[i + 1])));
      ++i;
    } else {
      text.push_back(static_cast<wchar_t>(unit));
    }
  }
  return text;
}

}  // namespace DE::detail
