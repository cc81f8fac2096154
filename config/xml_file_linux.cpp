// Linux binding of OpenXmlFile: fopen, refusing folders as Windows does. Only Linux-specific code
// goes here.
#include <sys/stat.h>

#include "config/xml_file.h"

namespace DE::detail {

std::FILE* OpenXmlFile(const std::string& path, const char* mode) {
  std::FILE* file = std::fopen(path.c_str(), mode);
  if (file == nullptr) return nullptr;
  struct stat info;
  if (fstat(fileno(file), &info) != 0 || S_ISDIR(info.st_mode)) {
    std::fclose(file);
    return nullptr;
  }
  return file;
}

}  // namespace DE::detail
