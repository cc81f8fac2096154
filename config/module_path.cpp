// Path composition shared by the configuration readers.
#include "config/module_path.h"

namespace DE::detail {

std::string JoinPath(const std::string& folder, std::initializer_list<const char*> parts) {
  if (folder.empty()) return std::string();
  std::string path = folder;
  for (const char* part : parts) {
    path += PathSeparator();
    path += part;
  }
  return path;
}

std::string FolderOf(const std::string& file) {
  const std::size_t cut = file.find_last_of("\\/");
  return cut == std::string::npos ? std::string() : file.substr(0, cut);
}

}  // namespace DE::detail
