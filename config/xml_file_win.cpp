// Windows binding of OpenXmlFile: the run-time's _fsopen, sharing as fopen does (_SH_DENYNO) under
// every compiler. Only Windows-specific code goes here.
#include <share.h>

#include "config/xml_file.h"

namespace DE::detail {

std::FILE* OpenXmlFile(const std::string& path, const char* mode) {
  return _fsopen(path.c_str(), mode, _SH_DENYNO);
}

}  // namespace DE::detail
