#include "platform/linux/utf8_codec.h"

namespace DE::detail::linux_impl {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Bounds for the byte after a lead byte; they exclude overlong forms, surrogates and values past
// U+10FFFF, so the first byte outside them ends the maximal subpart.
struct LeadRule {
  int continuations;
  unsigned char secondLow;
  unsigned char secondHigh;
};

bool LeadRuleFor(unsigned char lead, LeadRule& rule) {
  if (lead >= 0xC2 && lead <= 0xDF)
    rule = {1, 0x80, 0xBF};
  else if (lead == 0xE0)
    rule = {2, 0xA0, 0xBF};
  else if (lead == 0xED)
    rule = {2, 0x80, 0x9F};
  else if (lead >= 0xE1 && lead <= 0xEF)
    rule = {2, 0x80, 0xBF};
  else if (lead == 0xF0)
    rule = {3, 0x90, 0xBF};
  else if (lead >= 0xF1 && lead <= 0xF3)
    rule = {3, 0x80, 0xBF};
  else if (lead == 0xF4)
    rule = {3, 0x80, 0x8F};
  else
    return false;
  return true;
}

// Decodes one multi-byte sequence at p[0]; returns the bytes consumed (at least 1).
std::size_t DecodeSequence(const unsigned char* p, std::size_t available, char32_t& out) {
  LeadRule rule{};
  if (!LeadRuleFor(p[0], rule)) {
    out = kReplacement;
    return 1;
  }
  const char32_t leadBits = p[0] & (0x3F >> rule.continuations);
  if (available < 2 || p[1] < rule.secondLow || p[1] > rule.secondHigh) {
    out = kReplacement;
    return 1;
  }
  char32_t value = (leadBits << 6) | (p[1] & 0x3F);
  std::size_t used = 2;
  for (int i = 1; i < rule.continuations; ++i, ++used) {
    if (used >= available || !IsContinuation(p[used])) {
      out = kReplacement;
      return used;
    }
    value = (value << 6) | (p[used] & 0x3F);
  }
  out = value;
  return used;
}

bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

}  // namespace

std::wstring DecodeUtf8(const char* text, std::size_t length) {
  std::wstring out;
  out.resize(length);
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  std::size_t in = 0;
  std::size_t written = 0;
  while (in < length) {
    if (p[in] < 0x80) {
      out[written++] = static_cast<wchar_t>(p[in++]);
      continue;
    }
    char32_t c = 0;
    in += DecodeSequence(p + in, length - in, c);
    out[written++] = static_cast<wchar_t>(c);
  }
  out.resize(written);
  return out;
}

void AppendUtf8(std::string& out, char32_t c) {
  if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) c = kReplacement;
  if (c < 0x80) {
    out.push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (c >> 6)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (c >> 12)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (c >> 18)));
    out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

std::string EncodeUtf8(const wchar_t* text, std::size_t length) {
  std::string out;
  out.reserve(length);
  for (std::size_t i = 0; i < length; ++i) {
    char32_t c = static_cast<char32_t>(text[i]);
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
      continue;
    }
    if (IsHighSurrogate(c) && i + 1 < length && IsLowSurrogate(static_cast<char32_t>(text[i + 1]))) {
      c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text[++i]) - 0xDC00);
    }
    AppendUtf8(out, c);
  }
  return out;
}

}  // namespace DE::detail::linux_impl
