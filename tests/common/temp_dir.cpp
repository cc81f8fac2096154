#include "common/temp_dir.h"

#include <fstream>
#include <random>
#include <sstream>

namespace test {

TempDir::TempDir() {
  std::random_device random;
  std::ostringstream name;
  name << "util-test-" << std::hex << random() << random();
  path_ = std::filesystem::temp_directory_path() / name.str();
  if (!std::filesystem::create_directory(path_)) throw std::runtime_error("cannot create a temporary folder");
}

TempDir::~TempDir() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

bool WriteFileBytes(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(out);
}

std::string ReadFileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

}  // namespace test
