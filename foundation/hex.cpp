// Upper-case hex text of integers and byte buffers, hex decoding, and 64-bit byte-order reversal.
//
// A null byte pointer is taken as an empty buffer (the result, or `out`, is "").
#include <cstdint>
#include <cstring>
#include <string>

#include "DEString.h"

namespace DE {
namespace {

// The 256 two-digit pairs "00" .. "FF", 512 bytes: one lookup per byte.
struct HexPairTable {
  char pairs[512];
  constexpr HexPairTable() : pairs() {
    const char digits[] = "0123456789ABCDEF";
    for (int i = 0; i < 256; ++i) {
      pairs[2 * i] = digits[i >> 4];
      pairs[2 * i + 1] = digits[i & 0xF];
    }
  }
};
constexpr HexPairTable kHexPairs;

// Nibble value of each byte, -1 for anything but 0-9, A-F and a-f.
struct HexValueTable {
  signed char value[256];
  constexpr HexValueTable() : value() {
    for (int i = 0; i < 256; ++i) value[i] = -1;
    for (int i = 0; i < 10; ++i) value['0' + i] = static_cast<signed char>(i);
    for (int i = 0; i < 6; ++i) {
      value['A' + i] = static_cast<signed char>(10 + i);
      value['a' + i] = static_cast<signed char>(10 + i);
    }
  }
};
constexpr HexValueTable kHexValues;

// As few digits as the value needs (at least one), left-padded with "0" to `digits`.
template <typename Unsigned>
std::string UnsignedToHex(Unsigned v, int digits) {
  char text[2 * sizeof(Unsigned)];
  char* end = text + sizeof(text);
  char* p = end;
  for (Unsigned rest = v;;) {
    p -= 2;
    std::memcpy(p, kHexPairs.pairs + 2 * static_cast<unsigned>(rest & 0xFF), 2);
    rest = static_cast<Unsigned>(rest >> 8);
    if (rest == 0) break;
  }
  if (*p == '0' && end - p > 1) ++p;  // the top pair's high nibble was zero
  const int needed = static_cast<int>(end - p);
  std::string out;
  if (digits > needed) out.assign(static_cast<std::size_t>(digits - needed), '0');
  out.append(p, end);
  return out;
}

void HexInto(const unsigned char* p, std::size_t n, char* out) {
  for (std::size_t i = 0; i < n; ++i) std::memcpy(out + 2 * i, kHexPairs.pairs + 2 * p[i], 2);
}

std::string HexOf(const void* p, std::size_t n) {
  std::string out;
  if (p == nullptr || n == 0) return out;
  out.resize(2 * n);
  HexInto(static_cast<const unsigned char*>(p), n, &out[0]);
  return out;
}

void HexOfInto(const void* p, std::size_t n, std::string& out) {
  if (p == nullptr) n = 0;
  out.resize(2 * n);
  if (n != 0) HexInto(static_cast<const unsigned char*>(p), n, &out[0]);
}

}  // namespace

std::string IntToHex(int v, int digits) { return UnsignedToHex(static_cast<std::uint32_t>(v), digits); }
std::string IntToHex(unsigned int v, int digits) {
  return UnsignedToHex(static_cast<std::uint32_t>(v), digits);
}
std::string IntToHex(long long v, int digits) { return UnsignedToHex(static_cast<std::uint64_t>(v), digits); }
std::string IntToHex(unsigned long long v, int digits) {
  return UnsignedToHex(static_cast<std::uint64_t>(v), digits);
}

std::string BytesToHexString(const std::string& bytes) { return HexOf(bytes.data(), bytes.size()); }
std::string BytesToHexString(const char* p, unsigned int n) { return HexOf(p, n); }
void BytesToHexString(const std::string& bytes, std::string& out) {
  HexOfInto(bytes.data(), bytes.size(), out);
}
void BytesToHexString(const char* p, unsigned int n, std::string& out) { HexOfInto(p, n, out); }

std::string BytesToHexString(const unsigned char* p, unsigned long long n) {
  if (n > 0x7FFFFFFFFFFFFFFFull) return std::string();
  return HexOf(p, static_cast<std::size_t>(n));
}

// Pairs are written as they are decoded, so a bad pair leaves the earlier bytes in `buf`.
int HexStringToBytes(const std::string& hex, char* buf, int bufSize) {
  const std::size_t n = hex.size() / 2;
  if (buf == nullptr || hex.empty() || hex.size() % 2 != 0 || bufSize < 0 ||
      static_cast<std::size_t>(bufSize) < n) {
    return 0;
  }
  const auto* text = reinterpret_cast<const unsigned char*>(hex.data());
  for (std::size_t i = 0; i < n; ++i) {
    const int high = kHexValues.value[text[2 * i]];
    const int low = kHexValues.value[text[2 * i + 1]];
    if ((high | low) < 0) return 0;
    buf[i] = static_cast<char>((high << 4) | low);
  }
  return static_cast<int>(n);
}

int HexStringToBytesString(const std::string& hex, std::string& out) {
  const std::size_t n = hex.size() / 2;
  if (n > 0x7FFFFFFF) return 0;  // the count would not fit the result
  std::string bytes(n + 1, '\0');
  const int written = HexStringToBytes(hex, &bytes[0], static_cast<int>(n));
  if (written == 0) return 0;
  bytes.resize(static_cast<std::size_t>(written));
  out.swap(bytes);
  return written;
}

long long HToNll(long long v) {
  std::uint64_t in = static_cast<std::uint64_t>(v);
  std::uint64_t out = 0;
  for (int i = 0; i < 8; ++i) {
    out = (out << 8) | (in & 0xFF);
    in >>= 8;
  }
  return static_cast<long long>(out);
}

long long NToHll(long long v) { return HToNll(v); }

}  // namespace DE
