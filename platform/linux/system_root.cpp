// Files of the running system below UTIL_SYSROOT. Linux-only code.
#include "platform/linux/system_root.h"

#include <cstdlib>
#include <fstream>

namespace DE::detail::linux_impl {

std::string UnderSystemRoot(const char* relative) {
  const char* setting = std::getenv("UTIL_SYSROOT");
  std::string root = setting != nullptr && *setting != '\0' ? setting : "/";
  if (root.back() != '/') root.push_back('/');
  return root + relative;
}

bool ReadSmallFile(const std::string& path, std::string& content, std::size_t maxBytes) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  content.assign(maxBytes, '\0');
  in.read(&content[0], static_cast<std::streamsize>(maxBytes));
  content.resize(static_cast<std::size_t>(in.gcount()));
  return true;
}

bool ReadFirstLine(const std::string& path, std::string& line) {
  if (!ReadSmallFile(path, line, 4096)) return false;
  const std::size_t end = line.find('\n');
  if (end != std::string::npos) line.resize(end);
  return !line.empty();
}

}  // namespace DE::detail::linux_impl
