// Path composition shared by the configuration readers, over the file helpers' platform lookups.
#include "config/module_path.h"

#include "foundation/file_helpers_platform.h"

namespace DE::detail {

std::string HostExecutableFolder() { return ModuleFileFolder(NarrowPath(ExecutablePath())); }

std::string LibraryAppDataFolder() {
  const std::wstring folder = UserAppDataFolder();
  return folder.empty() ? std::string() : JoinPath(NarrowPath(folder), {"Util"});
}

std::string ModuleFileFolder(const std::string& file) {
  if (file.empty() || file.size() >= kMaxModulePath) return std::string();
  return FolderOf(file);
}

std::string JoinPath(const std::string& folder, std::initializer_list<const char*> parts) {
  if (folder.empty()) return std::string();
  std::string path = folder;
  for (const char* part : parts) {
    path += static_cast<char>(kPathSeparator);
    path += part;
  }
  return path;
}

std::string FolderOf(const std::string& file) {
  const std::size_t cut = file.find_last_of("\\/");
  return cut == std::string::npos ? std::string() : file.substr(0, cut);
}

}  // namespace DE::detail
