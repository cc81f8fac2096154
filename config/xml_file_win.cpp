// Windows binding of OpenXmlFile: the run-time's fopen. Only Windows-specific code goes here.
#include "config/xml_file.h"

namespace DE::detail {

std::FILE* OpenXmlFile(const std::string& path, const char* mode) {
#if defined(_MSC_VER)
  std::FILE* file = nullptr;
  return fopen_s(&file, path.c_str(), mode) == 0 ? file : nullptr;
#else
  return std::fopen(path.c_str(), mode);
#endif
}

}  // namespace DE::detail
