// GUID text and the random strings cut from it.
//
// GetRandomString(len) with len below 1 returns "" (there is nothing to copy).
#include <cstdio>
#include <string>

#include "DEString.h"
#include "PxsLog.h"
#include "foundation/guid.h"
#include "foundation/safe_copy.h"

namespace DE {

// The third group is printed in lower case and the rest in upper case; callers compare these
// strings as they have always been printed, so the mix stays.
std::string GetGuidString() {
  GUID guid;
  if (!detail::NewGuid(guid)) return std::string();
  char text[40];
  std::snprintf(text, sizeof(text), "%08X-%04X-%04x-%02X%02X-%02X%02X%02X%02X%02X%02X",
                static_cast<unsigned>(guid.Data1), static_cast<unsigned>(guid.Data2),
                static_cast<unsigned>(guid.Data3), guid.Data4[0], guid.Data4[1], guid.Data4[2], guid.Data4[3],
                guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
  return text;
}

// Walks the first 32 characters of a GUID (its first four "-" among them), keeping the hex
// digits: at most 28. An empty GUID string makes std::string::at throw std::out_of_range.
std::string GetRandomString(int len) {
  const std::string guid = GetGuidString();
  if (len < 1) return std::string();
  std::string out;
  for (std::string::size_type i = 0; i < 32 && static_cast<int>(out.size()) < len; ++i) {
    const char c = guid.at(i);
    if (c != '-') out.push_back(c);
  }
  return out;
}

char* GetRandomString(char* buf, int size, int len) {
  if (buf == nullptr) return nullptr;
  if (!detail::SafeCopy(buf, size, GetRandomString(len))) {
    PXSLOGE("Util", std::string("GetRandomString fail. strcpy_s error") + "(" + "DE::GetRandomString" + ")");
  }
  return buf;
}

}  // namespace DE
