// Helpers shared by the digest tests: hex of raw bytes, file contents, the digest tools.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "DEHash.h"

namespace hashtest {

// Upper-case hex of raw bytes, written here so raw digests are checked without the library.
inline std::string Hex(const std::string& bytes) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : bytes) {
    out += kDigits[c >> 4];
    out += kDigits[c & 15];
  }
  return out;
}

// Final of a digest object as hex.
inline std::string Final(DE::CryptBase& crypt) {
  std::string out(crypt.DigestLen(), '\0');
  crypt.Final(reinterpret_cast<unsigned char*>(&out[0]));
  return Hex(out);
}

// Byte `index` of the test files: a 65521-byte pattern (a prime length, so it never lines up
// with the 8192-byte blocks) repeated. The digests in the tests were made with sha1sum and
// sha256sum over files of this content.
inline char PatternByte(std::uint64_t index) {
  const std::uint32_t j = static_cast<std::uint32_t>(index % 65521);
  return static_cast<char>((j * 2654435761u) >> 24);
}

inline std::string PatternBytes(std::uint64_t size) {
  std::string bytes(static_cast<std::size_t>(size), '\0');
  for (std::uint64_t i = 0; i < size; ++i) bytes[static_cast<std::size_t>(i)] = PatternByte(i);
  return bytes;
}

// Writes `size` pattern bytes to `path` a chunk at a time; false when it cannot be written.
bool WritePatternFile(const std::filesystem::path& path, std::uint64_t size);

// Linux only: the upper-case digest `tool` (sha1sum, sha256sum) prints for the file; "" when the
// tool cannot be run.
std::string ToolDigest(const char* tool, const std::filesystem::path& path);

}  // namespace hashtest
