// A fresh folder under the system temporary folder, removed with everything in it on destruction.
#pragma once

#include <filesystem>
#include <string>

namespace test {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  // A path inside the folder (the file is not created).
  std::filesystem::path File(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// Writes bytes to a file, replacing it; returns false when the file cannot be written.
bool WriteFileBytes(const std::filesystem::path& path, const std::string& bytes);
// The whole file as bytes; "" when it cannot be read.
std::string ReadFileBytes(const std::filesystem::path& path);

}  // namespace test
