#include "hash/hash_test_util.h"

#include <cstdio>
#include <fstream>
#include <vector>

namespace hashtest {

bool WritePatternFile(const std::filesystem::path& path, std::uint64_t size) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  // A whole number of pattern periods per chunk, so every chunk starts at pattern offset 0.
  const std::string chunk = PatternBytes(65521ull * 64);
  std::uint64_t left = size;
  while (out && left >= chunk.size()) {
    out.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    left -= chunk.size();
  }
  out.write(chunk.data(), static_cast<std::streamsize>(left));
  out.close();
  return static_cast<bool>(out);
}

std::string ToolDigest(const char* tool, const std::filesystem::path& path) {
#if defined(_WIN32)
  (void)tool;
  (void)path;
  return std::string();
#else
  const std::string command = std::string(tool) + " '" + path.string() + "'";
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return std::string();
  std::string output;
  char buffer[256];
  while (std::fgets(buffer, sizeof(buffer), pipe) != nullptr) output += buffer;
  if (pclose(pipe) != 0) return std::string();
  std::string digest = output.substr(0, output.find(' '));
  for (char& c : digest) {
    if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
  }
  return digest;
#endif
}

}  // namespace hashtest
