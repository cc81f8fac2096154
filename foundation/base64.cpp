// Base64 with the standard alphabet and "=" padding (RFC 4648), table-driven both ways.
#include <cctype>
#include <cstring>
#include <string>

#include "DEString.h"

namespace DE {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned char kNotInAlphabet = 0xFF;

struct DecodeTable {
  unsigned char value[256];
  constexpr DecodeTable() : value() {
    for (int i = 0; i < 256; ++i) value[i] = kNotInAlphabet;
    for (int i = 0; i < 64; ++i)
      value[static_cast<unsigned char>(kAlphabet[i])] = static_cast<unsigned char>(i);
  }
};
constexpr DecodeTable kDecode;

// The two output characters of every 12-bit value, so each 3-byte group takes two lookups.
struct EncodePairTable {
  char pairs[4096 * 2];
  constexpr EncodePairTable() : pairs() {
    for (int i = 0; i < 4096; ++i) {
      pairs[2 * i] = kAlphabet[i >> 6];
      pairs[2 * i + 1] = kAlphabet[i & 0x3F];
    }
  }
};
constexpr EncodePairTable kEncodePairs;

// Decoding goes on over alphanumeric characters (by the C library's isalnum, so a locale may add
// letters outside the alphabet; they decode as 0xFF, truncated into the bytes), "+" and "/".
bool ContinuesDecoding(unsigned char c) {
  if (kDecode.value[c] != kNotInAlphabet) return true;
  return c != '=' && std::isalnum(c) != 0;
}

// Writes the `count` - 1 bytes of a group of `count` (2..4) sextets. Sums rather than ORs, so
// the 0xFF of a locale letter truncates the same way in every byte.
char* DecodeGroup(const unsigned char* v, std::size_t count, char* out) {
  out[0] = static_cast<char>(static_cast<unsigned char>((v[0] << 2) + ((v[1] & 0x30) >> 4)));
  if (count > 2)
    out[1] = static_cast<char>(static_cast<unsigned char>(((v[1] & 0x0F) << 4) + ((v[2] & 0x3C) >> 2)));
  if (count > 3) out[2] = static_cast<char>(static_cast<unsigned char>(((v[2] & 0x03) << 6) + v[3]));
  return out + count - 1;
}

}  // namespace

std::string Base64Encode(unsigned char* data, unsigned int len) {
  std::string out;
  if (data == nullptr || len == 0) return out;
  out.resize((static_cast<std::size_t>(len) + 2) / 3 * 4);
  char* o = &out[0];
  const unsigned char* p = data;
  const unsigned char* end = data + len;
  for (; end - p >= 3; p += 3, o += 4) {
    const unsigned v = (p[0] << 16) | (p[1] << 8) | p[2];
    std::memcpy(o, kEncodePairs.pairs + 2 * (v >> 12), 2);
    std::memcpy(o + 2, kEncodePairs.pairs + 2 * (v & 0xFFF), 2);
  }
  if (p != end) {
    const bool two = end - p == 2;
    const unsigned v = (p[0] << 16) | (two ? p[1] << 8 : 0);
    o[0] = kAlphabet[v >> 18];
    o[1] = kAlphabet[(v >> 12) & 0x3F];
    o[2] = two ? kAlphabet[(v >> 6) & 0x3F] : '=';
    o[3] = '=';
  }
  return out;
}

// Stops at the first "=" or character outside the alphabet and returns what came before: a
// trailing group of 2 or 3 characters gives 1 or 2 bytes, a lone character nothing.
std::string Base64Decode(const std::string& text) {
  const auto* in = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t size = text.size();
  std::string out(size / 4 * 3 + 3, '\0');
  char* o = &out[0];

  // Whole groups of alphabet characters, the common case.
  std::size_t i = 0;
  for (; i + 4 <= size; i += 4) {
    const unsigned a = kDecode.value[in[i]], b = kDecode.value[in[i + 1]];
    const unsigned c = kDecode.value[in[i + 2]], d = kDecode.value[in[i + 3]];
    if (((a | b | c | d) & 0x80) != 0) break;
    const unsigned v = (a << 18) | (b << 12) | (c << 6) | d;
    o[0] = static_cast<char>(v >> 16);
    o[1] = static_cast<char>((v >> 8) & 0xFF);
    o[2] = static_cast<char>(v & 0xFF);
    o += 3;
  }

  // The rest, up to the stop character.
  std::size_t stop = i;
  while (stop < size && ContinuesDecoding(in[stop])) ++stop;
  unsigned char v[4];
  for (; i + 4 <= stop; i += 4) {
    for (int k = 0; k < 4; ++k) v[k] = kDecode.value[in[i + k]];
    o = DecodeGroup(v, 4, o);
  }
  const std::size_t rest = stop - i;
  if (rest >= 2) {
    v[0] = v[1] = v[2] = v[3] = 0;
    for (std::size_t k = 0; k < rest; ++k) v[k] = kDecode.value[in[i + k]];
    o = DecodeGroup(v, rest, o);
  }
  out.resize(static_cast<std::size_t>(o - out.data()));
  return out;
}

}  // namespace DE
