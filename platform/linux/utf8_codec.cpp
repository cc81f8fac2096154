#include "platform/linux/utf8_codec.h"

#include "foundation/utf16.h"

namespace DE::detail::linux_impl {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Continuation bytes that follow a lead byte; 0 for bytes that cannot start a sequence
// (continuations, the overlong leads C0 and C1, and F8 and up).
int ContinuationCount(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return 1;
  if (lead >= 0xE0 && lead <= 0xEF) return 2;
  if (lead >= 0xF0 && lead <= 0xF4) return 3;
  return 0;
}

// Decodes one sequence that starts with a byte of 0x80 or more; returns the bytes consumed.
// Ill-formed input follows Windows (as Wine reproduces it): a sequence cut off by the end of the
// input is one U+FFFD for all that is left; otherwise the bytes read up to and including the one
// that proves the sequence overlong, a surrogate or past U+10FFFF make one U+FFFD, and a byte
// that is not a continuation ends the sequence without being consumed.
std::size_t DecodeSequence(const unsigned char* p, std::size_t available, char32_t& out) {
  out = kReplacement;
  const int continuations = ContinuationCount(p[0]);
  if (continuations == 0) return 1;
  if (static_cast<std::size_t>(continuations) >= available) return available;

  char32_t value = p[0] & (0x3F >> continuations);
  std::size_t used = 1;
  for (int remaining = continuations; remaining > 0; --remaining) {
    const unsigned char bits = p[used] ^ 0x80;
    if (bits >= 0x40) return used;
    value = (value << 6) | bits;
    ++used;
    const bool overlong = (remaining == 3 && value < 0x10) || (remaining == 2 && value < 0x20);
    const bool outOfRange = remaining == 3 && value >= 0x110;
    const bool surrogate = remaining == 2 && value >= 0x360 && value < 0x380;
    if (overlong || outOfRange || surrogate) return used;
  }
  out = value;
  return used;
}

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

namespace {

// The UTF-8 form of one code point (U+FFFD for surrogates and values past U+10FFFF).
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

}  // namespace

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
      c = JoinSurrogates(c, static_cast<char32_t>(text[++i]));
    }
    AppendUtf8(out, c);
  }
  return out;
}

}  // namespace DE::detail::linux_impl
